#include "amc/OrvAmcWriter.h"

#include "orvsdk/host/io/OrvNumberText.h"
#include "orvsdk/host/math/OrvEuler.h"
#include "orvsdk/host/scene/OrvNode.h"
#include "orvsdk/skeleton/OrvAsfDof.h"
#include "orvsdk/skeleton/OrvAsfNode.h"
#include "orvsdk/skeleton/OrvAsfScene.h"
#include "orvsdk/skeleton/OrvRotationOrder.h"

#include <cstring>

namespace orvasf {

namespace {

// Digits of every number written: enough for a float's value to survive the round trip.
constexpr int kSignificantDigits = 9;

using orvsdk::OrvAMatrix;
using orvsdk::OrvNode;
using orvsdk::OrvVector4;

// The skeleton child of pNode whose name without name-space prefix is pName, as the export names
// bones; null when there is none.
OrvNode* SkeletonChildNamed(const OrvNode* pNode, const char* pName)
{
    for (int i = 0; i < pNode->GetChildCount(false); ++i)
    {
        OrvNode* lChild = pNode->GetChild(i);
        if (lChild->GetSkeleton() && std::strcmp(lChild->GetNameWithoutNameSpacePrefix().Buffer(), pName) == 0)
            return lChild;
    }
    return nullptr;
}

// The position in its order's sequence of the axis that DOF code pCode rotates about.
int SequenceIndex(int pOrder, int pCode)
{
    const int lAxis = orvsdk::DofAxis(pCode);
    const int* lSequence = orvsdk::OrvEuler::AxisTable[pOrder];
    return lSequence[0] == lAxis ? 0 : lSequence[1] == lAxis ? 1 : 2;
}

} // namespace

OrvAmcWriter::OrvAmcWriter() : mFile("AMC", " \t", "#", true, false) {}

bool OrvAmcWriter::Write(const char* pPath, const orvsdk::OrvAsfScene& pSkeleton, orvsdk::OrvNode* pHostRoot,
                         const OrvAmcWriteSettings& pSettings)
{
    mBones.clear();
    CollectBones(pSkeleton.mRoot, pHostRoot, -1, -1);
    mPoses.assign(mBones.size(), Pose());
    mTranslationFactor = pSkeleton.mLengthUnit > 0.0 ? 2.54 / pSkeleton.mLengthUnit : 1.0;
    if (!mFile.Create(pPath)) return false;

    bool lWritten = (pSettings.mSkeletonFileName.empty() ||
                     mFile.Print(0, "#!OML:ASF %s\n", pSettings.mSkeletonFileName.c_str())) &&
                    mFile.Print(0, ":FULLY-SPECIFIED\n:DEGREES\n");
    std::string lText;
    for (int lFrame = 0; lFrame < pSettings.mFrameCount && lWritten; ++lFrame)
    {
        const orvsdk::OrvTime lTime(pSettings.mStartTime.Get() +
                                    orvsdk::OrvTime::FromFrame(lFrame, pSettings.mFramesPerSecond).Get());
        lText = std::to_string(lFrame + 1);
        lText += '\n';
        AppendFrame(lTime, lText);
        lWritten = mFile.Print(0, "%s", lText.c_str());
    }
    // Close must run either way: it removes the temporary file of a failed write.
    const bool lClosed = mFile.Close();
    mBones.clear();
    mPoses.clear();
    return lWritten && lClosed;
}

// Lists pBone and its subtree in pre-order; pNode is pBone's host node, or null.
void OrvAmcWriter::CollectBones(const orvsdk::OrvAsfNode* pBone, orvsdk::OrvNode* pNode, int pParent, int pNodeParent)
{
    const int lIndex = static_cast<int>(mBones.size());
    AddBone(pBone, pNode, pParent, pNodeParent);
    const int lNodeParent = pNode ? lIndex : pNodeParent;
    // Children of an intermediate bone stand for joints of the nearest bound ancestor's node.
    const OrvNode* lSearch = lNodeParent >= 0 ? mBones[static_cast<size_t>(lNodeParent)].mNode : nullptr;
    for (int i = 0; i < pBone->mChildren.GetCount(); ++i)
    {
        const orvsdk::OrvAsfNode* lChild = pBone->mChildren[i];
        CollectBones(lChild, lSearch ? SkeletonChildNamed(lSearch, lChild->mName) : nullptr, lIndex, lNodeParent);
    }
}

void OrvAmcWriter::AddBone(const orvsdk::OrvAsfNode* pBone, orvsdk::OrvNode* pNode, int pParent, int pNodeParent)
{
    Bone lBone{pBone,        pNode,        pParent,      pNodeParent,
               OrvAMatrix(), OrvAMatrix(), OrvVector4(), orvsdk::EulerOrderFromOrderBuf(pBone->mDof, pBone->mDofCount)};
    // An ASF file gives its root no frame and no bone vector.
    if (pParent >= 0)
    {
        lBone.mFrame = pBone->mAxisMatrix;
        lBone.mFrameInverse = pBone->mAxisMatrix.Inverse();
        lBone.mVector = pBone->mPosition;
    }
    mBones.push_back(lBone);
}

void OrvAmcWriter::AppendFrame(orvsdk::OrvTime pTime, std::string& pText)
{
    for (size_t i = 0; i < mBones.size(); ++i) PoseBone(i, pTime, pText);
}

// Poses bone pIndex (its parent is posed already) and appends its line when it has DOFs.
void OrvAmcWriter::PoseBone(size_t pIndex, orvsdk::OrvTime pTime, std::string& pText)
{
    const Bone& lBone = mBones[pIndex];
    Pose& lPose = mPoses[pIndex];
    OrvAMatrix lParentRotation;
    OrvVector4 lParentEnd;
    if (lBone.mParent >= 0)
    {
        lParentRotation = mPoses[static_cast<size_t>(lBone.mParent)].mWorldRotation;
        lParentEnd = mPoses[static_cast<size_t>(lBone.mParent)].mEnd;
    }
    lPose.mWorldRotation = lParentRotation;
    OrvVector4 lAngles;
    OrvVector4 lMove;
    if (lBone.mNode)
    {
        lPose.mGlobal = lBone.mNodeParent < 0 ? lBone.mNode->EvaluateGlobalTransform(pTime)
                                              : mPoses[static_cast<size_t>(lBone.mNodeParent)].mGlobal *
                                                    lBone.mNode->EvaluateLocalTransform(pTime);
        OrvAMatrix lRotation = lPose.mGlobal;
        lRotation.SetT(OrvVector4());
        // The node's world rotation, taken over by the bone's frame: the bone's rotation is then
        // its parent's times frame * motion * inverse frame.
        lPose.mWorldRotation = lRotation * lBone.mFrameInverse;
        const OrvAMatrix lToFrame = lBone.mFrameInverse * lParentRotation.Inverse();
        lAngles = (lToFrame * lPose.mWorldRotation * lBone.mFrame).GetR(lBone.mOrder);
        lMove = lToFrame.MultT(lPose.mGlobal.GetT() - lParentEnd);
    }

    const orvsdk::OrvAsfNode& lAsfBone = *lBone.mBone;
    if (lAsfBone.mDofCount == 0)
    {
        lPose.mEnd = lParentEnd + lPose.mWorldRotation.MultT(lBone.mVector);
        return;
    }
    OrvVector4 lTranslation;
    pText += lAsfBone.mName;
    for (int i = 0; i < lAsfBone.mDofCount; ++i)
    {
        const int lCode = lAsfBone.mDof[i];
        pText += ' ';
        if (orvsdk::IsTranslationDof(lCode))
        {
            const int lAxis = orvsdk::DofAxis(lCode);
            lTranslation[lAxis] = lMove[lAxis];
            orvsdk::OrvAppendGeneral(pText, lMove[lAxis] / mTranslationFactor, kSignificantDigits);
        }
        else
            orvsdk::OrvAppendGeneral(pText, lAngles[SequenceIndex(lBone.mOrder, lCode)], kSignificantDigits);
    }
    pText += '\n';
    const OrvVector4 lStart = lParentEnd + (lParentRotation * lBone.mFrame).MultT(lTranslation);
    lPose.mEnd = lStart + lPose.mWorldRotation.MultT(lBone.mVector);
}

} // namespace orvasf
