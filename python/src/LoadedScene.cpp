#include "python/src/LoadedScene.h"

#include "amc/OrvAmcReader.h"
#include "orvsdk/asf/OrvFileAcclaimAsf.h"
#include "orvsdk/host/anim/OrvAnimCurve.h"
#include "orvsdk/host/anim/OrvAnimCurveNode.h"
#include "orvsdk/host/anim/OrvAnimStack.h"
#include "orvsdk/host/math/OrvEuler.h"
#include "orvsdk/host/scene/OrvNode.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <stdexcept>
#include <unordered_map>
#include <vector>

namespace orvasf::python {

namespace {

// w, x, y, z of the unit quaternion of a rotation matrix, from its largest diagonal term so that
// the square root never sees a small number.
void QuaternionOf(const orvsdk::OrvAMatrix& pM, double* pOut)
{
    const double lTrace = pM(0, 0) + pM(1, 1) + pM(2, 2);
    double lW, lX, lY, lZ;
    if (lTrace > 0.0)
    {
        const double lS = 2.0 * std::sqrt(1.0 + lTrace);
        lW = 0.25 * lS;
        lX = (pM(2, 1) - pM(1, 2)) / lS;
        lY = (pM(0, 2) - pM(2, 0)) / lS;
        lZ = (pM(1, 0) - pM(0, 1)) / lS;
    }
    else if (pM(0, 0) > pM(1, 1) && pM(0, 0) > pM(2, 2))
    {
        const double lS = 2.0 * std::sqrt(1.0 + pM(0, 0) - pM(1, 1) - pM(2, 2));
        lW = (pM(2, 1) - pM(1, 2)) / lS;
        lX = 0.25 * lS;
        lY = (pM(0, 1) + pM(1, 0)) / lS;
        lZ = (pM(0, 2) + pM(2, 0)) / lS;
    }
    else if (pM(1, 1) > pM(2, 2))
    {
        const double lS = 2.0 * std::sqrt(1.0 + pM(1, 1) - pM(0, 0) - pM(2, 2));
        lW = (pM(0, 2) - pM(2, 0)) / lS;
        lX = (pM(0, 1) + pM(1, 0)) / lS;
        lY = 0.25 * lS;
        lZ = (pM(1, 2) + pM(2, 1)) / lS;
    }
    else
    {
        const double lS = 2.0 * std::sqrt(1.0 + pM(2, 2) - pM(0, 0) - pM(1, 1));
        lW = (pM(1, 0) - pM(0, 1)) / lS;
        lX = (pM(0, 2) + pM(2, 0)) / lS;
        lY = (pM(1, 2) + pM(2, 1)) / lS;
        lZ = 0.25 * lS;
    }
    // One sign for every frame, so that a sequence does not flip between q and -q at random.
    const double lSign = lW < 0.0 ? -1.0 : 1.0;
    pOut[0] = lSign * lW;
    pOut[1] = lSign * lX;
    pOut[2] = lSign * lY;
    pOut[3] = lSign * lZ;
}

int RotationOrderOf(const orvsdk::OrvNode& pNode)
{
    if (!pNode.GetRotationActive()) return orvsdk::OrvEuler::eOrderXYZ;
    orvsdk::OrvEuler::EOrder lOrder = orvsdk::OrvEuler::eOrderXYZ;
    pNode.GetRotationOrder(orvsdk::OrvNode::eSourcePivot, lOrder);
    return lOrder >= orvsdk::OrvEuler::eOrderXYZ && lOrder <= orvsdk::OrvEuler::eOrderZYX ? lOrder
                                                                                      : orvsdk::OrvEuler::eOrderXYZ;
}

// Euler angles of a rotation in pOrder, each in the slot of its axis (X, Y, Z).
void EulerOf(const orvsdk::OrvAMatrix& pRotation, int pOrder, double* pOut)
{
    const orvsdk::OrvVector4 lAngles = pRotation.GetR(pOrder);
    for (int k = 0; k < 3; ++k) pOut[orvsdk::OrvEuler::AxisTable[pOrder][k]] = lAngles[k];
}

} // namespace

LoadedScene::LoadedScene(OrvImportResult&& pImport, std::string pSkeletonPath, std::string pMotionPath)
    : mImport(std::move(pImport)), mSkeletonPath(std::move(pSkeletonPath)), mMotionPath(std::move(pMotionPath))
{
    mPose = std::make_unique<orvsdk::OrvPoseEvaluator>(mImport.mRoot, mImport.mTake);
    // A stack without layers drives no channel, so its evaluator gives the static values.
    orvsdk::OrvAnimStack* lRestStack = orvsdk::OrvAnimStack::Create(mImport.mScene.get(), "orvasf rest pose");
    mRest = std::make_unique<orvsdk::OrvPoseEvaluator>(mImport.mRoot, lRestStack);
}

namespace {

const char* const kBvhChannelNames[2][3] = {{"Xposition", "Yposition", "Zposition"},
                                            {"Xrotation", "Yrotation", "Zrotation"}};

// Calls pVisit(bone) for every bone of pSkeleton in pre-order.
template <typename TVisit>
void ForEachBone(const orvsdk::OrvAsfScene& pSkeleton, TVisit pVisit)
{
    pSkeleton.mRoot->VisitPreOrder([&](const orvsdk::OrvAsfNode* pBone) {
        pVisit(*pBone);
        return false;
    });
}

// The curve driving channel pAxis of pNode's translation (pKind 0) or rotation (pKind 1) in
// pStack; null when none has keys.
const orvsdk::OrvAnimCurve* ChannelCurve(orvsdk::OrvNode& pNode, int pKind, int pAxis, orvsdk::OrvAnimStack* pStack)
{
    orvsdk::OrvProperty& lProperty = pKind == 0 ? pNode.LclTranslation : pNode.LclRotation;
    orvsdk::OrvAnimCurveNode* lCurveNode = lProperty.GetCurveNode(pStack, false);
    const orvsdk::OrvAnimCurve* lCurve = lCurveNode ? lCurveNode->GetCurve(static_cast<unsigned>(pAxis)) : nullptr;
    return lCurve && lCurve->KeyGetCount() > 0 ? lCurve : nullptr;
}

} // namespace

std::vector<std::string> LoadedScene::GetChannelNames() const
{
    std::vector<std::string> lNames;
    if (mImport.mSkeleton)
    {
        if (mMotionPath.empty()) return lNames;
        ForEachBone(*mImport.mSkeleton, [&](const orvsdk::OrvAsfNode& pBone) {
            for (int i = 0; i < pBone.mDofCount; ++i)
                lNames.push_back(std::string(pBone.mName) + "." +
                                 orvsdk::OrvFileAcclaimAsf::smDof[pBone.mDof[i]].keyword);
        });
        return lNames;
    }
    for (orvsdk::OrvNode* lNode : mPose->GetNodes())
        for (int lKind = 0; lKind < 2; ++lKind)
            for (int lAxis = 0; lAxis < 3; ++lAxis)
                if (ChannelCurve(*lNode, lKind, lAxis, mImport.mTake))
                    lNames.push_back(std::string(lNode->GetName()) + "." + kBvhChannelNames[lKind][lAxis]);
    return lNames;
}

void LoadedScene::FillChannels(const FrameSelection& pFrames, double* pOut) const
{
    const size_t lWidth = GetChannelNames().size();
    std::fill(pOut, pOut + lWidth * static_cast<size_t>(pFrames.mCount), std::nan(""));
    if (!mImport.mSkeleton)
    {
        size_t lColumn = 0;
        for (orvsdk::OrvNode* lNode : mPose->GetNodes())
            for (int lKind = 0; lKind < 2; ++lKind)
                for (int lAxis = 0; lAxis < 3; ++lAxis)
                    if (const orvsdk::OrvAnimCurve* lCurve = ChannelCurve(*lNode, lKind, lAxis, mImport.mTake))
                    {
                        for (int64_t i = 0; i < pFrames.mCount; ++i)
                            pOut[static_cast<size_t>(i) * lWidth + lColumn] = lCurve->Evaluate(TimeOf(pFrames.FrameAt(i)));
                        ++lColumn;
                    }
        return;
    }
    if (mMotionPath.empty()) return;
    std::unordered_map<const orvsdk::OrvAsfNode*, size_t> lFirstColumn;
    size_t lColumns = 0;
    ForEachBone(*mImport.mSkeleton, [&](const orvsdk::OrvAsfNode& pBone) {
        lFirstColumn.emplace(&pBone, lColumns);
        lColumns += static_cast<size_t>(pBone.mDofCount);
    });
    OrvAmcReadSettings lSettings;
    lSettings.mSampleValues = false;  // the skeleton is only read: its curves are long handed over
    lSettings.mBoneLine = [&](int64_t pFrameIndex, const orvsdk::OrvAsfNode& pBone, const double* pValues, int pCount) {
        const int64_t lOffset = pFrameIndex - pFrames.mFirst;
        if (lOffset < 0 || lOffset % pFrames.mStep != 0 || lOffset / pFrames.mStep >= pFrames.mCount) return;
        double* lRow = pOut + static_cast<size_t>(lOffset / pFrames.mStep) * lWidth + lFirstColumn.at(&pBone);
        std::copy_n(pValues, std::min(pCount, pBone.mDofCount), lRow);
    };
    OrvAmcReader lReader;
    const OrvAmcReadResult lResult = lReader.Read(mMotionPath.c_str(), *mImport.mSkeleton, lSettings);
    if (!lResult.mSucceeded) throw std::runtime_error("cannot read " + mMotionPath + " again");
}

int64_t LoadedScene::GetFrameCount() const
{
    // Frame indices are ints: a span beyond their range offers its first INT_MAX + 1 frames.
    constexpr int64_t kFrameLimit = int64_t{std::numeric_limits<int>::max()} + 1;
    return mImport.mFrameSpan > 0 ? std::min(mImport.mFrameSpan, kFrameLimit) : 1;
}

orvsdk::OrvTime LoadedScene::TimeOf(int pFrame) const
{
    return orvsdk::OrvTime::FromFrame(pFrame, mImport.mFramesPerSecond);
}

std::vector<orvsdk::OrvTime> LoadedScene::TimesOf(const FrameSelection& pFrames) const
{
    std::vector<orvsdk::OrvTime> lTimes;
    for (int64_t i = 0; i < pFrames.mCount; ++i) lTimes.push_back(TimeOf(pFrames.FrameAt(i)));
    return lTimes;
}

std::vector<orvsdk::OrvTime> LoadedScene::ResampledTimes(const FrameSelection& pFrames, double pFramesPerSecond) const
{
    std::vector<orvsdk::OrvTime> lTimes;
    if (pFrames.mCount == 0) return lTimes;
    const double lFirst = pFrames.FrameAt(0) / mImport.mFramesPerSecond;
    const double lSpan = (pFrames.FrameAt(pFrames.mCount - 1) - pFrames.FrameAt(0)) / mImport.mFramesPerSecond;
    const int lCount = OrvResampledFrameCount(lSpan, pFramesPerSecond);
    for (int i = 0; i < lCount; ++i) lTimes.push_back(orvsdk::OrvTime::FromFrame(lFirst * pFramesPerSecond + i, pFramesPerSecond));
    return lTimes;
}

void LoadedScene::FillPositions(const std::vector<orvsdk::OrvTime>& pTimes, double pScale, double* pOut) const
{
    std::vector<orvsdk::OrvAMatrix> lScratch(static_cast<size_t>(GetJointCount()));
    const size_t lStride = 3 * lScratch.size();
    for (size_t i = 0; i < pTimes.size(); ++i)
    {
        double* lFrame = pOut + lStride * i;
        mPose->EvaluatePositions(pTimes[i], lScratch.data(), lFrame);
        if (pScale != 1.0)
            for (size_t k = 0; k < lStride; ++k) lFrame[k] *= pScale;
    }
}

void LoadedScene::FillGlobalTransforms(const FrameSelection& pFrames, double* pOut) const
{
    std::vector<orvsdk::OrvAMatrix> lGlobals(static_cast<size_t>(GetJointCount()));
    for (int64_t i = 0; i < pFrames.mCount; ++i)
    {
        mPose->EvaluateGlobals(TimeOf(pFrames.FrameAt(i)), lGlobals.data());
        for (const orvsdk::OrvAMatrix& lGlobal : lGlobals)
            for (int lRow = 0; lRow < 4; ++lRow)
                for (int lColumn = 0; lColumn < 4; ++lColumn) *pOut++ = lGlobal(lRow, lColumn);
    }
}

void LoadedScene::FillLocalRotations(const FrameSelection& pFrames, RotationKind pKind, double* pOut) const
{
    const std::vector<orvsdk::OrvNode*>& lNodes = mPose->GetNodes();
    std::vector<int> lOrders;
    for (const orvsdk::OrvNode* lNode : lNodes) lOrders.push_back(RotationOrderOf(*lNode));
    std::vector<orvsdk::OrvAMatrix> lLocals(lNodes.size());
    for (int64_t i = 0; i < pFrames.mCount; ++i)
    {
        mPose->EvaluateLocals(TimeOf(pFrames.FrameAt(i)), lLocals.data());
        for (size_t lJoint = 0; lJoint < lLocals.size(); ++lJoint)
        {
            const orvsdk::OrvAMatrix& lLocal = lLocals[lJoint];
            switch (pKind)
            {
            case RotationKind::eEuler:
                EulerOf(lLocal, lOrders[lJoint], pOut);
                pOut += 3;
                break;
            case RotationKind::eQuat:
                QuaternionOf(lLocal, pOut);
                pOut += 4;
                break;
            case RotationKind::eMatrix:
                for (int lRow = 0; lRow < 3; ++lRow)
                    for (int lColumn = 0; lColumn < 3; ++lColumn) *pOut++ = lLocal(lRow, lColumn);
                break;
            }
        }
    }
}

void LoadedScene::FillRestOffsets(double* pOut) const
{
    std::vector<orvsdk::OrvAMatrix> lScratch(static_cast<size_t>(GetJointCount()));
    std::vector<double> lPositions(3 * lScratch.size());
    mRest->EvaluatePositions(orvsdk::OrvTime(), lScratch.data(), lPositions.data());
    const std::vector<int>& lParents = mRest->GetParents();
    for (size_t lJoint = 0; lJoint < lParents.size(); ++lJoint)
        for (size_t lAxis = 0; lAxis < 3; ++lAxis)
        {
            const double lParent = lParents[lJoint] < 0 ? 0.0 : lPositions[3 * lParents[lJoint] + lAxis];
            pOut[3 * lJoint + lAxis] = lPositions[3 * lJoint + lAxis] - lParent;
        }
}

std::string LoadedScene::GetRotationOrder(int pJoint) const
{
    const int lOrder = RotationOrderOf(*mPose->GetNodes()[static_cast<size_t>(pJoint)]);
    std::string lText;
    for (int k = 0; k < 3; ++k) lText += static_cast<char>('X' + orvsdk::OrvEuler::AxisTable[lOrder][k]);
    return lText;
}

OrvExportFrames LoadedScene::ExportFrames(const FrameSelection& pFrames) const
{
    OrvExportFrames lFrames;
    lFrames.mFramesPerSecond = mImport.mFramesPerSecond / static_cast<double>(pFrames.mStep);
    lFrames.mFrameCount = static_cast<int>(pFrames.mCount);
    lFrames.mStartTime = TimeOf(pFrames.FrameAt(0));
    return lFrames;
}

bool LoadedScene::WriteBvh(const std::string& pPath, const FrameSelection& pFrames,
                           std::vector<orvsdk::OrvMessage>& pMessages) const
{
    const std::lock_guard<std::mutex> lLock(mWriting);
    return OrvWriteBvh(pPath, mImport, ExportFrames(pFrames), pMessages);
}

bool LoadedScene::WriteAsfAmc(const std::string& pAsfPath, const std::string& pAmcPath,
                              const FrameSelection& pFrames, std::vector<orvsdk::OrvMessage>& pMessages) const
{
    const std::lock_guard<std::mutex> lLock(mWriting);
    return OrvWriteAsfAmc(pAsfPath, pAmcPath, mImport, ExportFrames(pFrames), pMessages);
}

} // namespace orvasf::python
