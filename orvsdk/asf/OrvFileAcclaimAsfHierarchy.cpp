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
    const bool lRead = ReadHierarchyLines();
    DropMovedRootEntries();
    return lRead;
}

bool OrvFileAcclaimAsf::ReadHierarchyLines()
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
    OrvAsfNode* lParent = FindBone(lName);
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
    OrvAsfNode* lChild = FindBone(pChildName);
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
    if (!CheckDepthBelow(pParent, lChild)) return false;
    // Appended to the new parent first, so a failed append loses nothing. The root's entry is
    // left behind and dropped later, all at once: taking entries out one by one would cost the
    // root's child count for every move.
    if (!pParent->AddChild(lChild))
    {
        Error("Not enough memory\n");
        return false;
    }
    ++mMovedRootEntries;
    RaiseSubtreeHeights(pParent, lChild);
    return true;
}

bool OrvFileAcclaimAsf::CheckDepthBelow(const OrvAsfNode* pParent, const OrvAsfNode* pChild)
{
    int lParentDepth = 0;
    for (const OrvAsfNode* lBone = pParent; lBone->mParent; lBone = lBone->mParent) ++lParentDepth;
    if (lParentDepth + 1 + SubtreeHeight(pChild) <= kMaxBoneDepth) return true;
    Error("Bone %s lies deeper than %d bones below the root\n", DeepestBoneBelow(pChild)->mName, kMaxBoneDepth);
    return false;
}

void OrvFileAcclaimAsf::RaiseSubtreeHeights(const OrvAsfNode* pParent, const OrvAsfNode* pChild)
{
    // Up from the new parent until a bone's subtree is already as high. The root is left out: it
    // loses the moved child, and its height is never asked for.
    int lHeight = SubtreeHeight(pChild) + 1;
    for (const OrvAsfNode* lBone = pParent; lBone->mParent; lBone = lBone->mParent, ++lHeight)
    {
        int& lKnown = mSubtreeHeights[lBone];
        if (lKnown >= lHeight) return;
        lKnown = lHeight;
    }
}

int OrvFileAcclaimAsf::SubtreeHeight(const OrvAsfNode* pBone) const
{
    const auto lFound = mSubtreeHeights.find(pBone);
    return lFound == mSubtreeHeights.end() ? 0 : lFound->second;
}

const OrvAsfNode* OrvFileAcclaimAsf::DeepestBoneBelow(const OrvAsfNode* pBone) const
{
    // Below a bone other than the root, subtrees only grow while the hierarchy is read, so the
    // recorded heights are exact and one child always continues the deepest path.
    const OrvAsfNode* lBone = pBone;
    for (int lHeight = SubtreeHeight(lBone); lHeight > 0; --lHeight)
    {
        for (int i = 0; i < lBone->mChildren.GetCount(); ++i)
        {
            if (SubtreeHeight(lBone->mChildren[i]) != lHeight - 1) continue;
            lBone = lBone->mChildren[i];
            break;
        }
    }
    return lBone;
}

OrvAsfNode* OrvFileAcclaimAsf::FindBone(const char* pName)
{
    const auto lFound = mBonesByName.find(pName);
    if (lFound == mBonesByName.end()) return nullptr;
    if (lFound->second) return lFound->second;
    // A shared name: the first such bone in pre-order, which depends on the tree's shape now.
    DropMovedRootEntries();
    return mAsfScene->mRoot->Find(pName);
}

void OrvFileAcclaimAsf::IndexBone(OrvAsfNode* pBone)
{
    const auto lInserted = mBonesByName.emplace(std::string_view(pBone->mName), pBone);
    if (!lInserted.second) lInserted.first->second = nullptr;
}

void OrvFileAcclaimAsf::DropMovedRootEntries()
{
    if (mMovedRootEntries == 0) return;
    OrvAsfNode* lRoot = mAsfScene->mRoot;
    OrvArray<OrvAsfNode*, 16>& lChildren = lRoot->mChildren;
    int lKept = 0;
    for (int i = 0; i < lChildren.GetCount(); ++i)
    {
        if (lChildren[i]->mParent == lRoot) lChildren[lKept++] = lChildren[i];
    }
    while (lChildren.GetCount() > lKept) lChildren.RemoveAt(lChildren.GetCount() - 1);
    mMovedRootEntries = 0;
}

} // namespace orvsdk
