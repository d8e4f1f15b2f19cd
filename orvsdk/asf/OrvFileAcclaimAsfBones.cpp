// Readers of the ":root" and ":bonedata" sections: they create the bones, every one of them a
// direct child of the root until the hierarchy section gives the tree its shape.

#include "orvsdk/asf/OrvFileAcclaimAsf.h"

#include "orvsdk/skeleton/OrvAsfNode.h"
#include "orvsdk/skeleton/OrvAsfScene.h"

#include <cstring>
#include <limits>

namespace orvsdk {

namespace {

// Host rotation order of each axis order word, by its code: zyx, xzy, yxz, yzx, zxy, xyz.
const int sAxisOrderFromWord[6] = {5, 3, 1, 4, 2, 0};
// Longest name GetString may store, terminator included.
const int kNameLimit = 50;
const double kCentimetresPerInch = 2.54;
const double kLargestFinite = std::numeric_limits<double>::max();

void BuildAxisMatrix(OrvAsfNode& pBone)
{
    OrvAMatrix lFrame;
    lFrame.SetR(pBone.mAxis, pBone.mAxisOrder);
    pBone.mAxisMatrix = lFrame;
    pBone.mAxisMatrixInverse = lFrame.Inverse();
}

// A bound beyond the finite range ("-inf", "inf", or a number such as -1e309 that the reader
// takes as an infinity) is absent.
void StoreLimits(OrvAsfNode& pBone, int pCode, const double* pPair)
{
    pBone.mLimitMinActive[pCode] = pPair[0] >= -kLargestFinite;
    pBone.mLimitMin[pCode] = pBone.mLimitMinActive[pCode] ? pPair[0] : 0.0;
    pBone.mLimitMaxActive[pCode] = pPair[1] <= kLargestFinite;
    pBone.mLimitMax[pCode] = pBone.mLimitMaxActive[pCode] ? pPair[1] : 0.0;
}

} // namespace

bool OrvFileAcclaimAsf::DiscardBone(OrvAsfNode* pBone)
{
    OrvAsfNode::Destroy(pBone);
    return false;
}

void OrvFileAcclaimAsf::AppendDof(OrvAsfNode* pBone, int pCode, const char* pName, bool& pWarned)
{
    if (pBone->mDofCount < OrvAsfNode::kMaxDofs)
    {
        pBone->mDof[pBone->mDofCount++] = pCode;
        return;
    }
    if (!pWarned) Warning("Too many degrees of freedom, ignoring (%s)\n", pName);
    pWarned = true;
}

bool OrvFileAcclaimAsf::ReadAxisOrder(OrvAsfNode* pBone)
{
    const int lWord = Handle(smAxis);
    if (lWord == -1)
    {
        Error("Unknown rotation order\n");
        return false;
    }
    pBone->mAxisOrder = sAxisOrderFromWord[lWord];
    return true;
}

// --- :root ---------------------------------------------------------------------------------

bool OrvFileAcclaimAsf::ReadRoot()
{
    // A second root would orphan the first one's bones; the first root is kept.
    if (mAsfScene->mRoot)
    {
        Error("Duplicate root section\n");
        return false;
    }
    OrvAsfNode* lRoot = OrvAsfNode::Create();
    if (!lRoot)
    {
        Error("Not enough memory\n");
        return false;
    }
    std::strcpy(lRoot->mName, "root");
    InitTokens(smRoot);
    for (;;)
    {
        if (!NextLine()) return DiscardBone(lRoot);
        if (Check(smMain) != -1) break;
        if (!ReadRootLine(lRoot, Handle(smRoot))) return DiscardBone(lRoot);
    }
    BuildAxisMatrix(*lRoot);
    lRoot->mRotationOffset = lRoot->mPosition;
    mAsfScene->mRoot = lRoot;
    IndexBone(lRoot);
    return true;
}

bool OrvFileAcclaimAsf::ReadRootLine(OrvAsfNode* pRoot, int pKeyword)
{
    switch (pKeyword)
    {
    case eRootAxis: return ReadAxisOrder(pRoot);
    case eRootOrder: ReadOrderList(pRoot); break;
    case eRootPosition:
        if (!GetVector(pRoot->mPosition.Buffer(), 1.0)) Warning("Can't read position, using 0.0 0.0 0.0\n");
        break;
    case eRootOrientation:
        if (!GetVector(pRoot->mAxis.Buffer(), 1.0)) Warning("Can't read orientation, using 0.0 0.0 0.0\n");
        break;
    default: Warning("Unknown %s token (%s)\n", smMain[eRoot].keyword, mCurrentToken); break;
    }
    return true;
}

void OrvFileAcclaimAsf::ReadOrderList(OrvAsfNode* pRoot)
{
    pRoot->mDofCount = 0;
    bool lWarned = false;
    for (;;)
    {
        const char* lName = mCurrentToken;
        const int lCode = Handle(smOrder);
        if (lCode == -1) return;  // end of line, or a word that ends the list
        AppendDof(pRoot, lCode, lName, lWarned);
    }
}

// --- :bonedata -------------------------------------------------------------------------------

bool OrvFileAcclaimAsf::ReadBoneData()
{
    // Bones hang under the root as they are read, so the root has to come first.
    if (!mAsfScene->mRoot)
    {
        Error("Bone data before root section\n");
        return false;
    }
    InitTokens(smGroup);
    if (!NextLine()) return false;
    for (;;)
    {
        if (Check(smMain) != -1) return true;
        switch (Handle(smGroup))
        {
        case eBegin:
            // The line that ended the bone stays current: "end" is handled by the next pass,
            // "begin" opens the next bone at once.
            if (!ReadBone()) return false;
            break;
        case eEnd:
            if (!NextLine()) return false;
            break;
        default:
            Warning("Begin/End keyword expected\n");
            if (!NextLine()) return false;
            break;
        }
    }
}

bool OrvFileAcclaimAsf::ReadBone()
{
    OrvAsfNode* lBone = OrvAsfNode::Create();
    if (!lBone)
    {
        Error("Not enough memory\n");
        return false;
    }
    InitTokens(smBoneData);
    lBone->mName[0] = '\0';
    for (;;)
    {
        if (!NextLine()) return DiscardBone(lBone);
        if (Check(smGroup) != -1) break;
        if (!ReadBoneLine(lBone, Handle(smBoneData))) return DiscardBone(lBone);
    }
    if (!FinishBone(lBone)) return DiscardBone(lBone);
    return true;
}

bool OrvFileAcclaimAsf::ReadBoneLine(OrvAsfNode* pBone, int pKeyword)
{
    int lId = 0;
    double lDropped = 0.0;
    switch (pKeyword)
    {
    case eId:
        if (!GetInteger(lId)) Warning("Can't read bone id value\n");
        return true;
    case eBoneName: return ReadBoneName(pBone);
    case eDirection: return ReadBoneDirection(pBone);
    case eBoneLength: return ReadBoneLength(pBone);
    case eBoneAxis: return ReadBoneAxis(pBone);
    case eDof: ReadDofList(pBone); return true;
    case eLimits: return ReadLimits(pBone);
    case eBodyMass:
        if (!GetDouble(lDropped, mAsfScene->mMassUnit)) Warning("Can't read bodymass value\n");
        return true;
    case eCofMass:
        if (!GetDouble(lDropped, 1.0)) Warning("Can't read cofmass value\n");
        return true;
    default: Warning("Unknown bonedata token\n"); return true;
    }
}

bool OrvFileAcclaimAsf::ReadBoneName(OrvAsfNode* pBone)
{
    if (!GetString(pBone->mName, kNameLimit))
    {
        Error("Can't read bone name\n");
        return false;
    }
    // The name "root" belongs to the bone of the ":root" section.
    if (std::strcmp(pBone->mName, "root") == 0)
    {
        Error("Forbidden bone name\n");
        return false;
    }
    return true;
}

bool OrvFileAcclaimAsf::ReadBoneDirection(OrvAsfNode* pBone)
{
    if (!GetVector(pBone->mDirection.Buffer(), 1.0))
    {
        Error("Can't read bone direction\n");
        return false;
    }
    if (pBone->mDirection.Length() > 0.0) pBone->mDirection.Normalize();
    return true;
}

bool OrvFileAcclaimAsf::ReadBoneLength(OrvAsfNode* pBone)
{
    if (!GetDouble(pBone->mLength, 1.0))
    {
        Error("Can't read bone length\n");
        return false;
    }
    // Zero stays zero, also when a tiny unit makes the factor infinite (0 times infinity would
    // be NaN, which no file can hold).
    const double lUnit = mAsfScene->mLengthUnit;
    if (lUnit > 0.0 && pBone->mLength != 0.0) pBone->mLength = kCentimetresPerInch / lUnit * pBone->mLength;
    return true;
}

bool OrvFileAcclaimAsf::ReadBoneAxis(OrvAsfNode* pBone)
{
    if (!GetVector(pBone->mAxis.Buffer(), 1.0))
    {
        Error("Can't read bone local coordinate system\n");
        return false;
    }
    return ReadAxisOrder(pBone);
}

void OrvFileAcclaimAsf::ReadDofList(OrvAsfNode* pBone)
{
    pBone->mDofCount = 0;
    bool lWarned = false;
    // A word that names no degree of freedom ends the list.
    while (Check(smDof) != -1)
    {
        const char* lName = mCurrentToken;
        const int lCode = Handle(smDof);
        if (lCode == eLengthDof)
            Warning("Unknown degree of freedom (%s)\n", lName);
        else
            AppendDof(pBone, lCode, lName, lWarned);
    }
}

bool OrvFileAcclaimAsf::ReadLimits(OrvAsfNode* pBone)
{
    // One pair per listed DOF; the first on the "limits" line, each further one on the same line
    // or the next.
    for (int i = 0; i < pBone->mDofCount; ++i)
    {
        double lPair[2] = {0.0, 0.0};
        if (!GetPairOverflowToInfinity(lPair, 1.0) && !(NextLine() && GetPairOverflowToInfinity(lPair, 1.0)))
        {
            Error("Can't read dof limits\n");
            return false;
        }
        StoreLimits(*pBone, pBone->mDof[i], lPair);
    }
    return true;
}

bool OrvFileAcclaimAsf::FinishBone(OrvAsfNode* pBone)
{
    if (GetTokenCount(smBoneData, eBoneName) == 0)
    {
        Error("Bone has no name\n");
        return false;
    }
    if (GetTokenCount(smBoneData, eDirection) == 0)
    {
        Error("Bone has no direction\n");
        return false;
    }
    if (GetTokenCount(smBoneData, eBoneLength) == 0)
    {
        Error("Bone has no length\n");
        return false;
    }
    BuildAxisMatrix(*pBone);
    if (!mAsfScene->mRoot->AddChild(pBone))
    {
        Error("Not enough memory\n");
        return false;
    }
    IndexBone(pBone);
    return true;
}

} // namespace orvsdk
