// Reader of the ":hierarchy" section: moves each bone from the root to the parent its family
// line names.

#include "orvsdk/asf/OrvFileAcclaimAsf.h"

#include "orvsdk/skeleton/OrvAsfNode.h"
#include "orvsdk/skeleton/OrvAsfScene.h"

#include <cstring>

namespace orvsdk {

namespace {

// Longest name GetString may store, terminator included; the same limit as for bone names, so
// truncated names still match.
const int kNameLimit = 50;

bool IsSelfOrAncestor(const OrvAsfNode* pBone, const OrvAsfNode* pDescendant)
{
    for (const OrvAsfNode* lBone = pDescendant; lBone; lBone = lBone->mParent)
    {
        if (lBone == pBone) return true;
    }
    return false;
}

} // namespace

bool OrvFileAcclaimAsf::ReadHierarchy()
{
    InitTokens(smGroup);
    if (!NextLine()) return true;
    for (;;)
    {
        if (Check(smMain) != -1) return true;
        const int lGroup = Handle(smGroup);
        if (lGroup == eBegin && !ReadHierarchyBlock()) return false;
        if (lGroup == -1) Warning("Begin/End keyword expected\n");
        // Past the "end" line, the line that closed the block, or the unexpected line.
        if (!NextLine()) return true;
    }
}

bool OrvFileAcclaimAsf::ReadHierarchyBlock()
{
    // Ends at the end of the file or at a line beginning with "end" or "begin", left current.
    for (;;)
    {
        if (!NextLine()) return true;
        if (Check(smGroup) != -1) return true;
        if (!ReadFamilyLine()) return false;
    }
}

bool OrvFileAcclaimAsf::ReadFamilyLine()
{
    char lName[kNameLimit];
    if (!GetString(lName, kNameLimit))
    {
        Warning("Can't read parent bone name\n");
        return true;
    }
    // Every bone starts under the root: a "root" line has nothing to move.
    if (std::strcmp(lName, "root") == 0) return true;
    OrvAsfNode* lParent = mAsfScene->mRoot->Find(lName);
    if (!lParent)
    {
        Error("Unknown parent bone name (%s)\n", lName);
        return false;
    }
    while (GetString(lName, kNameLimit))
    {
        if (!MoveUnderParent(lParent, lName)) return false;
    }
    return true;
}

bool OrvFileAcclaimAsf::MoveUnderParent(OrvAsfNode* pParent, const char* pChildName)
{
    OrvAsfNode* lRoot = mAsfScene->mRoot;
    OrvAsfNode* lChild = lRoot->Find(pChildName);
    if (!lChild)
    {
        Error("Unknown child bone name (%s)\n", pChildName);
        return false;
    }
    // First placement wins; the root itself never moves.
    if (lChild->mParent != lRoot) return true;
    // Moving a bone below itself would cut its subtree off the tree.
    if (IsSelfOrAncestor(lChild, pParent))
    {
        Warning("Bone %s cannot be a child of its own descendant %s, left in place\n", lChild->mName, pParent->mName);
        return true;
    }
    // Appended to the new parent before it leaves the root, so a failed append loses nothing.
    if (!pParent->AddChild(lChild))
    {
        Error("Not enough memory\n");
        return false;
    }
    lRoot->RemoveChild(lChild);
    lChild->mParent = pParent;
    return true;
}

} // namespace orvsdk
