// End-to-end tests of "orvasf render" and "orvasf plot": every picture is read back with
// Python's xml.etree (and checked by xmllint), and what it shows is compared with numbers the
// test gets elsewhere: the pose command's world positions projected here, and the AMC and BVH
// files' own channel values.
#include "support/BvhReference.h"
#include "support/ToolRunner.h"

#include <iterator>
#include <map>
#include <set>
#include <sstream>

namespace {

using namespace tool_support;

// A skeleton whose bones point along all three axes at once, so that a swapped or mirrored
// axis moves every joint, and whose names need XML escaping:
//
//   root ── lfemur ── ltibia ── (ltibia_End)
//        ├─ rfemur ── (rfemur_End)
//        └─ back&<"top' ── (back&<"top'_End)
const char* const kFigureAsf = R"(:version 1.10
:name tiny
:units
  mass 1.0
  length 1.0
  angle deg
:root
  order TX TY TZ RX RY RZ
  axis XYZ
  position 0 0 0
  orientation 0 0 0
:bonedata
  begin
    id 1
    name lfemur
    direction 0.3 -0.9 0.2
    length 10
    axis 0 0 0 XYZ
    dof rx ry rz
  end
  begin
    id 2
    name ltibia
    direction 0.1 -0.8 -0.5
    length 8
    axis 0 0 0 XYZ
    dof rx
  end
  begin
    id 3
    name rfemur
    direction -0.4 -0.9 -0.1
    length 10
    axis 0 0 0 XYZ
    dof rx ry rz
  end
  begin
    id 4
    name back&<"top'
    direction 0.05 1 0.3
    length 12
    axis 0 0 0 XYZ
    dof rx ry rz
  end
:hierarchy
  begin
    root lfemur rfemur back&<"top'
    lfemur ltibia
  end
)";

// Three frames in which the root moves along every axis and every bone turns.
const char* const kFigureAmc = R"(:FULLY-SPECIFIED
:DEGREES
1
root 1 20 -3 10 20 30
lfemur 10 -20 5
ltibia 40
rfemur -30 10 0
back&<"top' 5 15 -25
2
root 4 22 5 -15 40 -10
lfemur 60 10 -5
ltibia 80
rfemur 20 -30 15
back&<"top' -20 35 10
3
root -6 18 9 5 -60 20
lfemur -30 25 40
ltibia 10
rfemur 45 5 -35
back&<"top' 30 -40 5
)";

// Prints what the tests read from a picture, one item per line:
//   J FRAME JOINT CX CY FILL        a joint dot of a figure
//   P CHANNEL SET DASHED X,Y ...    a polyline of a plot
//   A RIGHT UP                      the names of a film strip's axes
//   R X Y WIDTH HEIGHT TMIN TMAX VMIN VMAX   the plot area and its ranges
const char* const kSvgDump = R"(import sys, xml.etree.ElementTree as ET
ns = '{http://www.w3.org/2000/svg}'
root = ET.parse(sys.argv[1]).getroot()
for g in root.iter(ns + 'g'):
    for c in g.iter(ns + 'circle'):
        if 'data-frame' in g.attrib:
            print('J', g.get('data-frame'), c.get('data-joint'), c.get('cx'), c.get('cy'), c.get('fill'))
for p in root.iter(ns + 'polyline'):
    print('P', p.get('data-channel'), p.get('data-set'), 'stroke-dasharray' in p.attrib, p.get('points'))
for g in root.iter(ns + 'g'):
    if 'data-axes' in g.attrib:
        print('A', ' '.join(t.text for t in g.iter(ns + 'text')))
for r in root.iter(ns + 'rect'):
    if 'data-time-min' in r.attrib:
        print('R', *[r.get(k) for k in ('x', 'y', 'width', 'height', 'data-time-min', 'data-time-max',
                                         'data-value-min', 'data-value-max')])
)";

struct Dot
{
    double mX;
    double mY;
    std::string mFill;
};

struct Polyline
{
    std::string mChannel;
    std::string mSet;
    bool mDashed;
    std::vector<std::pair<double, double>> mPoints;
};

// What a picture shows, as xml.etree read it.
struct Picture
{
    std::map<std::pair<std::string, std::string>, Dot> mDots;  // by frame and joint
    std::vector<Polyline> mLines;
    std::vector<double> mArea;  // x, y, width, height, time min, max, value min, max
    std::string mAxisNames;     // a film strip's, "RIGHT UP"
};

class RenderTest : public ToolTest
{
  protected:
    void SetUp() override
    {
        ToolTest::SetUp();
        WriteFile(mFolder / "dump_svg.py", kSvgDump);
        WriteFile(WorkPath("tiny.asf"), kFigureAsf);
        WriteFile(WorkPath("tiny.amc"), kFigureAmc);
    }

    // The picture at pPath, after xmllint found it well-formed.
    Picture ReadPicture(const fs::path& pPath) const
    {
        EXPECT_EQ(std::system(("xmllint --noout " + Quoted(pPath.string())).c_str()), 0) << pPath;
        const std::string lDumpPath = (mFolder / "dump.txt").string();
        const std::string lCommand = "python3 " + Quoted((mFolder / "dump_svg.py").string()) + " " +
                                     Quoted(pPath.string()) + " >" + Quoted(lDumpPath);
        EXPECT_EQ(std::system(lCommand.c_str()), 0) << "xml.etree could not read " << pPath;
        Picture lPicture;
        for (const std::string& lLine : Lines(ReadFile(lDumpPath)))
        {
            std::istringstream lFields(lLine);
            std::string lKind;
            lFields >> lKind;
            if (lKind == "J")
            {
                std::string lFrame, lJoint;
                Dot lDot;
                lFields >> lFrame >> lJoint >> lDot.mX >> lDot.mY >> lDot.mFill;
                lPicture.mDots[{lFrame, lJoint}] = lDot;
            }
            else if (lKind == "P")
            {
                Polyline lPolyline;
                std::string lDashed, lPoint;
                lFields >> lPolyline.mChannel >> lPolyline.mSet >> lDashed;
                lPolyline.mDashed = lDashed == "True";
                while (lFields >> lPoint)
                    lPolyline.mPoints.emplace_back(std::stod(lPoint), std::stod(lPoint.substr(lPoint.find(',') + 1)));
                lPicture.mLines.push_back(lPolyline);
            }
            else if (lKind == "A")
                std::getline(lFields >> std::ws, lPicture.mAxisNames);
            else
                for (double lValue = 0.0; lFields >> lValue;) lPicture.mArea.push_back(lValue);
        }
        return lPicture;
    }

    static bool ToolsPresent() { return std::system("command -v xmllint python3 >/dev/null") == 0; }
};

// The joint name of a pose CSV row, its quotes undone.
std::string CsvName(std::string pField)
{
    if (pField.empty() || pField.front() != '"') return pField;
    pField = Replace(pField.substr(1, pField.size() - 2), "\"\"", "\"");
    return pField;
}

// Each view's picture axes, as the help states them: the world axis shown to the right and its
// sign, the world axis shown upwards and its sign (SVG y grows downwards).
struct ViewCase
{
    const char* mView;
    int mRight;
    double mRightSign;
    int mUp;
    double mUpSign;
    const char* mAxisNames;  // the picture's names of its right and up axes
};

TEST_F(RenderTest, FiguresShowThePoseCommandsPositionsProjectedByEachViewAtOneScale)
{
    if (!ToolsPresent()) GTEST_SKIP() << "xmllint or python3 is missing";
    const ToolRun lPose = Run("pose " + Work("tiny.asf") + " " + Work("tiny.amc"));
    ASSERT_EQ(lPose.mStatus, 0) << lPose.mErr;
    std::map<std::pair<std::string, std::string>, std::vector<double>> lWorld;
    for (const auto& [lKey, lPosition] : PoseRows(lPose.mOut))
        lWorld[{std::to_string(lKey.first), CsvName(lKey.second)}] = lPosition;
    ASSERT_EQ(lWorld.size(), 3u * 8u);

    for (const ViewCase& lCase :
         {ViewCase{"front", 0, 1.0, 1, 1.0, "X \u2192 Y \u2191"}, ViewCase{"side", 2, 1.0, 1, 1.0, "Z \u2192 Y \u2191"},
          ViewCase{"top", 0, 1.0, 2, -1.0, "X \u2192 Z \u2193"}})
    {
        SCOPED_TRACE(lCase.mView);
        const ToolRun lRun = Run("render " + Work("tiny.asf") + " --motion " + Work("tiny.amc") + " --view " +
                                 lCase.mView + " -o " + Work("tiny.svg"));
        ASSERT_EQ(lRun.mStatus, 0) << lRun.mErr;
        const Picture lPicture = ReadPicture(WorkPath("tiny.svg"));
        ASSERT_EQ(lPicture.mDots.size(), lWorld.size());
        EXPECT_EQ(lPicture.mAxisNames, lCase.mAxisNames);
        const auto lRight = [&](const std::vector<double>& pAt) { return lCase.mRightSign * pAt[lCase.mRight]; };
        const auto lUp = [&](const std::vector<double>& pAt) { return lCase.mUpSign * pAt[lCase.mUp]; };

        // The scale from the joint farthest to the right of the root in frame 0; it must hold for
        // every joint of every figure, each figure placed by its root.
        const std::vector<double>& lRoot0 = lWorld.at({"0", "root"});
        const std::vector<double>& lFar0 = lWorld.at({"0", "ltibia_End"});
        const double lScale = (lPicture.mDots.at({"0", "ltibia_End"}).mX - lPicture.mDots.at({"0", "root"}).mX) /
                              (lRight(lFar0) - lRight(lRoot0));
        ASSERT_GT(lScale, 0.0);
        for (const auto& [lKey, lPosition] : lWorld)
        {
            const Dot& lRootDot = lPicture.mDots.at({lKey.first, "root"});
            const std::vector<double>& lRoot = lWorld.at({lKey.first, "root"});
            const Dot& lDot = lPicture.mDots.at(lKey);
            EXPECT_NEAR(lDot.mX - lRootDot.mX, lScale * (lRight(lPosition) - lRight(lRoot)), 0.02) << lKey.second;
            EXPECT_NEAR(lDot.mY - lRootDot.mY, -lScale * (lUp(lPosition) - lUp(lRoot)), 0.02) << lKey.second;
        }
        // The side of the body a joint name states sets its colour.
        EXPECT_EQ(lPicture.mDots.at({"1", "ltibia"}).mFill, "#1f77b4");
        EXPECT_EQ(lPicture.mDots.at({"1", "rfemur_End"}).mFill, "#d62728");
        EXPECT_EQ(lPicture.mDots.at({"1", "back&<\"top'"}).mFill, "#444444");
    }
}

TEST_F(RenderTest, FrontAndSideFiguresStandOnOneGround)
{
    if (!ToolsPresent()) GTEST_SKIP() << "xmllint or python3 is missing";
    // The ground Y = 0 lies at the same picture height under every figure: a root's picture
    // height plus its world height times the scale is that of the ground.
    const PoseTable lWorld = PoseRows(Run("pose " + Work("tiny.asf") + " " + Work("tiny.amc")).mOut);
    ASSERT_EQ(Run("render " + Work("tiny.asf") + " --motion " + Work("tiny.amc") + " -o " + Work("front.svg")).mStatus,
              0);
    const Picture lPicture = ReadPicture(WorkPath("front.svg"));
    const double lScale = (lPicture.mDots.at({"0", "ltibia"}).mY - lPicture.mDots.at({"0", "root"}).mY) /
                          -(lWorld.at({0, "ltibia"})[1] - lWorld.at({0, "root"})[1]);
    std::vector<double> lGrounds;
    for (int lFrame = 0; lFrame < 3; ++lFrame)
        lGrounds.push_back(lPicture.mDots.at({std::to_string(lFrame), "root"}).mY +
                           lScale * lWorld.at({lFrame, "root"})[1]);
    EXPECT_NEAR(lGrounds[1], lGrounds[0], 0.02);
    EXPECT_NEAR(lGrounds[2], lGrounds[0], 0.02);
}

TEST_F(RenderTest, DefaultFramesSpreadEightFiguresOverTheMotionOrShowTheRestPose)
{
    if (!ToolsPresent()) GTEST_SKIP() << "xmllint or python3 is missing";
    // The sample's 240 frames: 0 to 239 in seven equal steps, rounded; the same from glTF, or its
    // 60 frames when --fps 30 samples it.
    ASSERT_EQ(
        Run("convert " + Quoted(kSampleAsf) + " --motion " + Quoted(kSampleAmc) + " -o " + Work("walk.glb")).mStatus,
        0);
    const std::pair<std::string, std::set<std::string>> lCases[] = {
        {Quoted(kSampleAsf) + " --motion " + Quoted(kSampleAmc), {"0", "34", "68", "102", "137", "171", "205", "239"}},
        {Work("walk.glb"), {"0", "34", "68", "102", "137", "171", "205", "239"}},
        {Work("walk.glb") + " --fps 30", {"0", "8", "17", "25", "34", "42", "51", "59"}},  // sampled at 30 fps
        {Work("tiny.asf") + " --motion " + Work("tiny.amc"), {"0", "1", "2"}},
        {Work("tiny.asf"), {"rest"}},
        {Quoted(kSampleAsf) + " --motion " + Quoted(kSampleAmc) + " --frames 5,7-8", {"5", "7", "8"}},
    };
    for (const auto& [lArguments, lFrames] : lCases)
    {
        ASSERT_EQ(Run("render " + lArguments + " -o " + Work("strip.svg")).mStatus, 0) << lArguments;
        std::set<std::string> lDrawn;
        for (const auto& lEntry : ReadPicture(WorkPath("strip.svg")).mDots) lDrawn.insert(lEntry.first.first);
        EXPECT_EQ(lDrawn, lFrames) << lArguments;
    }
}

TEST_F(RenderTest, BvhJointNamesGiveTheSides)
{
    if (!ToolsPresent()) GTEST_SKIP() << "xmllint or python3 is missing";
    WriteFile(WorkPath("sides.bvh"),
              Replace(Replace(bvhtest::kSmallBvh, "JOINT Leg", "JOINT LeftUpLeg"), "JOINT Chest", "JOINT RightArm"));
    const ToolRun lRun = Run("render " + Work("sides.bvh") + " --frames 1 --view side -o " + Work("sides.svg"));
    ASSERT_EQ(lRun.mStatus, 0) << lRun.mErr;
    const Picture lPicture = ReadPicture(WorkPath("sides.svg"));
    EXPECT_EQ(lPicture.mDots.at({"1", "LeftUpLeg"}).mFill, "#1f77b4");
    EXPECT_EQ(lPicture.mDots.at({"1", "RightArm"}).mFill, "#d62728");
    EXPECT_EQ(lPicture.mDots.size(), 5u);
}

// The key values of a plot's polylines, read back through the plot area's ranges.
std::map<std::string, std::vector<std::pair<double, double>>> PlottedKeys(const Picture& pPicture,
                                                                          const std::string& pSet)
{
    std::map<std::string, std::vector<std::pair<double, double>>> lKeys;
    const std::vector<double>& lArea = pPicture.mArea;
    for (const Polyline& lLine : pPicture.mLines)
    {
        if (lLine.mSet != pSet) continue;
        for (const auto& [lX, lY] : lLine.mPoints)
            lKeys[lLine.mChannel].emplace_back(lArea[4] + (lX - lArea[0]) / lArea[2] * (lArea[5] - lArea[4]),
                                               lArea[7] - (lY - lArea[1]) / lArea[3] * (lArea[7] - lArea[6]));
    }
    return lKeys;
}

TEST_F(RenderTest, PlotPointsMapBackToTheMotionFilesChannelValues)
{
    if (!ToolsPresent()) GTEST_SKIP() << "xmllint or python3 is missing";
    // The sample's lowerback has no axis rotation and turns rx ry rz: its keys are the AMC values.
    std::vector<std::vector<double>> lAmc;
    for (const std::string& lLine : Lines(ReadFile(kSampleAmc)))
        if (lLine.rfind("lowerback ", 0) == 0)
        {
            std::istringstream lFields(lLine.substr(10));
            lAmc.emplace_back(std::istream_iterator<double>(lFields), std::istream_iterator<double>());
        }
    ASSERT_EQ(lAmc.size(), 240u);
    ASSERT_EQ(Run("plot " + Quoted(kSampleAsf) + " --motion " + Quoted(kSampleAmc) + " --joint lowerback -o " +
                  Work("plot.svg"))
                  .mStatus,
              0);
    const Picture lPicture = ReadPicture(WorkPath("plot.svg"));
    ASSERT_EQ(lPicture.mArea.size(), 8u);
    const double lValueTolerance = 0.01 * (lPicture.mArea[7] - lPicture.mArea[6]) / lPicture.mArea[3];
    const auto lKeys = PlottedKeys(lPicture, "keys");
    ASSERT_EQ(lKeys.size(), 3u);
    for (int lChannel = 0; lChannel < 3; ++lChannel)
    {
        const auto& lPoints = lKeys.at(std::string(1, static_cast<char>('X' + lChannel)));
        ASSERT_EQ(lPoints.size(), lAmc.size());
        for (size_t i = 0; i < lPoints.size(); ++i)
        {
            EXPECT_NEAR(lPoints[i].first, static_cast<double>(i) / 120.0, 1e-3);
            EXPECT_NEAR(lPoints[i].second, lAmc[i][static_cast<size_t>(lChannel)], lValueTolerance) << i;
        }
    }

    // A BVH joint's keys are its channel values; Chest turns X, Y, Z and Hips moves.
    WriteFile(WorkPath("small.bvh"), bvhtest::kSmallBvh);
    const std::pair<std::string, std::map<std::string, std::vector<double>>> lBvhCases[] = {
        {"--joint Chest", {{"X", {0, 10, -90}}, {"Y", {0, 20, 45}}, {"Z", {0, -30, 135}}}},
        {"--joint Hips --channels translation", {{"X", {0, 5, -3}}, {"Y", {0, -2, 1}}, {"Z", {0, 7.5, 2}}}},
    };
    for (const auto& [lOptions, lValues] : lBvhCases)
    {
        ASSERT_EQ(Run("plot " + Work("small.bvh") + " " + lOptions + " -o " + Work("bvh.svg")).mStatus, 0) << lOptions;
        const Picture lBvh = ReadPicture(WorkPath("bvh.svg"));
        const double lTolerance = 0.01 * (lBvh.mArea[7] - lBvh.mArea[6]) / lBvh.mArea[3];
        for (const auto& [lChannel, lPoints] : PlottedKeys(lBvh, "keys"))
        {
            ASSERT_EQ(lPoints.size(), 3u) << lOptions << " " << lChannel;
            for (size_t i = 0; i < 3; ++i)
            {
                EXPECT_NEAR(lPoints[i].first, 0.04 * static_cast<double>(i), 1e-3);
                EXPECT_NEAR(lPoints[i].second, lValues.at(lChannel)[i], lTolerance) << lOptions << " " << lChannel << i;
            }
        }
    }
}

TEST_F(RenderTest, CompareFilterDrawsTheCurvesBeforeDashedAndAfterSolid)
{
    if (!ToolsPresent()) GTEST_SKIP() << "xmllint or python3 is missing";
    for (const char* lStep : {"gimbal", "unroll", "reduce"})
    {
        const ToolRun lRun = Run("plot " + Quoted(kSampleAsf) + " --motion " + Quoted(kSampleAmc) +
                                 " --joint lowerback --compare-filter " + lStep + " -o " + Work("compare.svg"));
        ASSERT_EQ(lRun.mStatus, 0) << lRun.mErr;
        const Picture lPicture = ReadPicture(WorkPath("compare.svg"));
        const size_t lLineCount = std::string(lStep) == "reduce" ? 4u : 6u;
        ASSERT_EQ(lPicture.mLines.size(), lLineCount) << lStep;
        for (size_t i = 0; i < lLineCount; ++i)
        {
            EXPECT_EQ(lPicture.mLines[i].mSet, i < 3 ? "before" : "after") << lStep;
            EXPECT_EQ(lPicture.mLines[i].mDashed, i < 3) << lStep;
        }
        const std::string lText = ReadFile(WorkPath("compare.svg"));
        EXPECT_NE(lText.find("dashed: before " + std::string(lStep)), std::string::npos);
        EXPECT_NE(lText.find("solid: after " + std::string(lStep)), std::string::npos);
    }
    // lowerback's rx and rz stay constant through the walk: the reducer leaves their curves no
    // key, which the legend notes instead of a line.
    const Picture lReduced = ReadPicture(WorkPath("compare.svg"));
    EXPECT_EQ(PlottedKeys(lReduced, "before").at("X").size(), 240u);
    EXPECT_EQ(PlottedKeys(lReduced, "after").count("X"), 0u);
    EXPECT_EQ(PlottedKeys(lReduced, "after").at("Y").size(), 240u);
    EXPECT_NE(ReadFile(WorkPath("compare.svg")).find(">X after: no keys<"), std::string::npos);
}

TEST_F(RenderTest, BadInputsExitWithTheToolsStatusesAndLeaveNoPicture)
{
    WriteFile(WorkPath("small.bvh"), bvhtest::kSmallBvh);
    const std::string lPair = Quoted(kSampleAsf) + " --motion " + Quoted(kSampleAmc);
    const std::string lOut = " -o " + Work("out.svg");
    struct BadRun
    {
        std::string mArguments;
        int mStatus;
        std::string mMessage;
    };
    const BadRun lRuns[] = {
        {"plot " + lPair + " --joint nose" + lOut, 2,
         "orvasf: error: no joint \"nose\" in " + kSampleAsf + "; its joints are: root, lhipjoint, lfemur, ltibia,"},
        {"plot " + lPair + " --joint lfemur --channels scaling" + lOut, 2, "--channels"},
        {"plot " + Quoted(kSampleAsf) + " --joint lfemur" + lOut, 2, "give an ASF input its --motion"},
        {"plot " + Work("small.bvh") + " --joint Chest --compare-filter gimbal" + lOut, 2,
         "--compare-filter goes with"},
        {"plot " + lPair + lOut, 2, "--joint is required"},
        {"render " + lPair + " --frames 240" + lOut, 2, "frame 240 is outside the motion, whose frames are 0 to 239"},
        {"render " + lPair + " --frames 3-1" + lOut, 2, "not a frame list"},
        {"render " + lPair + " --frames 0-64" + lOut, 2, "render draws at most 64 frames; --frames asks for 65"},
        {"render " + Quoted(kSampleAsf) + " --frames 0" + lOut, 2, "which has no frame"},
        {"render " + lPair + " --view back" + lOut, 2, "--view"},
        {"render " + Work("small.bvh") + " --motion " + Quoted(kSampleAmc) + lOut, 2,
         "--motion goes with an ASF input"},
        {"render " + Work("figure.fbx") + lOut, 2, "render reads .asf, .bvh, .glb or .gltf files, not "},
        {"render " + Work("missing.asf") + lOut, 1, WorkPath("missing.asf").string() + ": error: "},
        {"plot " + Quoted(kSampleAsf) + " --motion " + Work("missing.amc") + " --joint root" + lOut, 1,
         WorkPath("missing.amc").string() + ": error: "},
        {"render " + lPair + " -o " + Work("missing/out.svg"), 3, WorkPath("missing").string() + "/out.svg"},
        {"plot " + lPair + " --joint root -o " + Work("missing/out.svg"), 3, WorkPath("missing").string() + "/out.svg"},
    };
    for (const BadRun& lBad : lRuns)
    {
        const ToolRun lRun = Run(lBad.mArguments);
        EXPECT_EQ(lRun.mStatus, lBad.mStatus) << lBad.mArguments << "\n" << lRun.mErr;
        EXPECT_NE(lRun.mErr.find(lBad.mMessage), std::string::npos) << lBad.mArguments << "\n" << lRun.mErr;
    }
    EXPECT_EQ(WorkFolderEntries(), (std::vector<std::string>{"small.bvh", "tiny.amc", "tiny.asf"}));
    for (const char* lCommand : {"render", "plot"})
        EXPECT_NE(Run(std::string(lCommand) + " --help").mOut.find("Exit status: 0 success"), std::string::npos);
}

TEST_F(RenderTest, ValuesThatOverflowAreLeftOutOfTheDrawing)
{
    if (!ToolsPresent()) GTEST_SKIP() << "xmllint or python3 is missing";
    // Frame 0 moves the root beyond the float range: no position or key of it can be drawn.
    WriteFile(WorkPath("huge.bvh"), Replace(bvhtest::kSmallBvh, "0 0 0 0 0 0 0 0 0 0 0 0 0 0\n",
                                            "1e308 -1e308 0 0 0 0 0 0 0 0 0 0 0 0\n"));
    ASSERT_EQ(Run("render " + Work("huge.bvh") + " --frames 0-1 -o " + Work("huge.svg")).mStatus, 0);
    std::set<std::string> lFrames;
    for (const auto& lEntry : ReadPicture(WorkPath("huge.svg")).mDots) lFrames.insert(lEntry.first.first);
    EXPECT_EQ(lFrames, std::set<std::string>{"1"});

    ASSERT_EQ(Run("plot " + Work("huge.bvh") + " --joint Hips --channels translation -o " + Work("keys.svg")).mStatus, 0);
    const auto lKeys = PlottedKeys(ReadPicture(WorkPath("keys.svg")), "keys");
    EXPECT_EQ(lKeys.at("X").size(), 2u);
    EXPECT_EQ(lKeys.at("Z").size(), 3u);
    EXPECT_NE(ReadFile(WorkPath("keys.svg")).find(">X keys: 1 not finite, left out<"), std::string::npos);
}

TEST_F(RenderTest, FileNamesThatAreNotValidXmlTextStillGiveAWellFormedPicture)
{
    if (!ToolsPresent()) GTEST_SKIP() << "xmllint or python3 is missing";
    // The title holds the file name: markup characters and a byte that is not UTF-8.
    const std::string lName = "a&<b>\"\xff.asf";
    WriteFile(WorkPath(lName), kFigureAsf);
    ASSERT_EQ(Run("render " + Work(lName) + " -o " + Work("odd.svg")).mStatus, 0);
    EXPECT_EQ(ReadPicture(WorkPath("odd.svg")).mDots.size(), 8u);
}

} // namespace
