// The import path on real motion capture: every ASF/AMC pair of the shared data folder is read,
// sampled through the AMC reader, flushed and built into host nodes under all four combinations
// of the two set-up flags; every joint's world position, evaluated from the host scene at each
// frame's time, must match an independent forward kinematics of the same files.

#include "support/SharedMotionPairs.h"
#include "support/HostSceneSupport.h"
#include "support/ReferenceKinematics.h"

#include "amc/OrvAmcReader.h"
#include "orvsdk/asf/OrvFileAcclaimAsf.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <ostream>
#include <string>
#include <vector>

using namespace orvsdk;
using namespace orvsdk::hosttest;
using namespace orvsdk::reference;

namespace {

using shareddata::kMotionPairs;
using shareddata::MotionPair;

using shareddata::kSanitized;
using shareddata::kSanitizedMaxFrames;
using shareddata::kSanitizedStride;

// The two set-up flags, and the host settings of the flush.
struct Flags
{
    bool mUseRotationOffset;
    bool mUsePreRotation;
    int mRotationFilter = 0;
    bool mUseConstantKeyReducer = false;
};

const Flags kAllFlags[] = {{false, false}, {true, false}, {false, true}, {true, true}};

const char* const kTake = "Motion";
const int kUnrollFilter = 2;
const double kFramesPerSecond = 120.0;

// Indices of the frames to evaluate: all of them, or under the sanitizers every
// kSanitizedStride-th one and the last.
std::vector<size_t> FramesToCheck(size_t pFrameCount)
{
    const size_t lStride = kSanitized ? kSanitizedStride : 1;
    std::vector<size_t> lFrames;
    for (size_t f = 0; f < pFrameCount; f += lStride) lFrames.push_back(f);
    if (lFrames.back() != pFrameCount - 1) lFrames.push_back(pFrameCount - 1);
    return lFrames;
}

struct Result
{
    double mLargest = 0.0;
    int mFramesChecked = 0;
};

// Imports pPair with pFlags and compares the host's world positions with pSkeleton's poses of
// pMotion at every checked frame: each bone's node against the bone's joint, each "_End" node
// against the end of its leaf bone.
void CheckImport(const MotionPair& pPair, Flags pFlags, const Skeleton& pSkeleton, const Motion& pMotion, Result& pResult)
{
    ScenePointer lScene = CreateHostScene(kTake);  // outlives the bones, which may own curves
    lScene->GetGlobalSettings().SetRotationFilterToApply(pFlags.mRotationFilter);
    lScene->GetGlobalSettings().SetUseConstantKeyReducer(pFlags.mUseConstantKeyReducer);
    OrvFileAcclaimAsf lFile(false);
    OrvAsfScene lAsf;
    ASSERT_TRUE(lFile.Open(SharedDataPath("asf", pPair.mAsf, ".asf").c_str()));
    ASSERT_TRUE(lFile.Read(&lAsf, false, pFlags.mUseRotationOffset, pFlags.mUsePreRotation));
    lAsf.mRoot->CreateDataFromDOF(lScene.get());
    orvasf::OrvAmcReadSettings lSettings;
    lSettings.mFramesPerSecond = kFramesPerSecond;
    lSettings.mUseRotationOffset = pFlags.mUseRotationOffset;
    lSettings.mUsePreRotation = pFlags.mUsePreRotation;
    orvasf::OrvAmcReader lReader;
    const orvasf::OrvAmcReadResult lRead = lReader.Read(SharedDataPath("amc", pPair.mAmc, ".amc").c_str(), lAsf, lSettings);
    EXPECT_TRUE(lRead.mSucceeded);
    EXPECT_EQ(static_cast<size_t>(lRead.mFrameCount), pMotion.mFrames.size());
    OrvNode* lRoot = lAsf.ASFToORV(lScene.get(), kTake, false, pFlags.mUseRotationOffset, pFlags.mUsePreRotation);
    lScene->GetRootNode()->AddChild(lRoot);

    std::vector<bool> lHasChildren(pSkeleton.mBones.size(), false);
    for (const Bone& lBone : pSkeleton.mBones)
        if (lBone.mParent >= 0) lHasChildren[lBone.mParent] = true;

    const int lFirstNumber = pMotion.mFrames.front().mNumber;
    for (size_t f : FramesToCheck(pMotion.mFrames.size()))
    {
        const Frame& lFrame = pMotion.mFrames[f];
        const OrvTime lTime = OrvTime::FromFrame(lFrame.mNumber - lFirstNumber, kFramesPerSecond);
        const auto lHost = HostWorldPositions(lRoot, lTime);
        const std::vector<BonePose> lPoses = Pose(pSkeleton, lFrame.mValues.data());
        size_t lExpectedNodes = 0;
        for (size_t b = 0; b < pSkeleton.mBones.size(); ++b)
        {
            const Bone& lBone = pSkeleton.mBones[b];
            ++lExpectedNodes;
            ASSERT_EQ(lHost.count(lBone.mName), 1u) << lBone.mName;
            pResult.mLargest = std::max(pResult.mLargest, Distance(lHost.at(lBone.mName), lPoses[b].mStart));
            if (lHasChildren[b] || Distance(lBone.mVector, Vec3{}) == 0.0) continue;
            ++lExpectedNodes;
            const std::string lEndName = lBone.mName + "_End";
            ASSERT_EQ(lHost.count(lEndName), 1u) << lEndName;
            pResult.mLargest = std::max(pResult.mLargest, Distance(lHost.at(lEndName), lPoses[b].mEnd));
        }
        ASSERT_EQ(lHost.size(), lExpectedNodes);
        ++pResult.mFramesChecked;
    }
}

std::string Describe(const Flags& pFlags)
{
    std::string lText = std::string("rotation offset ") + (pFlags.mUseRotationOffset ? "on" : "off") +
                        ", pre-rotation " + (pFlags.mUsePreRotation ? "on" : "off");
    if (pFlags.mRotationFilter != 0) lText += ", rotation filter " + std::to_string(pFlags.mRotationFilter);
    if (pFlags.mUseConstantKeyReducer) lText += ", constant-key reducer";
    return lText;
}

class ImportRealData : public ::testing::TestWithParam<MotionPair>
{
protected:
    void SetUp() override
    {
        if (!HasSharedData()) GTEST_SKIP() << "no shared data folder";
        OrvFileAcclaimAsf lFile(false);
        OrvAsfScene lAsf;
        ASSERT_TRUE(lFile.Open(SharedDataPath("asf", GetParam().mAsf, ".asf").c_str()));
        ASSERT_TRUE(lFile.Read(&lAsf, false, false, false));
        mSkeleton = DescribeSkeleton(lAsf);
        mMotion = ReadMotion(SharedDataPath("amc", GetParam().mAmc, ".amc"), mSkeleton);
        ASSERT_FALSE(mMotion.mFrames.empty());
        if (kSanitized && mMotion.mFrames.size() > kSanitizedMaxFrames)
            GTEST_SKIP() << "long motion left to the unsanitized build";
    }

    // Imports with pFlags, expects the largest difference below 0.01 cm and reports it.
    void CheckAndReport(const Flags& pFlags)
    {
        Result lResult;
        CheckImport(GetParam(), pFlags, mSkeleton, mMotion, lResult);
        if (HasFatalFailure()) return;
        EXPECT_LT(lResult.mLargest, 0.01);
        const std::string lKey = std::string("largest_cm_offset") + (pFlags.mUseRotationOffset ? "1" : "0") + "_pre" +
                                 (pFlags.mUsePreRotation ? "1" : "0") + (pFlags.mRotationFilter ? "_filtered" : "");
        RecordProperty(lKey, std::to_string(lResult.mLargest));
        std::printf("%s + %s, %s: %d frames checked, largest difference %.3g cm\n", GetParam().mAsf, GetParam().mAmc,
                    Describe(pFlags).c_str(), lResult.mFramesChecked, lResult.mLargest);
    }

    Skeleton mSkeleton;
    Motion mMotion;
};

} // namespace

TEST_P(ImportRealData, WorldPositionsMatchTheReferenceUnderAllFlags)
{
    for (const Flags& lFlags : kAllFlags)
    {
        SCOPED_TRACE(Describe(lFlags));
        CheckAndReport(lFlags);
        if (HasFatalFailure()) return;
    }
}

// Unrolled (in each bone's rotation order) and reduced curves describe the same motion; the
// decomposed angles of the first flag combination are where unrolling has work to do.
TEST_P(ImportRealData, UnrolledAndReducedCurvesKeepThePose)
{
    CheckAndReport(Flags{false, false, kUnrollFilter, true});
}

INSTANTIATE_TEST_SUITE_P(SharedData, ImportRealData, ::testing::ValuesIn(kMotionPairs),
                         [](const ::testing::TestParamInfo<MotionPair>& pInfo) {
                             std::string lName = std::string(pInfo.param.mAsf) + "_" + pInfo.param.mAmc;
                             std::replace(lName.begin(), lName.end(), '-', '_');
                             return lName;
                         });
