#include "driver/OrvImportDriver.h"

#include "amc/OrvAmcReader.h"
#include "bvh/OrvBvhReader.h"
#include "orvsdk/asf/OrvFileAcclaimAsf.h"
#include "orvsdk/host/anim/OrvAnimLayer.h"
#include "orvsdk/host/anim/OrvAnimStack.h"
#include "orvsdk/host/math/OrvEuler.h"
#include "orvsdk/host/scene/OrvNode.h"
#include "orvsdk/skeleton/OrvAsfDof.h"
#include "orvsdk/skeleton/OrvAsfNode.h"
#include "orvsdk/skeleton/OrvRotationOrder.h"

#include <chrono>

namespace orvasf {

namespace {

using Clock = std::chrono::steady_clock;

double SecondsSince(Clock::time_point pStart)
{
    return std::chrono::duration<double>(Clock::now() - pStart).count();
}

void Append(std::vector<orvsdk::OrvMessage>& pTo, const std::vector<orvsdk::OrvMessage>& pFrom)
{
    pTo.insert(pTo.end(), pFrom.begin(), pFrom.end());
}

// The reader refuses a file that ends inside a section, or holds no root, without a message of
// its own: the error says why, at the line where reading stopped.
orvsdk::OrvMessage QuietRefusal(const orvsdk::OrvFileAcclaimAsf& pFile, const orvsdk::OrvAsfScene& pSkeleton)
{
    const char* lReason = !pFile.mEndOfFile ? "reading stopped here (see the warning above)"
                          : pSkeleton.mRoot ? "the file ends inside a section"
                                            : "the file ends without a complete :root section";
    return orvsdk::OrvMessage{orvsdk::OrvMessage::eError, pFile.GetFileName(), pFile.GetLineNumber(), lReason};
}

orvsdk::OrvMessage SkeletonWarning(const std::string& pPath, std::string pText)
{
    return orvsdk::OrvMessage{orvsdk::OrvMessage::eWarning, pPath, 0, std::move(pText)};
}

bool HasRotation(const orvsdk::OrvAsfNode& pBone)
{
    for (int i = 0; i < pBone.mDofCount; ++i)
        if (orvsdk::IsRotationDof(pBone.mDof[i])) return true;
    return false;
}

// The gimbal killer works in the X, Y, Z order: on a bone turning in another order than X, Y, Z
// or its mirror Z, Y, X it changes the pose, not only the curves.
void WarnOfGimbalKillerOrders(const std::string& pPath, orvsdk::OrvAsfScene& pSkeleton,
                              std::vector<orvsdk::OrvMessage>& pMessages)
{
    int lMoved = 0;
    const orvsdk::OrvAsfNode* lFirst = nullptr;
    pSkeleton.mRoot->VisitPreOrder([&](orvsdk::OrvAsfNode* pBone) {
        const int lOrder = orvsdk::EulerOrderFromOrderBuf(pBone->mDof, pBone->mDofCount);
        if (!HasRotation(*pBone) || lOrder == orvsdk::OrvEuler::eOrderXYZ || lOrder == orvsdk::OrvEuler::eOrderZYX)
            return false;
        if (lMoved++ == 0) lFirst = pBone;
        return false;
    });
    if (lMoved == 0) return;
    pMessages.push_back(SkeletonWarning(
        pPath, "The gimbal-killer rotation filter works in the X, Y, Z order and moves the joints of the " +
                   std::to_string(lMoved) + " bones that turn in another order (the first is " + lFirst->mName +
                   "); the unroll filter keeps every pose"));
}

// A root position counts twice unless both set-up flags carry the rest pose in the nodes'
// pivots, which moves every world position by it.
void WarnOfRootPosition(const std::string& pPath, const OrvImportSettings& pSettings,
                        const orvsdk::OrvAsfScene& pSkeleton, std::vector<orvsdk::OrvMessage>& pMessages)
{
    const orvsdk::OrvVector4& lPosition = pSkeleton.mRoot->mPosition;
    const bool lZero = lPosition[0] == 0.0 && lPosition[1] == 0.0 && lPosition[2] == 0.0;
    if (lZero || (pSettings.mUseRotationOffset && pSettings.mUsePreRotation)) return;
    pMessages.push_back(SkeletonWarning(pPath, "The root position is not zero: it is counted twice, moving every "
                                               "world position by it, unless both the rotation-offset and the "
                                               "pre-rotation set-ups are used"));
}

int CountJoints(orvsdk::OrvAsfNode* pRoot)
{
    int lCount = 0;
    pRoot->VisitPreOrder([&lCount](orvsdk::OrvAsfNode*) { return ++lCount, false; });
    return lCount;
}

// A new scene named pName holding the take of pSettings, made current, with its base layer.
void CreateSceneAndTake(const char* pName, const OrvImportSettings& pSettings, OrvImportResult& pResult)
{
    pResult.mScene = orvsdk::OrvCreateScene(pName);
    pResult.mTake = orvsdk::OrvAnimStack::Create(pResult.mScene.get(), pSettings.mTakeName.c_str());
    orvsdk::OrvAnimLayer::Create(pResult.mTake, "Base Layer");
    pResult.mScene->SetCurrentAnimationStack(pResult.mTake);
}

// Creates the skeleton's curves and runs one sampling run over the motion file (an empty run
// without one, which still flushes). False when the motion was refused.
bool SampleMotion(const std::string& pAmcPath, const OrvImportSettings& pSettings, OrvImportResult& pResult)
{
    orvsdk::OrvAsfNode* lRoot = pResult.mSkeleton->mRoot;
    lRoot->CreateDataFromDOF(pResult.mScene.get());
    if (pAmcPath.empty())
    {
        lRoot->StartSamplingData();
        lRoot->StopSamplingData();
        return true;
    }
    OrvAmcReadSettings lSettings;
    lSettings.mFramesPerSecond = pSettings.mFramesPerSecond;
    lSettings.mUseRotationOffset = pSettings.mUseRotationOffset;
    lSettings.mUsePreRotation = pSettings.mUsePreRotation;
    lSettings.mProgress = pSettings.mProgress;
    lSettings.mThreads = pSettings.mThreads;
    OrvAmcReader lReader;
    const OrvAmcReadResult lMotion = lReader.Read(pAmcPath.c_str(), *pResult.mSkeleton, lSettings);
    Append(pResult.mMessages, lMotion.mMessages);
    pResult.mHasMotion = true;
    pResult.mFrameCount = lMotion.mFrameCount;
    if (lMotion.mFrameCount > 0)
        pResult.mFrameSpan = static_cast<int64_t>(lMotion.mLastFrame) - lMotion.mFirstFrame + 1;
    return lMotion.mSucceeded;
}

} // namespace

bool OrvReadSkeleton(const std::string& pPath, const OrvImportSettings& pSettings, orvsdk::OrvAsfScene& pSkeleton,
                     std::vector<orvsdk::OrvMessage>& pMessages)
{
    orvsdk::OrvFileAcclaimAsf lFile(false);
    const bool lOpened = lFile.Open(pPath.c_str());
    const bool lRead = lOpened && lFile.Read(&pSkeleton, pSettings.mRemoveDummy, pSettings.mUseRotationOffset,
                                             pSettings.mUsePreRotation);
    Append(pMessages, lFile.GetMessages());
    if (lOpened && !lRead && lFile.GetErrorCount() == 0) pMessages.push_back(QuietRefusal(lFile, pSkeleton));
    // An error the reader could step over (a bad byte, say) still refuses the file.
    return lRead && lFile.GetErrorCount() == 0;
}

OrvImportResult OrvImportAsf(const std::string& pAsfPath, const std::string& pAmcPath,
                             const OrvImportSettings& pSettings)
{
    OrvImportResult lResult;
    lResult.mFramesPerSecond = pSettings.mFramesPerSecond;
    lResult.mRestInRotationOffsets = pSettings.mUseRotationOffset;
    lResult.mSkeleton = std::make_unique<orvsdk::OrvAsfScene>();
    orvsdk::OrvAsfScene& lSkeleton = *lResult.mSkeleton;

    const Clock::time_point lReadStart = Clock::now();
    const bool lRead = OrvReadSkeleton(pAsfPath, pSettings, lSkeleton, lResult.mMessages);
    lResult.mTimings.mReadSeconds = SecondsSince(lReadStart);
    if (!lRead) return lResult;
    lResult.mJointCount = CountJoints(lSkeleton.mRoot);
    WarnOfRootPosition(pAsfPath, pSettings, lSkeleton, lResult.mMessages);
    if (pSettings.mRotationFilter == OrvRotationFilter::eGimbalKiller)
        WarnOfGimbalKillerOrders(pAsfPath, lSkeleton, lResult.mMessages);

    CreateSceneAndTake(lSkeleton.mName, pSettings, lResult);
    orvsdk::OrvGlobalSettings& lFlush = lResult.mScene->GetGlobalSettings();
    lFlush.SetRotationFilterToApply(static_cast<int>(pSettings.mRotationFilter));
    lFlush.SetUseConstantKeyReducer(pSettings.mReduceKeys);
    const Clock::time_point lSamplingStart = Clock::now();
    const bool lSampled = SampleMotion(pAmcPath, pSettings, lResult);
    lResult.mTimings.mSamplingSeconds = SecondsSince(lSamplingStart);
    if (!lSampled) return lResult;

    const Clock::time_point lBuildStart = Clock::now();
    lResult.mRoot = lSkeleton.ASFToORV(lResult.mScene.get(), pSettings.mTakeName.c_str(), pSettings.mUseLimits,
                                       pSettings.mUseRotationOffset, pSettings.mUsePreRotation);
    lResult.mScene->GetRootNode()->AddChild(lResult.mRoot);
    lResult.mTimings.mNodeBuildingSeconds = SecondsSince(lBuildStart);
    lResult.mSucceeded = true;
    return lResult;
}

OrvImportResult OrvImportBvh(const std::string& pPath, const OrvImportSettings& pSettings)
{
    OrvImportResult lResult;
    // The reader puts each joint's OFFSET in its node's rotation offset.
    lResult.mRestInRotationOffsets = true;
    CreateSceneAndTake("BVH", pSettings, lResult);
    OrvBvhReader lReader;
    const Clock::time_point lStart = Clock::now();
    const OrvBvhReadResult lRead = lReader.Read(pPath.c_str(), lResult.mScene->GetRootNode(), lResult.mTake);
    lResult.mTimings.mSamplingSeconds = SecondsSince(lStart);
    Append(lResult.mMessages, lReader.GetFile().GetMessages());
    if (!lRead.mSucceeded) return lResult;
    lResult.mSucceeded = true;
    lResult.mRoot = lRead.mRoot;
    lResult.mJointCount = lRead.mJointCount;
    lResult.mHasMotion = true;
    lResult.mFrameCount = lRead.mFrameCount;
    lResult.mFrameSpan = lRead.mFrameCount;
    lResult.mFramesPerSecond = lRead.mFramesPerSecond;
    lResult.mJointTranslation = lRead.mHasJointTranslation;
    return lResult;
}

OrvImportResult OrvImportGltf(const std::string& pPath, const OrvImportSettings& pSettings,
                              const OrvGltfReadSettings& pGltfSettings)
{
    OrvImportResult lResult;
    // The reader puts each node's rest translation in its rotation offset.
    lResult.mRestInRotationOffsets = true;
    CreateSceneAndTake("glTF", pSettings, lResult);
    OrvGltfReader lReader;
    const Clock::time_point lStart = Clock::now();
    const OrvGltfReadResult lRead = lReader.Read(pPath, lResult.mScene->GetRootNode(), lResult.mTake, pGltfSettings);
    lResult.mTimings.mSamplingSeconds = SecondsSince(lStart);
    Append(lResult.mMessages, lReader.GetMessages());
    if (!lRead.mSucceeded) return lResult;
    lResult.mSucceeded = true;
    lResult.mRoot = lRead.mRoot;
    lResult.mJointCount = lRead.mJointCount;
    lResult.mHasMotion = lRead.mHasMotion;
    lResult.mFrameCount = lRead.mFrameCount;
    lResult.mFrameSpan = lRead.mFrameCount;
    // Without an animation the rest pose is one frame at the settings' rate.
    lResult.mFramesPerSecond = lRead.mHasMotion ? lRead.mFramesPerSecond : pSettings.mFramesPerSecond;
    lResult.mJointTranslation = lRead.mHasJointTranslation;
    return lResult;
}

} // namespace orvasf
