#include "tools/orvasf/SceneImport.h"

#include "orvsdk/host/anim/OrvAnimLayer.h"
#include "orvsdk/host/anim/OrvAnimStack.h"
#include "orvsdk/host/scene/OrvNode.h"
#include "orvsdk/host/scene/OrvScene.h"
#include "orvsdk/skeleton/OrvAsfNode.h"
#include "tools/orvasf/MessagePrinter.h"
#include "tools/orvasf/ProgressReporter.h"
#include "tools/orvasf/SkeletonFile.h"

#include <chrono>

namespace orvasf::tool {

namespace {

using Clock = std::chrono::steady_clock;

double SecondsSince(Clock::time_point pStart)
{
    return std::chrono::duration<double>(Clock::now() - pStart).count();
}

} // namespace

void SceneImport::HostSceneDeleter::operator()(orvsdk::OrvScene* pScene) const
{
    pScene->Destroy();
}

bool SceneImport::Run(const ImportOptions& pOptions)
{
    const Clock::time_point lReadStart = Clock::now();
    const SkeletonReadFlags lFlags{pOptions.mRemoveDummy, pOptions.mUseRotationOffset, pOptions.mUsePreRotation};
    const bool lRead = ReadSkeleton(pOptions.mAsfPath, mSkeleton, lFlags);
    mTimings.mReadSeconds = SecondsSince(lReadStart);
    if (!lRead) return false;

    CreateHostScene(pOptions);
    if (!SampleMotion(pOptions)) return false;
    BuildNodes(pOptions);
    return true;
}

void SceneImport::CreateHostScene(const ImportOptions& pOptions)
{
    mHostScene.reset(orvsdk::OrvScene::Create(mSkeleton.mName));
    orvsdk::OrvGlobalSettings& lSettings = mHostScene->GetGlobalSettings();
    lSettings.SetRotationFilterToApply(pOptions.mRotationFilter);
    lSettings.SetUseConstantKeyReducer(pOptions.mReduceKeys);
    // Node building connects the curves to the stack named after the take; it must exist first.
    mTake = orvsdk::OrvAnimStack::Create(mHostScene.get(), pOptions.mTakeName.c_str());
    orvsdk::OrvAnimLayer::Create(mTake, "Base Layer");
    mHostScene->SetCurrentAnimationStack(mTake);
}

bool SceneImport::SampleMotion(const ImportOptions& pOptions)
{
    const Clock::time_point lStart = Clock::now();
    mSkeleton.mRoot->CreateDataFromDOF(mHostScene.get());
    if (pOptions.mMotionPath.empty())
    {
        // An empty run still flushes, which drops the curves that got no key.
        mSkeleton.mRoot->StartSamplingData();
        mSkeleton.mRoot->StopSamplingData();
        mTimings.mSamplingSeconds = SecondsSince(lStart);
        return true;
    }
    mHasMotion = true;
    ProgressReporter lProgress(pOptions.mMotionPath);
    OrvAmcReadSettings lSettings;
    lSettings.mFramesPerSecond = pOptions.mFramesPerSecond;
    lSettings.mUseRotationOffset = pOptions.mUseRotationOffset;
    lSettings.mUsePreRotation = pOptions.mUsePreRotation;
    lSettings.mProgress = [&lProgress](uint64_t pDone, uint64_t pTotal) { lProgress.Update(pDone, pTotal); };
    OrvAmcReader lReader;
    mMotion = lReader.Read(pOptions.mMotionPath.c_str(), mSkeleton, lSettings);
    lProgress.Finish();
    mTimings.mSamplingSeconds = SecondsSince(lStart);
    PrintMessages(lReader, mMotion.mMessages);
    return mMotion.mSucceeded;
}

void SceneImport::BuildNodes(const ImportOptions& pOptions)
{
    const Clock::time_point lStart = Clock::now();
    mSkeletonNode = mSkeleton.ASFToORV(mHostScene.get(), pOptions.mTakeName.c_str(), pOptions.mUseLimits,
                                       pOptions.mUseRotationOffset, pOptions.mUsePreRotation);
    mHostScene->GetRootNode()->AddChild(mSkeletonNode);
    mTimings.mNodeBuildingSeconds = SecondsSince(lStart);
}

} // namespace orvasf::tool
