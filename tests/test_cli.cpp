// End-to-end tests of the orvasf command-line tool: each subcommand is run as a process on the
// sample data, checking exit statuses, messages and the shape of what it writes; "convert" in
// both directions, compared through the tool's own "pose" output.
#include "support/BvhReference.h"
#include "support/ToolRunner.h"

#include <nlohmann/json.hpp>

#include <set>

namespace {

using namespace tool_support;

// The sample: 20 bones and the root, 5 end nodes, 240 frames.
constexpr int kSampleNodes = 26;
constexpr int kSampleFrames = 240;

const std::string sSample = Quoted(kSampleAsf);
const std::string sSampleMotion = Quoted(kSampleAmc);
const std::string sSamplePair = sSample + " " + sSampleMotion;

using CliTest = ToolTest;

TEST_F(CliTest, HelpOnEverySubcommandExitsZeroAndListsExitStatuses)
{
    for (const char* lCommand : {"", "check", "tree", "import", "pose", "export", "format", "batch"})
    {
        const ToolRun lRun = Run(std::string(lCommand) + " --help");
        EXPECT_EQ(lRun.mStatus, 0) << lCommand;
        EXPECT_NE(lRun.mOut.find("Exit status: 0 success; 1 an input file was refused"), std::string::npos) << lCommand;
    }
}

TEST_F(CliTest, FailedRunsExitWithTheirStatusAndSayWhy)
{
    // 2: usage errors; 1: a refused input; 3: an output that cannot be written (nothing is left behind).
    const std::string lMissing = WorkPath("missing").string() + "/";
    const std::pair<std::string, int> lRuns[] = {
        {"", 2},
        {"frobnicate", 2},
        {"tree", 2},
        {"import " + sSample + " --no-such-flag", 2},
        {"import " + sSample + " --rotation-filter sideways", 2},
        {"import " + sSample + " --fps 0", 2},
        {"pose " + sSample, 2},
        {"pose " + sSamplePair + " --frames 3-1", 2},
        {"pose " + sSamplePair + " --frames 1,,2", 2},
        {"pose " + sSamplePair + " --frames 240", 2},
        {"export " + sSample, 2},
        {"export " + sSample + " -o " + Work("x.asf") + " --scale 1,2", 2},
        {"format " + sSample, 2},
        {"check " + Work("missing.asf"), 1},
        {"import " + sSample + " -o " + Work("missing/scene.json"), 3},
        {"export " + sSample + " -o " + Work("missing/out.asf"), 3},
    };
    for (const auto& [lCommand, lStatus] : lRuns)
    {
        const ToolRun lRun = Run(lCommand);
        EXPECT_EQ(lRun.mStatus, lStatus) << lCommand << "\n" << lRun.mErr;
        EXPECT_FALSE(lRun.mErr.empty()) << lCommand;
        if (lStatus == 3)
        {
            EXPECT_NE(lRun.mErr.find(lMissing), std::string::npos) << lRun.mErr;
        }
    }
    EXPECT_NE(Run("pose " + sSamplePair + " --frames 240").mErr.find("frame 240 is outside the motion"), std::string::npos);
    EXPECT_EQ(WorkFolderEntries(), std::vector<std::string>{});
}

TEST_F(CliTest, CheckPrintsOneLinePerFileAndRefusesABadOne)
{
    // Lines 1-9 are fine; line 10 holds a length that is not a number.
    WriteFile(WorkPath("bad.asf"), ":version 1.10\n:name broken\n:units\n  length 0.45\n:root\n  order TX TY TZ RX RY RZ\n"
                                   "  axis XYZ\n:bonedata\n  begin\n    length abc\n  end\n");
    const ToolRun lRun = Run("check " + Work("bad.asf") + " " + sSample);
    EXPECT_EQ(lRun.mStatus, 1);
    EXPECT_NE(lRun.mErr.find(WorkPath("bad.asf").string() + ":10: error: "), std::string::npos) << lRun.mErr;
    EXPECT_EQ(Lines(lRun.mOut), std::vector<std::string>{kSampleAsf + ": skeleton \"walker\", 20 bones + root, 46 DOFs, "
                                                                      "units mass 1 length 0.45 angle deg"});
    EXPECT_EQ(Run("check " + sSample).mStatus, 0);
}

TEST_F(CliTest, TreeIndentsBonesWithDofsLengthsAndLimits)
{
    const ToolRun lRun = Run("tree " + sSample);
    ASSERT_EQ(lRun.mStatus, 0) << lRun.mErr;
    const std::vector<std::string> lLines = Lines(lRun.mOut);
    ASSERT_EQ(lLines.size(), 22u);  // a title, the root and 20 bones
    EXPECT_EQ(lLines[1], "root  dof tx ty tz rx ry rz  length 0");
    // 7.1 file units of 1/0.45 inch are 40.0756 cm.
    EXPECT_EQ(lLines[3], "    lfemur  dof rx ry rz  length 40.0756  limits rx (-160 20) ry (-70 70) rz (-60 70)");
    EXPECT_EQ(lLines[4], "      ltibia  dof rx  length 41.2044  limits rx (-10 170)");
}

TEST_F(CliTest, ImportWritesEveryNodeAndCurveAsJson)
{
    const std::string lFlags = " --rotation-offset --pre-rotation --limits --take Walk";
    ASSERT_EQ(Run("import " + sSample + " --motion " + sSampleMotion + lFlags + " -o " + Work("scene.json")).mOut, "");
    const nlohmann::json lScene = nlohmann::json::parse(ReadFile(WorkPath("scene.json")));
    EXPECT_EQ(lScene["take"], "Walk");

    const nlohmann::json& lNodes = lScene["nodes"];
    ASSERT_EQ(lNodes.size(), static_cast<size_t>(kSampleNodes));
    std::set<std::string> lSeen = {"RootNode"};
    for (const nlohmann::json& lNode : lNodes)
    {
        EXPECT_EQ(lSeen.count(lNode["parent"].get<std::string>()), 1u) << "parent listed before " << lNode["name"];
        lSeen.insert(lNode["name"].get<std::string>());
        EXPECT_EQ(lNode["attribute"]["type"], "skeleton");
    }
    // The set-up flags move the rest pose into the pivots.
    const nlohmann::json& lFemur = lNodes[2];
    EXPECT_EQ(lFemur["name"], "lfemur");
    EXPECT_EQ(lFemur["translation"], nlohmann::json::array({0.0, 0.0, 0.0}));
    EXPECT_NE(lFemur["rotationOffset"], nlohmann::json::array({0.0, 0.0, 0.0}));
    EXPECT_DOUBLE_EQ(lFemur["preRotation"][2].get<double>(), 20.0);
    EXPECT_EQ(lFemur["rotationLimits"]["active"], true);

    // 60 rotation and translation curves of the bones with DOFs, one key per frame each.
    const nlohmann::json& lCurves = lScene["curves"];
    ASSERT_EQ(lCurves.size(), 60u);
    for (const nlohmann::json& lCurve : lCurves) EXPECT_EQ(lCurve["keys"].size(), static_cast<size_t>(kSampleFrames));
    EXPECT_EQ(lCurves[0]["name"], "root_tx");
    EXPECT_EQ(lCurves[0]["property"], "translation");
    EXPECT_DOUBLE_EQ(lCurves[0]["keys"][1][0].get<double>(), 1.0 / 120.0);
}

TEST_F(CliTest, ImportSummaryCountsTheSample)
{
    const ToolRun lRun = Run("import " + sSample + " --motion " + sSampleMotion + " --summary");
    ASSERT_EQ(lRun.mStatus, 0) << lRun.mErr;
    for (const char* lLine : {"  bones          20 + root\n", "  host nodes     26\n", "  curves         60\n",
                              "  keys           14400\n", "  frames         240 at 120 fps (1.992 s)\n", "  read ",
                              "  sampling ", "  node building "})
        EXPECT_NE(lRun.mOut.find(lLine), std::string::npos) << lLine << lRun.mOut;

    const ToolRun lReduced = Run("import " + sSample + " --motion " + sSampleMotion + " --summary --reduce-keys");
    ASSERT_EQ(lReduced.mStatus, 0);
    EXPECT_EQ(lReduced.mOut.find("keys           14400\n"), std::string::npos) << "constant curves lose keys";
}

TEST_F(CliTest, PosePrintsOneRowPerFrameAndNode)
{
    const std::vector<std::string> lLines = Lines(Run("pose " + sSamplePair + " --frames 0,120,238-239").mOut);
    ASSERT_EQ(lLines.size(), 1u + 4u * kSampleNodes);
    EXPECT_EQ(lLines[0], "frame,joint,x,y,z");
    // The root starts at 16.9 file units of 1/0.45 inch above the ground.
    EXPECT_EQ(lLines[1], "0,root,0.0000,95.3911,0.0000");
    EXPECT_EQ(lLines.back().rfind("239,", 0), 0u);

    ASSERT_EQ(Run("pose " + sSamplePair + " -o " + Work("pose.csv")).mStatus, 0);
    EXPECT_EQ(Lines(ReadFile(WorkPath("pose.csv"))).size(), 1u + static_cast<size_t>(kSampleFrames) * kSampleNodes);

    // --decimals from 0 to 17 digits after the point; 18 is a usage error.
    EXPECT_EQ(Lines(Run("pose " + sSamplePair + " --frames 0 --decimals 0").mOut)[1], "0,root,0,95,0");
    EXPECT_EQ(Lines(Run("pose " + sSamplePair + " --frames 0 --decimals 17").mOut)[1].size(),
              std::string("0,root,0.00000000000000000,95.39111111111111427,0.00000000000000000").size());
    EXPECT_EQ(Run("pose " + sSamplePair + " --frames 0 --decimals 18").mStatus, 2);
}

TEST_F(CliTest, FormatOutputReadsBackToTheSameTree)
{
    ASSERT_EQ(Run("format " + sSample + " -o " + Work("once.asf")).mStatus, 0);
    ASSERT_EQ(Run("format " + Work("once.asf") + " -o " + Work("twice.asf")).mStatus, 0);
    EXPECT_EQ(ReadFile(WorkPath("once.asf")), ReadFile(WorkPath("twice.asf")));
    EXPECT_EQ(Run("tree " + Work("once.asf")).mOut, Run("tree " + sSample).mOut);
}

TEST_F(CliTest, ExportKeepsTheRestPoseInEveryMode)
{
    // A motion of one frame leaves every curve out, so the pose is the rest pose.
    WriteFile(WorkPath("rest.amc"), "1\nroot 0 0 0 0 0 0\n");
    const auto lOriginal = PoseRows(Run("pose " + sSample + " " + Work("rest.amc")).mOut);
    ASSERT_EQ(lOriginal.size(), static_cast<size_t>(kSampleNodes));
    for (const char* lMode : {"", " --local-transform", " --translation-dofs"})
    {
        SCOPED_TRACE(lMode);
        ASSERT_EQ(Run("export " + sSample + " -o " + Work("out.asf") + lMode).mStatus, 0);
        const PoseTable lExported = PoseRows(Run("pose " + Work("out.asf") + " " + Work("rest.amc")).mOut);
        ASSERT_EQ(lExported.size(), lOriginal.size());
        ExpectSamePoses(lOriginal, lExported, 1e-3);
    }
    EXPECT_NE(Run("tree " + Work("out.asf")).mOut.find("lfemur  dof tx ty tz"), std::string::npos);
    EXPECT_NE(Run("check " + Work("out.asf")).mOut.find("skeleton \"ASF\""), std::string::npos);
    ASSERT_EQ(Run("export " + sSample + " -o " + Work("big.asf") + " --scale 2,2,2").mStatus, 0);
    EXPECT_NE(Run("tree " + Work("big.asf")).mOut.find("lfemur  dof rx ry rz  length 80.1512"), std::string::npos);
}

TEST_F(CliTest, OutputThatCannotTakeTheTargetsPlaceLeavesNoTemporaryFile)
{
    // A folder in the output's place: the text is written, then cannot take the target's place.
    fs::create_directory(WorkPath("taken.asf"));
    const ToolRun lRun = Run("format " + sSample + " -o " + Work("taken.asf"));
    EXPECT_EQ(lRun.mStatus, 3);
    EXPECT_NE(lRun.mErr.find("taken.asf"), std::string::npos) << lRun.mErr;
    EXPECT_EQ(WorkFolderEntries(), std::vector<std::string>{"taken.asf"});
}

TEST_F(CliTest, ConvertAsfAmcToBvhAndBackKeepsEveryJointInPlace)
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

TEST_F(CliTest, ConvertWritesTheMotionWhereMotionOutSays)
{
    const ToolRun lRun =
        Run("convert " + sSample + " --motion " + sSampleMotion + " --rotation-offset --pre-rotation -o " +
            Work("copy.asf") + " --motion-out " + Work("moves.amc"));
    EXPECT_EQ(lRun.mStatus, 0) << lRun.mErr;
    EXPECT_EQ(WorkFolderEntries(), (std::vector<std::string>{"copy.asf", "moves.amc"}));
    // BVH to BVH.
    WriteFile(WorkPath("small.bvh"), bvhtest::kSmallBvh);
    EXPECT_EQ(Run("convert " + Work("small.bvh") + " -o " + Work("small2.bvh")).mStatus, 0);
    EXPECT_NE(ReadFile(WorkPath("small2.bvh")).find("Frames: 3\n"), std::string::npos);
}

TEST_F(CliTest, ConvertRefusedBvhInputExitsWithOneAndNamesTheLine)
{
    WriteFile(WorkPath("bad.bvh"), Replace(bvhtest::kSmallBvh, "5 -2 7.5 30", "5 -2 7.5"));
    const ToolRun lRun = Run("convert " + Work("bad.bvh") + " -o " + Work("out.asf"));
    EXPECT_EQ(lRun.mStatus, 1);
    EXPECT_EQ(lRun.mErr,
              WorkPath("bad.bvh").string() + ":29: error: Frame 2 holds 13 values; the hierarchy has 14 channels\n");
    EXPECT_EQ(WorkFolderEntries(), std::vector<std::string>{"bad.bvh"});
}

TEST_F(CliTest, ConvertUsageErrorsExitWithTwoAndUnwritableOutputsWithThree)
{
    WriteFile(WorkPath("small.bvh"), bvhtest::kSmallBvh);
    const std::string lBvh = Work("small.bvh");
    const ToolRun lFormat = Run("convert " + lBvh + " -o " + Work("out.fbx"));
    EXPECT_EQ(lFormat.mStatus, 2);
    EXPECT_NE(lFormat.mErr.find("convert writes .asf, .bvh, .glb or .gltf files"), std::string::npos) << lFormat.mErr;
    EXPECT_EQ(Run("convert " + lBvh + " --motion " + sSampleMotion + " -o " + Work("out.asf")).mStatus, 2);
    EXPECT_EQ(Run("convert " + lBvh + " -o " + Work("out.bvh") + " --motion-out " + Work("out.amc")).mStatus, 2);
    // glTF options outside glTF files: an animation to choose in a BVH input, a buffer layout of a .glb.
    EXPECT_EQ(Run("convert " + lBvh + " -o " + Work("out.glb") + " --animation walk").mStatus, 2);
    EXPECT_EQ(Run("convert " + lBvh + " -o " + Work("out.glb") + " --buffer separate").mStatus, 2);
    EXPECT_EQ(Run("convert " + lBvh + " -o " + Work("out.gltf") + " --buffer inside").mStatus, 2);

    for (const char* lOutput : {"missing/out.bvh", "missing/out.glb"})
    {
        const ToolRun lUnwritable = Run("convert " + lBvh + " -o " + Work(lOutput));
        EXPECT_EQ(lUnwritable.mStatus, 3) << lOutput;
        EXPECT_NE(lUnwritable.mErr.find("error: Can't create"), std::string::npos) << lUnwritable.mErr;
    }
    EXPECT_EQ(WorkFolderEntries(), std::vector<std::string>{"small.bvh"});
}

} // namespace
