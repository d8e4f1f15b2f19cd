// The "convert" subcommand run as a process: both directions on the sample, compared through the
// tool's own "pose" output, and the statuses and messages of refused inputs, usage errors and
// outputs that cannot be written.
#include "support/BvhReference.h"
#include "support/ToolRunner.h"

namespace {

using namespace tool_support;

const std::string sSample = Quoted(kSampleAsf);
const std::string sSampleMotion = Quoted(kSampleAmc);

class ConvertTest : public ToolTest
{
protected:
    // Writes pText, the small BVH file unless given, as pName in the work folder.
    std::string SmallBvh(const std::string& pName, const std::string& pText = bvhtest::kSmallBvh) const
    {
        WriteFile(WorkPath(pName), pText);
        return Work(pName);
    }
};

} // namespace

TEST_F(ConvertTest, AsfAmcToBvhAndBackKeepsEveryJointInPlace)
{
    ASSERT_EQ(Run("convert " + sSample + " --motion " + sSampleMotion + " -o " + Work("walk.bvh")).mStatus, 0);
    ASSERT_EQ(Run("convert " + Work("walk.bvh") + " -o " + Work("walk.asf")).mStatus, 0);
    ASSERT_TRUE(fs::exists(WorkPath("walk.amc")));

    const ToolRun lBefore = Run("pose " + sSample + " " + sSampleMotion);
    const ToolRun lAfter = Run("pose " + Work("walk.asf") + " " + Work("walk.amc"));
    ASSERT_EQ(lBefore.mStatus, 0);
    ASSERT_EQ(lAfter.mStatus, 0) << lAfter.mErr;
    const PoseTable lOriginal = PoseRows(lBefore.mOut);
    ASSERT_FALSE(lOriginal.empty());
    ExpectSamePoses(lOriginal, PoseRows(lAfter.mOut), 1e-3);
}

TEST_F(ConvertTest, WritesTheMotionWhereMotionOutSays)
{
    const ToolRun lRun =
        Run("convert " + sSample + " --motion " + sSampleMotion + " --rotation-offset --pre-rotation -o " +
            Work("copy.asf") + " --motion-out " + Work("moves.amc"));
    EXPECT_EQ(lRun.mStatus, 0) << lRun.mErr;
    EXPECT_EQ(WorkFolderEntries(), (std::vector<std::string>{"copy.asf", "moves.amc"}));
    EXPECT_EQ(Run("convert " + SmallBvh("small.bvh") + " -o " + Work("small2.bvh")).mStatus, 0);
    EXPECT_NE(ReadFile(WorkPath("small2.bvh")).find("Frames: 3\n"), std::string::npos);
}

TEST_F(ConvertTest, RefusedBvhInputExitsWithOneAndNamesTheLine)
{
    const std::string lBad = SmallBvh("bad.bvh", bvhtest::Replace(bvhtest::kSmallBvh, "5 -2 7.5 30", "5 -2 7.5"));
    const ToolRun lRun = Run("convert " + lBad + " -o " + Work("out.asf"));
    EXPECT_EQ(lRun.mStatus, 1);
    EXPECT_EQ(lRun.mErr,
              WorkPath("bad.bvh").string() + ":29: error: Frame 2 holds 13 values; the hierarchy has 14 channels\n");
    EXPECT_EQ(WorkFolderEntries(), std::vector<std::string>{"bad.bvh"});
}

TEST_F(ConvertTest, UsageErrorsExitWithTwoAndUnwritableOutputsWithThree)
{
    const std::string lBvh = SmallBvh("small.bvh");
    const ToolRun lFormat = Run("convert " + lBvh + " -o " + Work("out.fbx"));
    EXPECT_EQ(lFormat.mStatus, 2);
    EXPECT_NE(lFormat.mErr.find("convert writes .bvh or .asf files"), std::string::npos) << lFormat.mErr;
    EXPECT_EQ(Run("convert " + lBvh + " --motion " + sSampleMotion + " -o " + Work("out.asf")).mStatus, 2);
    EXPECT_EQ(Run("convert " + lBvh + " -o " + Work("out.bvh") + " --motion-out " + Work("out.amc")).mStatus, 2);

    const ToolRun lUnwritable = Run("convert " + lBvh + " -o " + Work("missing/out.bvh"));
    EXPECT_EQ(lUnwritable.mStatus, 3);
    EXPECT_NE(lUnwritable.mErr.find("error: Can't create BVH file"), std::string::npos) << lUnwritable.mErr;
    EXPECT_EQ(WorkFolderEntries(), std::vector<std::string>{"small.bvh"});
}
