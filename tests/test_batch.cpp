// End-to-end tests of "orvasf batch": the work it finds in a folder tree, its manifest and exit
// status, outputs equal to what the single-file commands write, incremental runs and the
// independence of the outputs from the number of workers.
#include "support/BvhReference.h"
#include "support/ToolRunner.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <csignal>
#include <map>
#include <set>
#include <thread>
#include <tuple>

namespace {

using namespace tool_support;

// The input tree every test converts (walker.asf / walker.amc copies unless noted):
//   in/07/07.asf 07/07x.asf 07/07_01.amc 07/07_02.amc   the name prefix picks 07.asf for both
//   in/solo/skeleton.asf solo/run.amc               the folder's only ASF, whatever its name
//   in/ambiguous/a.asf ambiguous/b.asf ambiguous/c_01.amc   two ASF, neither fits: refused
//   in/broken/broken.asf broken/broken_01.amc       a root value that is not a number, line 5
//   in/lonely/lonely_01.amc                         no ASF at all: refused
//   in/bvh/deep/walk.bvh                            the sample converted to BVH
class BatchTest : public ToolTest
{
protected:
    void SetUp() override
    {
        ToolTest::SetUp();
        const std::string lAsf = ReadFile(kSampleAsf);
        const std::string lAmc = ReadFile(kSampleAmc);
        const std::map<std::string, std::string> lFiles = {
            {"07/07.asf", lAsf},
            {"07/07x.asf", lAsf},
            {"07/07_01.amc", lAmc},
            {"07/07_02.amc", lAmc},
            {"solo/skeleton.asf", lAsf},
            {"solo/run.amc", lAmc},
            {"ambiguous/a.asf", lAsf},
            {"ambiguous/b.asf", lAsf},
            {"ambiguous/c_01.amc", lAmc},
            {"broken/broken.asf", lAsf},
            {"broken/broken_01.amc", Replace(lAmc, "root 0 16.9 0 0 0 0", "root 0 abc 0 0 0 0")},
            {"lonely/lonely_01.amc", lAmc},
        };
        for (const auto& [lName, lText] : lFiles)
        {
            fs::create_directories(In(lName).parent_path());
            WriteFile(In(lName), lText);
        }
        fs::create_directories(In("bvh/deep"));
        EXPECT_EQ(Run("convert " + sSample() + " --motion " + Quoted(kSampleAmc) + " -o " + Quoted(In("bvh/deep/walk.bvh")))
                      .mStatus,
                  0);
    }

    static std::string sSample() { return Quoted(kSampleAsf); }
    fs::path In(const std::string& pName) const { return mFolder / "in" / pName; }
    fs::path Out(const std::string& pName, const std::string& pFolder = "out") const { return mFolder / pFolder / pName; }

    ToolRun Batch(const std::string& pOptions, const std::string& pOutput = "out") const
    {
        return Run("batch " + Quoted((mFolder / "in").string()) + " -o " + Quoted((mFolder / pOutput).string()) + " " +
                   pOptions);
    }

    // The manifest's rows by output, each a map of column name to field (no field holds a comma
    // but the message, which is last and then quoted).
    std::map<std::string, std::map<std::string, std::string>> Manifest(const std::string& pFolder = "out") const
    {
        const std::vector<std::string> lLines = Lines(ReadFile(Out("manifest.csv", pFolder)));
        EXPECT_EQ(lLines.at(0), "skeleton,motion,output,frames,fps,duration,bones,status,message");
        const char* const kColumns[] = {"skeleton", "motion", "output", "frames", "fps", "duration", "bones", "status"};
        std::map<std::string, std::map<std::string, std::string>> lRows;
        for (size_t i = 1; i < lLines.size(); ++i)
        {
            std::map<std::string, std::string> lRow;
            size_t lStart = 0;
            for (const char* lColumn : kColumns)
            {
                const size_t lEnd = lLines[i].find(',', lStart);
                lRow[lColumn] = lLines[i].substr(lStart, lEnd - lStart);
                lStart = lEnd + 1;
            }
            std::string lMessage = lLines[i].substr(lStart);
            if (!lMessage.empty() && lMessage.front() == '"')
            {
                lMessage = lMessage.substr(1, lMessage.size() - 2);
                for (size_t lQuote = lMessage.find("\"\""); lQuote != std::string::npos; lQuote = lMessage.find("\"\"", lQuote + 1))
                    lMessage.erase(lQuote, 1);
            }
            lRow["message"] = lMessage;
            lRows[lRow["output"]] = lRow;
        }
        return lRows;
    }
};

TEST_F(BatchTest, ManifestRecordsEveryFileWithItsStatusAndOneBadFileStopsNoOther)
{
    const ToolRun lRun = Batch("--to bvh --jobs 2");
    EXPECT_EQ(lRun.mStatus, 1) << lRun.mErr;
    EXPECT_NE(lRun.mErr.find("batch: 7 files: 4 ok, 0 with warnings, 0 up to date, 3 failed"), std::string::npos)
        << lRun.mErr;

    struct Expected
    {
        const char* mOutput;
        const char* mSkeleton;
        const char* mStatus;
        std::string mMessageStart;
    };
    const std::string lIn = (mFolder / "in").string() + "/";
    const Expected lTable[] = {
        {"07/07_01.bvh", "07/07.asf", "ok", ""},
        {"07/07_02.bvh", "07/07.asf", "ok", ""},
        {"solo/run.bvh", "solo/skeleton.asf", "ok", ""},
        {"bvh/deep/walk.bvh", "bvh/deep/walk.bvh", "ok", ""},
        {"ambiguous/c_01.bvh", "", "failed",
         lIn + "ambiguous/c_01.amc: error: 2 ASF skeletons in the motion's folder and none whose name"},
        {"broken/broken_01.bvh", "broken/broken.asf", "failed", lIn + "broken/broken_01.amc:5: error: "},
        {"lonely/lonely_01.bvh", "", "failed", lIn + "lonely/lonely_01.amc: error: no ASF skeleton in the motion's folder"},
    };
    const auto lRows = Manifest();
    EXPECT_EQ(lRows.size(), 7u);
    for (const Expected& lExpected : lTable)
    {
        SCOPED_TRACE(lExpected.mOutput);
        ASSERT_EQ(lRows.count(lExpected.mOutput), 1u);
        const auto& lRow = lRows.at(lExpected.mOutput);
        EXPECT_EQ(lRow.at("skeleton"), lExpected.mSkeleton);
        EXPECT_EQ(lRow.at("status"), lExpected.mStatus);
        EXPECT_EQ(lRow.at("message").rfind(lExpected.mMessageStart, 0), 0u) << lRow.at("message");
        EXPECT_EQ(fs::exists(Out(lExpected.mOutput)), lExpected.mStatus == std::string("ok"));
        if (lExpected.mStatus == std::string("ok"))
        {
            // 240 frames at 120 fps of 20 bones and the root.
            EXPECT_EQ(lRow.at("frames") + " " + lRow.at("fps") + " " + lRow.at("duration") + " " + lRow.at("bones"),
                      "240 120 2 21");
        }
    }
}

TEST_F(BatchTest, ConvertedBvhPlacesEveryJointWherePoseDoes)
{
    ASSERT_EQ(Batch("--to bvh").mStatus, 1);
    const bvhtest::Motion lMotion = bvhtest::Parse(ReadFile(Out("07/07_01.bvh")));
    ASSERT_TRUE(lMotion.mValid);
    const PoseTable lSource = PoseRows(Run("pose " + sSample() + " " + Quoted(kSampleAmc) + " --frames 0,137").mOut);
    int lCompared = 0;
    for (size_t lFrame : {0u, 137u})
    {
        const std::vector<bvhtest::Vec3> lPositions = bvhtest::WorldPositions(lMotion, lFrame);
        for (size_t j = 0; j < lMotion.mJoints.size(); ++j)
        {
            const auto lRow = lSource.find({static_cast<int>(lFrame), lMotion.mJoints[j].mName});
            if (lRow == lSource.end()) continue;
            for (size_t i = 0; i < 3; ++i) EXPECT_NEAR(lPositions[j][i], lRow->second[i], 1e-3) << lRow->first.second;
            ++lCompared;
        }
    }
    EXPECT_EQ(lCompared, 2 * 26);  // 21 joints and 5 end sites per frame
}

TEST_F(BatchTest, UpToDateOutputsAreSkippedUntilAnInputChangesOrForceIsGiven)
{
    ASSERT_EQ(Batch("--to bvh").mStatus, 1);
    const auto lStatuses = [this]() {
        std::map<std::string, std::string> lStatus;
        for (const auto& [lOutput, lRow] : Manifest()) lStatus[lOutput] = lRow.at("status");
        return lStatus;
    };
    Batch("--to bvh");
    EXPECT_EQ(lStatuses().at("07/07_01.bvh"), "skipped");
    EXPECT_EQ(lStatuses().at("bvh/deep/walk.bvh"), "skipped");
    EXPECT_EQ(lStatuses().at("lonely/lonely_01.bvh"), "failed");

    // A skeleton newer than the output converts its motions again.
    fs::last_write_time(In("07/07.asf"), fs::last_write_time(Out("07/07_01.bvh")) + std::chrono::seconds(5));
    Batch("--to bvh");
    EXPECT_EQ(lStatuses().at("07/07_01.bvh"), "ok");
    EXPECT_EQ(lStatuses().at("solo/run.bvh"), "skipped");

    Batch("--to bvh --force");
    EXPECT_EQ(lStatuses().at("solo/run.bvh"), "ok");
}

TEST_F(BatchTest, EveryFormatWritesWhatTheSingleFileCommandWritesWhateverTheJobCount)
{
    const std::string lPair = sSample() + " " + Quoted(kSampleAmc);
    // Per format: the output of 07/07_01.amc and the command writing the same file alone.
    const std::pair<std::string, std::string> lFormats[] = {
        {"bvh", "convert " + sSample() + " --motion " + Quoted(kSampleAmc) + " -o "},
        {"glb", "convert " + sSample() + " --motion " + Quoted(kSampleAmc) + " -o "},
        {"asf", "convert " + sSample() + " --motion " + Quoted(kSampleAmc) + " -o "},
        {"csv", "pose " + lPair + " -o "},
    };
    for (const auto& [lFormat, lAlone] : lFormats)
    {
        SCOPED_TRACE(lFormat);
        ASSERT_EQ(Batch("--to " + lFormat + " --jobs 1", "one").mStatus, 1);
        ASSERT_EQ(Batch("--to " + lFormat + " --jobs 3", "three").mStatus, 1);
        const std::string lName = "07/07_01." + lFormat;
        // Named as the batch names it: an AMC's first line names its ASF.
        ASSERT_EQ(Run(lAlone + Work("07_01." + lFormat)).mStatus, 0);
        EXPECT_EQ(ReadFile(Out(lName, "one")), ReadFile(WorkPath("07_01." + lFormat)));
        if (lFormat == "asf")
        {
            EXPECT_EQ(ReadFile(Out("07/07_01.amc", "one")), ReadFile(WorkPath("07_01.amc")));
        }
        for (const auto& lEntry : fs::recursive_directory_iterator(mFolder / "one"))
        {
            if (!lEntry.is_regular_file()) continue;
            const fs::path lPeer = mFolder / "three" / fs::relative(lEntry.path(), mFolder / "one");
            EXPECT_EQ(ReadFile(lEntry.path()), ReadFile(lPeer)) << lPeer;
        }
        fs::remove_all(mFolder / "one");
        fs::remove_all(mFolder / "three");
    }
}

TEST_F(BatchTest, UsageErrorsExitWithTwo)
{
    for (const std::string lOptions :
         {"", "--to obj", "--to bvh --jobs 0", "--to bvh --frobnicate", "--to bvh --resample 0", "--to bvh --resample x"})
    {
        const ToolRun lRun = Batch(lOptions);
        EXPECT_EQ(lRun.mStatus, 2) << lOptions;
        EXPECT_FALSE(lRun.mErr.empty()) << lOptions;
    }
    EXPECT_EQ(Run("batch " + Work("missing") + " -o " + Work("out") + " --to bvh").mStatus, 2);
    EXPECT_FALSE(fs::exists(mFolder / "out"));
}

// Resampling the walker (120 fps, 240 frames): at 30 fps every frame falls on every fourth
// original frame, so batch's CSV holds the very positions pose prints for those frames; at 50 fps
// the frames fall between keys, and each BVH channel equals the linear blend of the two
// neighbouring original frames' channels, computed here.
TEST_F(BatchTest, ResampledFramesFallOnOrBetweenTheOriginalFrames)
{
    ASSERT_EQ(Batch("--to csv --resample 30").mStatus, 1);
    EXPECT_EQ(Manifest().at("07/07_01.csv").at("frames") + " " + Manifest().at("07/07_01.csv").at("fps"), "60 30");
    const PoseTable lOriginal = PoseRows(Run("pose " + sSample() + " " + Quoted(kSampleAmc)).mOut);
    const PoseTable lResampled = PoseRows(ReadFile(Out("07/07_01.csv")));
    ASSERT_EQ(lResampled.size(), 60u * 26u);  // 21 joints and 5 end sites per frame
    for (const auto& [lKey, lPosition] : lResampled)
    {
        const auto& lSame = lOriginal.at({lKey.first * 4, lKey.second});
        for (size_t i = 0; i < 3; ++i) EXPECT_NEAR(lPosition.at(i), lSame.at(i), 1e-4) << lKey.second << lKey.first;
    }

    const std::string lConvert = "convert " + sSample() + " --motion " + Quoted(kSampleAmc) + " -o ";
    ASSERT_EQ(Run(lConvert + Work("own.bvh")).mStatus, 0);
    ASSERT_EQ(Run(lConvert + Work("50.bvh") + " --resample 50").mStatus, 0);
    const bvhtest::Motion lOwn = bvhtest::Parse(ReadFile(WorkPath("own.bvh")));
    const bvhtest::Motion l50 = bvhtest::Parse(ReadFile(WorkPath("50.bvh")));
    ASSERT_TRUE(lOwn.mValid && l50.mValid);
    // The last of 240 frames lies at 239 / 120 s: 99 frames of 1/50 s fit before it.
    ASSERT_EQ(l50.mFrames.size(), 100u);
    EXPECT_DOUBLE_EQ(l50.mFrameTime, 0.02);
    double lLargest = 0.0;
    for (size_t lFrame = 0; lFrame < l50.mFrames.size(); ++lFrame)
    {
        const double lOriginalFrame = static_cast<double>(lFrame) * 120.0 / 50.0;
        const size_t lBefore = static_cast<size_t>(lOriginalFrame);
        const size_t lAfter = std::min(lBefore + 1, lOwn.mFrames.size() - 1);
        const double lWeight = lOriginalFrame - static_cast<double>(lBefore);
        for (size_t c = 0; c < l50.mFrames[lFrame].size(); ++c)
        {
            const double lBlend = lOwn.mFrames[lBefore][c] * (1.0 - lWeight) + lOwn.mFrames[lAfter][c] * lWeight;
            lLargest = std::max(lLargest, std::abs(l50.mFrames[lFrame][c] - lBlend));
        }
    }
    EXPECT_LT(lLargest, 1e-4);  // degrees and centimetres, as printed
}

// The shared real files as they lie: their AMC files sit in a folder without ASF files, so each
// is refused by name, and every BVH file converts.
TEST_F(BatchTest, SharedDataConvertsEveryBvhAndRefusesEveryUnpairedAmc)
{
    const fs::path lData = ORV_SHARED_DATA_DIR;
    if (!fs::is_directory(lData)) GTEST_SKIP() << "no shared data at " << lData;
    // A final separator on the folder changes no output path.
    const ToolRun lRun = Run("batch " + Quoted(lData.string() + "/") + " -o " + Work("real") + " --to bvh --jobs 2");
    EXPECT_EQ(lRun.mStatus, 1);
    int lBvh = 0;
    int lAmc = 0;
    for (const auto& [lOutput, lRow] : Manifest("work/real"))
    {
        SCOPED_TRACE(lOutput);
        if (lRow.at("motion").empty())
        {
            ++lBvh;
            EXPECT_TRUE(lRow.at("status") == "ok" || lRow.at("status") == "warnings") << lRow.at("message");
            EXPECT_NE(lRow.at("frames"), "0");
            EXPECT_TRUE(fs::exists(WorkPath("real") / lOutput));
        }
        else
        {
            ++lAmc;
            EXPECT_EQ(lRow.at("status"), "failed");
            EXPECT_NE(lRow.at("message").find(": error: no ASF skeleton in the motion's folder"), std::string::npos);
        }
    }
    size_t lBvhFiles = 0;
    for (const auto& lEntry : fs::directory_iterator(lData / "bvh")) lBvhFiles += lEntry.path().extension() == ".bvh";
    EXPECT_EQ(static_cast<size_t>(lBvh), lBvhFiles);
    EXPECT_GT(lAmc, 0);
    EXPECT_NE(lRun.mErr.find(std::to_string(lAmc) + " failed"), std::string::npos) << lRun.mErr;
}

// A batch stopped part way, by SIGTERM and then by SIGKILL, and run again: its outputs are at
// every moment complete files or absent, and the last run ends with the tree an uninterrupted
// batch writes.
//   in/many/many.asf, in/many/many_01.amc ... many_40.amc   the sample's walk, eight times over
class InterruptedBatchTest : public ToolTest
{
protected:
    static constexpr int kMotions = 40;

    void SetUp() override
    {
        ToolTest::SetUp();
        fs::create_directories(mFolder / "in/many");
        WriteFile(mFolder / "in/many/many.asf", ReadFile(kSampleAsf));
        const std::string lMotion = RepeatedFrames(ReadFile(kSampleAmc), 8);
        for (int i = 1; i <= kMotions; ++i)
            WriteFile(mFolder / "in/many" / ("many_" + std::string(i < 10 ? "0" : "") + std::to_string(i) + ".amc"), lMotion);
    }

    // pAmc with its frames pRepeats times over, numbered on.
    static std::string RepeatedFrames(const std::string& pAmc, int pRepeats)
    {
        const size_t lFirstFrame = pAmc.find("\n1\n") + 1;
        const std::vector<std::string> lLines = Lines(pAmc.substr(lFirstFrame));
        std::string lText = pAmc.substr(0, lFirstFrame);
        int lFrame = 0;
        for (int lRepeat = 0; lRepeat < pRepeats; ++lRepeat)
            for (const std::string& lLine : lLines)
                lText += (lLine.find_first_not_of("0123456789") == std::string::npos ? std::to_string(++lFrame) : lLine) + "\n";
        return lText;
    }

    // Starts "orvasf batch in -o OUTPUT --to bvh --jobs 1", its streams discarded; its process id.
    pid_t StartBatch(const std::string& pOutput) const
    {
        const std::string lIn = (mFolder / "in").string();
        const std::string lOut = (mFolder / pOutput).string();
        const pid_t lChild = ::fork();
        if (lChild == 0)
        {
            std::freopen("/dev/null", "w", stderr);
            ::execl(ORV_TOOL_PATH, ORV_TOOL_PATH, "batch", lIn.c_str(), "-o", lOut.c_str(), "--to", "bvh", "--jobs", "1",
                    static_cast<char*>(nullptr));
            ::_exit(127);
        }
        return lChild;
    }

    // The files below pFolder (outputs, temporaries), relative to it, the manifest left out.
    std::set<std::string> Files(const std::string& pFolder) const
    {
        std::set<std::string> lNames;
        for (const auto& lEntry : fs::recursive_directory_iterator(mFolder / pFolder))
            if (lEntry.is_regular_file() && lEntry.path().filename() != "manifest.csv")
                lNames.insert(lEntry.path().lexically_relative(mFolder / pFolder).generic_string());
        return lNames;
    }

    size_t CountOutputs(const std::string& pFolder) const
    {
        const std::set<std::string> lNames = fs::exists(mFolder / pFolder) ? Files(pFolder) : std::set<std::string>();
        return std::count_if(lNames.begin(), lNames.end(),
                             [](const std::string& pName) { return fs::path(pName).extension() == ".bvh"; });
    }

    // Starts a batch into pOutput, waits until it wrote more than pOutputsBefore outputs, sends
    // pSignal and returns the signal the process ended by (0 when it exited).
    int InterruptBatch(const std::string& pOutput, size_t pOutputsBefore, int pSignal) const
    {
        const pid_t lChild = StartBatch(pOutput);
        while (CountOutputs(pOutput) <= pOutputsBefore && ::waitpid(lChild, nullptr, WNOHANG) == 0)
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        ::kill(lChild, pSignal);
        int lStatus = 0;
        ::waitpid(lChild, &lStatus, 0);
        return WIFSIGNALED(lStatus) ? WTERMSIG(lStatus) : 0;
    }

    // Every output below pFolder equals the uninterrupted batch's; pTemporariesAllowed lets files
    // that are not outputs (a killed writer's temporaries) be there too.
    void ExpectOnlyCompleteOutputs(const std::string& pFolder, bool pTemporariesAllowed) const
    {
        for (const std::string& lName : Files(pFolder))
        {
            if (fs::path(lName).extension() != ".bvh")
            {
                EXPECT_TRUE(pTemporariesAllowed) << lName;
                continue;
            }
            EXPECT_EQ(ReadFile(mFolder / pFolder / lName), ReadFile(mFolder / "whole" / lName)) << lName;
        }
    }
};

TEST_F(InterruptedBatchTest, StopsCleanlyOnSignalsAndARerunFinishesWithTheUninterruptedOutputs)
{
    ASSERT_EQ(Run("batch " + Quoted((mFolder / "in").string()) + " -o " + Quoted((mFolder / "whole").string()) +
                  " --to bvh --jobs 1")
                  .mStatus,
              0);
    ASSERT_EQ(CountOutputs("whole"), static_cast<size_t>(kMotions));

    // SIGTERM: the file in progress is finished, no other is started, the manifest says so.
    ASSERT_EQ(InterruptBatch("out", 0, SIGTERM), SIGTERM);
    const size_t lAfterTerm = CountOutputs("out");
    EXPECT_LT(lAfterTerm, static_cast<size_t>(kMotions));
    ExpectOnlyCompleteOutputs("out", false);
    const std::string lManifest = ReadFile(mFolder / "out/manifest.csv");
    EXPECT_EQ(static_cast<size_t>(std::count(lManifest.begin(), lManifest.end(), '\n')), kMotions + 1u);
    size_t lInterrupted = 0;
    for (size_t lAt = lManifest.find(",interrupted,"); lAt != std::string::npos; lAt = lManifest.find(",interrupted,", lAt + 1))
        ++lInterrupted;
    EXPECT_EQ(lInterrupted, kMotions - lAfterTerm);

    // SIGKILL mid-run: what was written whole stays whole; a killed writer's temporary file may
    // remain, as may one planted here, beside a file the batch does not write.
    ASSERT_EQ(InterruptBatch("out", lAfterTerm, SIGKILL), SIGKILL);
    ExpectOnlyCompleteOutputs("out", true);
    WriteFile(mFolder / "out/many/many_40.bvh.tmpAb3dE9", "HIERARCHY\nROOT cut short");
    WriteFile(mFolder / "out/many/notes.txt.tmpAb3dE9", "not the batch's");

    const ToolRun lRerun = Run("batch " + Quoted((mFolder / "in").string()) + " -o " + Quoted((mFolder / "out").string()) +
                               " --to bvh --jobs 2");
    EXPECT_EQ(lRerun.mStatus, 0) << lRerun.mErr;
    std::set<std::string> lExpected = Files("whole");
    lExpected.insert("many/notes.txt.tmpAb3dE9");
    EXPECT_EQ(Files("out"), lExpected);
    ExpectOnlyCompleteOutputs("out", true);
}

} // namespace

namespace {

using namespace tool_support;
using RealBatchTest = ToolTest;

// A CMU-like library of links to the shared files, one subject folder per skeleton:
//   in/07/cmu_07-walk.asf in/07/cmu_07-walk_05.amc in/07/cmu_07-walk_12.amc
//   in/09/cmu_09-run.asf in/09/cmu_09-run_06.amc
// Each BVH equals what convert writes for the same pair alone.
TEST_F(RealBatchTest, LinkedSubjectFoldersConvertLikeConvertDoesFileByFile)
{
    const fs::path lData = ORV_SHARED_DATA_DIR;
    if (!fs::is_directory(lData)) GTEST_SKIP() << "no shared data at " << lData;
    const fs::path lIn = mFolder / "in";
    const std::tuple<const char*, const char*, const char*> lLinks[] = {
        {"07/cmu_07-walk_05", "cmu_07-walk", "cmu_07_05-walk"},
        {"07/cmu_07-walk_12", "cmu_07-walk", "cmu_07_12-walk"},
        {"09/cmu_09-run_06", "cmu_09-run", "cmu_09_06-run"},
    };
    for (const auto& [lName, lAsf, lAmc] : lLinks)
    {
        const fs::path lMotion = lIn / (std::string(lName) + ".amc");
        fs::create_directories(lMotion.parent_path());
        if (!fs::exists(lMotion.parent_path() / (std::string(lAsf) + ".asf")))
            fs::create_symlink(fs::absolute(lData / "asf" / (std::string(lAsf) + ".asf")),
                               lMotion.parent_path() / (std::string(lAsf) + ".asf"));
        fs::create_symlink(fs::absolute(lData / "amc" / (std::string(lAmc) + ".amc")), lMotion);
    }
    const ToolRun lRun = Run("batch " + Quoted(lIn.string()) + " -o " + Work("out") + " --to bvh --jobs 2");
    EXPECT_EQ(lRun.mStatus, 0) << lRun.mErr;
    for (const auto& [lName, lAsf, lAmc] : lLinks)
    {
        SCOPED_TRACE(lName);
        const std::string lAlone = std::string(lAmc) + ".bvh";
        ASSERT_EQ(Run("convert " + Quoted((lData / "asf" / (std::string(lAsf) + ".asf")).string()) + " --motion " +
                      Quoted((lData / "amc" / (std::string(lAmc) + ".amc")).string()) + " -o " + Work(lAlone))
                      .mStatus,
                  0);
        EXPECT_EQ(ReadFile(WorkPath("out") / (std::string(lName) + ".bvh")), ReadFile(WorkPath(lAlone)));
    }
}

} // namespace
