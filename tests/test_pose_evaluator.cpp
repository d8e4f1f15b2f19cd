// The whole-pose evaluator against each node's own evaluation: locals to the bit, globals and
// world positions within rounding, on the sample and on every shared motion.
#include "driver/OrvImportDriver.h"
#include "orvsdk/host/scene/OrvNode.h"
#include "orvsdk/host/scene/OrvPoseEvaluator.h"
#include "support/SharedMotionPairs.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <string>
#include <vector>

namespace {

using namespace orvsdk;

// Largest difference between two matrices' entries, relative to the larger entry (at least 1).
double RelativeDifference(const OrvAMatrix& pA, const OrvAMatrix& pB)
{
    double lLargest = 0.0;
    for (int lRow = 0; lRow < 4; ++lRow)
        for (int lColumn = 0; lColumn < 4; ++lColumn)
        {
            const double lScale = std::max({1.0, std::abs(pA(lRow, lColumn)), std::abs(pB(lRow, lColumn))});
            lLargest = std::max(lLargest, std::abs(pA(lRow, lColumn) - pB(lRow, lColumn)) / lScale);
        }
    return lLargest;
}

// Compares, at every pStride-th frame and the last, the evaluator's locals, globals and
// positions with the nodes' own EvaluateLocalTransform and EvaluateGlobalTransform.
void ExpectEvaluatorAgreesWithTheNodes(const orvasf::OrvImportResult& pImport, int pStride)
{
    const OrvPoseEvaluator lEvaluator(pImport.mRoot, pImport.mTake);
    const std::vector<OrvNode*>& lNodes = lEvaluator.GetNodes();
    ASSERT_EQ(lNodes.front(), pImport.mRoot);
    std::vector<OrvAMatrix> lLocals(lNodes.size());
    std::vector<OrvAMatrix> lGlobals(lNodes.size());
    std::vector<double> lPositions(3 * lNodes.size());
    const int lFrames = static_cast<int>(std::max<int64_t>(pImport.mFrameSpan, 1));
    double lWorst = 0.0;
    for (int lFrame = 0;; lFrame = std::min(lFrame + pStride, lFrames - 1))
    {
        const OrvTime lTime = OrvTime::FromFrame(lFrame, pImport.mFramesPerSecond);
        lEvaluator.EvaluateLocals(lTime, lLocals.data());
        lEvaluator.EvaluatePositions(lTime, lGlobals.data(), lPositions.data());
        for (size_t i = 0; i < lNodes.size(); ++i)
        {
            const OrvAMatrix lOwnLocal = lNodes[i]->EvaluateLocalTransform(lTime);
            for (int lEntry = 0; lEntry < 16; ++lEntry)
                ASSERT_EQ(lLocals[i](lEntry / 4, lEntry % 4), lOwnLocal(lEntry / 4, lEntry % 4))
                    << lNodes[i]->GetName() << " frame " << lFrame;
            const OrvAMatrix lOwnGlobal = lNodes[i]->EvaluateGlobalTransform(lTime);
            lWorst = std::max(lWorst, RelativeDifference(lGlobals[i], lOwnGlobal));
            for (int lAxis = 0; lAxis < 3; ++lAxis) ASSERT_EQ(lPositions[3 * i + lAxis], lGlobals[i](lAxis, 3));
        }
        if (lFrame == lFrames - 1) break;
    }
    EXPECT_LT(lWorst, 1e-9);
}

TEST(PoseEvaluator, AgreesWithTheNodesOnTheSampleUnderEverySetup)
{
    const std::string lExamples = std::string(ORV_SOURCE_DIR) + "/examples/";
    for (const bool lRotationOffset : {false, true})
        for (const bool lPreRotation : {false, true})
        {
            SCOPED_TRACE(std::string("rotation offset ") + (lRotationOffset ? "on" : "off") + ", pre-rotation " +
                         (lPreRotation ? "on" : "off"));
            orvasf::OrvImportSettings lSettings;
            lSettings.mUseRotationOffset = lRotationOffset;
            lSettings.mUsePreRotation = lPreRotation;
            const orvasf::OrvImportResult lImport =
                orvasf::OrvImportAsf(lExamples + "walker.asf", lExamples + "walker.amc", lSettings);
            ASSERT_TRUE(lImport.mSucceeded);
            ExpectEvaluatorAgreesWithTheNodes(lImport, 7);
        }
}

TEST(PoseEvaluator, FramesInOneCallMatchFramesOneByOne)
{
    const std::string lExamples = std::string(ORV_SOURCE_DIR) + "/examples/";
    const orvasf::OrvImportResult lImport =
        orvasf::OrvImportAsf(lExamples + "walker.asf", lExamples + "walker.amc", orvasf::OrvImportSettings());
    ASSERT_TRUE(lImport.mSucceeded);
    const OrvPoseEvaluator lEvaluator(lImport.mRoot, lImport.mTake);
    const size_t lStride = 3 * static_cast<size_t>(lEvaluator.GetNodeCount());
    std::vector<double> lRange(5 * lStride);
    lEvaluator.EvaluatePositionFrames(100, 5, lImport.mFramesPerSecond, lRange.data());
    std::vector<OrvAMatrix> lScratch(static_cast<size_t>(lEvaluator.GetNodeCount()));
    std::vector<double> lOne(lStride);
    for (int lFrame = 0; lFrame < 5; ++lFrame)
    {
        lEvaluator.EvaluatePositions(OrvTime::FromFrame(100 + lFrame, lImport.mFramesPerSecond), lScratch.data(),
                                     lOne.data());
        EXPECT_TRUE(std::equal(lOne.begin(), lOne.end(), lRange.begin() + static_cast<long>(lStride) * lFrame));
    }
}

class PoseEvaluatorSharedData : public ::testing::TestWithParam<shareddata::MotionPair>
{
};

TEST_P(PoseEvaluatorSharedData, AgreesWithTheNodes)
{
    const std::filesystem::path lData(ORV_SHARED_DATA_DIR);
    if (!std::filesystem::is_directory(lData)) GTEST_SKIP() << "no shared data";
    orvasf::OrvImportSettings lSettings;
    lSettings.mUsePreRotation = true;  // pre-rotations and bone orders both take part
    const orvasf::OrvImportResult lImport = orvasf::OrvImportAsf(
        (lData / "asf" / (std::string(GetParam().mAsf) + ".asf")).string(),
        (lData / "amc" / (std::string(GetParam().mAmc) + ".amc")).string(), lSettings);
    ASSERT_TRUE(lImport.mSucceeded);
    ExpectEvaluatorAgreesWithTheNodes(lImport, shareddata::kSanitized ? 97 : 13);
}

INSTANTIATE_TEST_SUITE_P(SharedData, PoseEvaluatorSharedData, ::testing::ValuesIn(shareddata::kMotionPairs));

} // namespace
