// The import path on real motion capture: every ASF/AMC pair of the shared data folder is read,
// sampled through the AMC reader, flushed and built into host nodes under all four combinations
// of the two set-up flags; every joint's world position, evaluated from the host scene at each
// frame's time, must match an independent forward kinematics of the same files.

#include "support/SharedMotionPairs.h"
#include "support/HostSceneSupport.h"
#include "support/ReferenceKinematics.h"

#include "driver/OrvImportDriver.h"
#include "orvsdk/asf/OrvFileAcclaimAsf.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <string>
#include <vector>

using namespace orvsdk;
using namespace orvsdk::hosttest;
using namespace orvsdk::reference;
using orvasf::OrvImportSettings;
using orvasf::OrvRotationFilter;

namespace {

using shareddata::kMotionPairs;
using shareddata::MotionPair;

using shareddata::kSanitized;
using shareddata::kSanitizedMaxFrames;
using shareddata::kSanitizedStride;

const double kFramesPerSecond = 120.0;

OrvImportSettings Settings(bool pUseRotationOffset, bool pUsePreRotation)
{
    OrvImportSettings lSettings;
    lSettings.mUseRotationOffset = pUseRotationOffset;
    lSettings.mUsePreRotation = pUsePreRotation;
    lSettings.mFramesPerSecond = kFramesPerSecond;
    return lSettings;
}

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

// Imports pPair with pSettings and compares the host's world positions with pSkeleton's poses of
// pMotion at every checked frame.
void CheckImport(const MotionPair& pPair, const OrvImportSettings& pSettings, const Skeleton& pSkeleton,
                 const Motion& pMotion, Result& pResult)
{
    const orvasf::OrvImportResult lImport = orvasf::OrvImportAsf(
        SharedDataPath("asf", pPair.mAsf, ".asf"), SharedDataPath("amc", pPair.mAmc, ".amc"), pSettings);
    ASSERT_TRUE(lImport.mSucceeded);
    EXPECT_EQ(static_cast<size_t>(lImport.mFrameCount), pMotion.mFrames.size());
    const int lFirstNumber = pMotion.mFrames.front().mNumber;
    for (size_t f : FramesToCheck(pMotion.mFrames.size()))
    {
        const Frame& lFrame = pMotion.mFrames[f];
        const OrvTime lTime = OrvTime::FromFrame(lFrame.mNumber - lFirstNumber, kFramesPerSecond);
        pResult.mLargest =
            std::max(pResult.mLargest, LargestDistanceToPose(lImport.mRoot, lTime, pSkeleton, lFrame.mValues.data()));
        ++pResult.mFramesChecked;
    }
}

std::string Describe(const OrvImportSettings& pSettings)
{
    std::string lText = std::string("rotation offset ") + (pSettings.mUseRotationOffset ? "on" : "off") +
                        ", pre-rotation " + (pSettings.mUsePreRotation ? "on" : "off");
    if (pSettings.mRotationFilter != OrvRotationFilter::eNone)
        lText += ", rotation filter " + std::to_string(static_cast<int>(pSettings.mRotationFilter));
    if (pSettings.mReduceKeys) lText += ", constant-key reducer";
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

    // Imports with pSettings, expects the largest difference below 0.01 cm and reports it.
    void CheckAndReport(const OrvImportSettings& pSettings)
    {
        Result lResult;
        CheckImport(GetParam(), pSettings, mSkeleton, mMotion, lResult);
        if (HasFatalFailure()) return;
        EXPECT_LT(lResult.mLargest, 0.01);
        const std::string lKey = std::string("largest_cm_offset") + (pSettings.mUseRotationOffset ? "1" : "0") +
                                 "_pre" + (pSettings.mUsePreRotation ? "1" : "0") +
                                 (pSettings.mRotationFilter != OrvRotationFilter::eNone ? "_filtered" : "");
        RecordProperty(lKey, std::to_string(lResult.mLargest));
        std::printf("%s + %s, %s: %d frames checked, largest difference %.3g cm\n", GetParam().mAsf, GetParam().mAmc,
                    Describe(pSettings).c_str(), lResult.mFramesChecked, lResult.mLargest);
    }

    Skeleton mSkeleton;
    Motion mMotion;
};

} // namespace

TEST_P(ImportRealData, WorldPositionsMatchTheReferenceUnderAllFlags)
{
    for (const bool lUseRotationOffset : {false, true})
        for (const bool lUsePreRotation : {false, true})
        {
            const OrvImportSettings lSettings = Settings(lUseRotationOffset, lUsePreRotation);
            SCOPED_TRACE(Describe(lSettings));
            CheckAndReport(lSettings);
            if (HasFatalFailure()) return;
        }
}

// Unrolled (in each bone's rotation order) and reduced curves describe the same motion; the
// decomposed angles of the first flag combination are where unrolling has work to do.
TEST_P(ImportRealData, UnrolledAndReducedCurvesKeepThePose)
{
    OrvImportSettings lSettings = Settings(false, false);
    lSettings.mRotationFilter = OrvRotationFilter::eUnroll;
    lSettings.mReduceKeys = true;
    CheckAndReport(lSettings);
}

INSTANTIATE_TEST_SUITE_P(SharedData, ImportRealData, ::testing::ValuesIn(kMotionPairs),
                         [](const ::testing::TestParamInfo<MotionPair>& pInfo) {
                             std::string lName = std::string(pInfo.param.mAsf) + "_" + pInfo.param.mAmc;
                             std::replace(lName.begin(), lName.end(), '-', '_');
                             return lName;
                         });
