// The import path on real motion capture: every ASF/AMC pair of the shared data folder, and the
// bundled walker (checked whether or not that folder is there), is read, sampled through the AMC
// reader, flushed and built into host nodes under all four combinations of the two set-up flags;
// every joint's world position, evaluated from the host scene at each frame's time, must match an
// independent forward kinematics of the same files.

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

using namespace shareddata;

const double kFramesPerSecond = 120.0;

OrvImportSettings Settings(bool pUseRotationOffset, bool pUsePreRotation)
{
    OrvImportSettings lSettings;
    lSettings.mUseRotationOffset = pUseRotationOffset;
    lSettings.mUsePreRotation = pUsePreRotation;
    lSettings.mFramesPerSecond = kFramesPerSecond;
    return lSettings;
}

// The file of a pair: the walker's in the examples folder, the others' in the shared data folder.
std::string PairFile(const char* pFolder, const char* pName, const char* pExtension)
{
    if (std::string(pName) == "walker") return std::string(ORV_SOURCE_DIR) + "/examples/walker" + pExtension;
    return SharedDataPath(pFolder, pName, pExtension);
}

class ImportRealData : public ::testing::TestWithParam<MotionPair>
{
protected:
    void SetUp() override
    {
        if (!HasSharedData() && std::string(GetParam().mAsf) != "walker") GTEST_SKIP() << "no shared data folder";
        OrvFileAcclaimAsf lFile(false);
        OrvAsfScene lAsf;
        ASSERT_TRUE(lFile.Open(PairFile("asf", GetParam().mAsf, ".asf").c_str()) && lFile.Read(&lAsf, false, false, false));
        mSkeleton = DescribeSkeleton(lAsf);
        mMotion = ReadMotion(PairFile("amc", GetParam().mAmc, ".amc"), mSkeleton);
        ASSERT_FALSE(mMotion.mFrames.empty());
        if (kSanitized && mMotion.mFrames.size() > kSanitizedMaxFrames)
            GTEST_SKIP() << "long motion left to the unsanitized build";
    }

    // Imports with pSettings, compares the host's world positions with the reference poses at
    // every checked frame, expects the largest difference below 0.001 cm and reports it as pKey.
    void CheckAndReport(const OrvImportSettings& pSettings, const std::string& pKey)
    {
        SCOPED_TRACE(pKey);
        const orvasf::OrvImportResult lImport = orvasf::OrvImportAsf(
            PairFile("asf", GetParam().mAsf, ".asf"), PairFile("amc", GetParam().mAmc, ".amc"), pSettings);
        ASSERT_TRUE(lImport.mSucceeded);
        EXPECT_EQ(static_cast<size_t>(lImport.mFrameCount), mMotion.mFrames.size());
        double lLargest = 0.0;
        const std::vector<size_t> lFrames = FramesToCheck(mMotion.mFrames.size());
        for (size_t f : lFrames)
        {
            const Frame& lFrame = mMotion.mFrames[f];
            const OrvTime lTime = OrvTime::FromFrame(lFrame.mNumber - mMotion.mFrames.front().mNumber, kFramesPerSecond);
            lLargest = std::max(lLargest, LargestDistanceToPose(lImport.mRoot, lTime, mSkeleton, lFrame.mValues.data()));
        }
        EXPECT_LT(lLargest, 1e-3);
        RecordProperty(pKey, std::to_string(lLargest));
        std::printf("%s + %s, %s: %zu frames checked, largest difference %.3g cm\n", GetParam().mAsf, GetParam().mAmc,
                    pKey.c_str(), lFrames.size(), lLargest);
    }

    Skeleton mSkeleton;
    Motion mMotion;
};

} // namespace

// Under every combination of the flags; and with curves unrolled (in each bone's rotation order)
// and reduced, which describe the same motion: the decomposed angles of the first combination
// are where unrolling has work to do.
TEST_P(ImportRealData, WorldPositionsMatchTheReferenceUnderAllFlagsAndFilters)
{
    for (const bool lUseRotationOffset : {false, true})
        for (const bool lUsePreRotation : {false, true})
        {
            CheckAndReport(Settings(lUseRotationOffset, lUsePreRotation),
                           std::string("largest_cm_offset") + (lUseRotationOffset ? "1" : "0") + "_pre" +
                               (lUsePreRotation ? "1" : "0"));
            if (HasFatalFailure()) return;
        }
    OrvImportSettings lSettings = Settings(false, false);
    lSettings.mRotationFilter = OrvRotationFilter::eUnroll;
    lSettings.mReduceKeys = true;
    CheckAndReport(lSettings, "largest_cm_offset0_pre0_filtered");
}

std::string PairName(const ::testing::TestParamInfo<MotionPair>& pInfo)
{
    std::string lName = std::string(pInfo.param.mAsf) + "_" + pInfo.param.mAmc;
    std::replace(lName.begin(), lName.end(), '-', '_');
    return lName;
}

INSTANTIATE_TEST_SUITE_P(SharedData, ImportRealData, ::testing::ValuesIn(kMotionPairs), PairName);
INSTANTIATE_TEST_SUITE_P(Bundled, ImportRealData, ::testing::Values(MotionPair{"walker", "walker"}), PairName);
