// The tool on bad input: every kind of broken skeleton or motion file gets a FILE:LINE message
// and a non-zero exit status, an existing output file is never touched, and no temporary file
// is left behind.
#include "support/ToolRunner.h"

#include <signal.h>
#include <sys/stat.h>

#include <algorithm>
#include <chrono>
#include <thread>

namespace {

using namespace tool_support;

constexpr int kRefused = 1;
constexpr int kNotWritten = 3;
const std::string kPreviousOutput = "previous output, must survive\n";

// The sample skeleton cut right before each of its section keywords after the first.
std::vector<std::string> SkeletonCutAtEverySection()
{
    const std::string lText = ReadFile(kSampleAsf);
    std::vector<std::string> lCuts;
    for (size_t lAt = lText.find("\n:"); lAt != std::string::npos; lAt = lText.find("\n:", lAt + 1))
        lCuts.push_back(lText.substr(0, lAt + 1));
    return lCuts;
}

// pText (ASCII) as UTF-16 with its byte order mark.
std::string ToUtf16(const std::string& pText, bool pBigEndian)
{
    std::string lWide = pBigEndian ? "\xfe\xff" : "\xff\xfe";
    for (char lChar : pText)
    {
        lWide += pBigEndian ? '\0' : lChar;
        lWide += pBigEndian ? lChar : '\0';
    }
    return lWide;
}

// A text with a NUL byte put inside one of its lines, and the 1-based number of that line.
struct TextWithNul
{
    std::string mText;
    int mLine;
};

// pText with a NUL byte inserted at byte pAt, which lies inside a line.
TextWithNul WithNulAt(const std::string& pText, size_t pAt)
{
    const int lLine = 1 + static_cast<int>(std::count(pText.begin(), pText.begin() + static_cast<long>(pAt), '\n'));
    return {pText.substr(0, pAt) + '\0' + pText.substr(pAt), lLine};
}

std::string Garbage(size_t pSize)
{
    std::string lBytes(pSize, '\0');
    unsigned lState = 12345;
    for (char& lByte : lBytes)
    {
        lState = lState * 1103515245u + 12345u;
        lByte = static_cast<char>(lState >> 16);
    }
    return lBytes;
}

std::string Replace(std::string pText, const std::string& pFrom, const std::string& pTo)
{
    const size_t lAt = pText.find(pFrom);
    if (lAt != std::string::npos) pText.replace(lAt, pFrom.size(), pTo);
    return pText;
}

class HostileInputTest : public ToolTest
{
protected:
    void SetUp() override
    {
        ToolTest::SetUp();
        ResetOutput();
    }

    void ResetOutput() const { WriteFile(WorkPath("out.json"), kPreviousOutput); }

    // Imports the sample skeleton with pMotion into the existing out.json.
    ToolRun ImportMotion(const std::string& pMotion)
    {
        ResetOutput();
        WriteFile(WorkPath("in.amc"), pMotion);
        return Run("import " + Quoted(kSampleAsf) + " --motion " + Work("in.amc") + " -o " + Work("out.json"));
    }

    // Imports pSkeleton into the existing out.json.
    ToolRun ImportSkeleton(const std::string& pSkeleton)
    {
        ResetOutput();
        WriteFile(WorkPath("in.asf"), pSkeleton);
        return Run("import " + Work("in.asf") + " -o " + Work("out.json"));
    }

    // The run was refused with a message naming pFile (and a line when pWithLine), and left the
    // output and the folder as they were.
    void ExpectRefused(const ToolRun& pRun, const std::string& pFile, bool pWithLine, const std::string& pCase)
    {
        EXPECT_EQ(pRun.mStatus, kRefused) << pCase << "\n" << pRun.mErr;
        const std::string lPrefix = WorkPath(pFile).string() + (pWithLine ? ":" : "");
        EXPECT_NE(pRun.mErr.find(lPrefix), std::string::npos) << pCase << "\n" << pRun.mErr;
        EXPECT_NE(pRun.mErr.find("error: "), std::string::npos) << pCase << "\n" << pRun.mErr;
        ExpectOutputUntouched(pCase);
    }

    // The run was refused with exactly the error line pMessage on standard error (a FILE:LINE:
    // prefix, or FILE: when pLine is 0), and left the output and the folder as they were.
    void ExpectRefusedWith(const ToolRun& pRun, const std::string& pFile, int pLine, const std::string& pMessage,
                           const std::string& pCase)
    {
        EXPECT_EQ(pRun.mStatus, kRefused) << pCase << "\n" << pRun.mErr;
        const std::string lWhere = WorkPath(pFile).string() + (pLine > 0 ? ":" + std::to_string(pLine) : "");
        const std::vector<std::string> lErr = Lines(pRun.mErr);
        EXPECT_NE(std::find(lErr.begin(), lErr.end(), lWhere + ": error: " + pMessage), lErr.end())
            << pCase << "\n" << pRun.mErr;
        ExpectOutputUntouched(pCase);
    }

    void ExpectOutputUntouched(const std::string& pCase)
    {
        EXPECT_EQ(ReadFile(WorkPath("out.json")), kPreviousOutput) << pCase;
        for (const std::string& lName : WorkFolderEntries())
            EXPECT_EQ(lName.find(".tmp"), std::string::npos) << pCase << ": left " << lName;
    }
};

TEST_F(HostileInputTest, BrokenSkeletonsAreRefusedWithFileAndLine)
{
    const std::string lSample = ReadFile(kSampleAsf);
    const std::vector<std::pair<std::string, std::string>> lCases = {
        {"empty file", ""},
        {"binary garbage", Garbage(4000)},
        {"bone block without a length", Replace(lSample, "    length 7.1\n", "")},
    };
    for (const auto& [lCase, lText] : lCases) ExpectRefused(ImportSkeleton(lText), "in.asf", true, lCase);
}

TEST_F(HostileInputTest, NulBytesAndUtf16AreRefusedAtTheirLine)
{
    const std::string kNul = "NUL byte in line";
    const std::string kUtf16 = "File is UTF-16 text; save it as ASCII or UTF-8";
    const std::string lSkeleton = ReadFile(kSampleAsf);
    // In a value, in the first comment, and in the last line (the hierarchy's "end").
    for (const size_t lAt : {lSkeleton.find("length 0.45") + 8, size_t{3}, lSkeleton.rfind("end")})
    {
        const TextWithNul lBroken = WithNulAt(lSkeleton, lAt);
        ExpectRefusedWith(ImportSkeleton(lBroken.mText), "in.asf", lBroken.mLine, kNul, "NUL at " + std::to_string(lAt));
    }
    ExpectRefusedWith(ImportSkeleton(ToUtf16(lSkeleton, false)), "in.asf", 1, kUtf16, "UTF-16 skeleton");

    const std::string lMotion = ReadFile(kSampleAmc);
    const TextWithNul lBrokenMotion = WithNulAt(lMotion, lMotion.find("ltibia 5") + 7);
    ExpectRefusedWith(ImportMotion(lBrokenMotion.mText), "in.amc", lBrokenMotion.mLine, kNul, "NUL in a bone line");
    ExpectRefusedWith(ImportMotion(ToUtf16(lMotion, true)), "in.amc", 1, kUtf16, "UTF-16 motion");
}

TEST_F(HostileInputTest, MotionWithoutFramesIsRefused)
{
    ExpectRefusedWith(ImportMotion(""), "in.amc", 0, "No frames in the file", "empty motion file");
    ExpectRefusedWith(ImportMotion("# nothing yet\n:FULLY-SPECIFIED\n:DEGREES\n"), "in.amc", 3,
                      "No frames in the file", "header lines only");
}

TEST_F(HostileInputTest, SkeletonCutAtAnySectionBoundaryIsRefused)
{
    for (const std::string& lCut : SkeletonCutAtEverySection())
        ExpectRefused(ImportSkeleton(lCut), "in.asf", true, "cut after " + std::to_string(lCut.size()) + " bytes");
}

TEST_F(HostileInputTest, SkeletonThatIsNoReadableFileIsRefused)
{
    std::filesystem::create_directory(WorkPath("folder.asf"));
    const ToolRun lFolder = Run("import " + Work("folder.asf") + " -o " + Work("out.json"));
    ExpectRefused(lFolder, "folder.asf", false, "directory");

    const ToolRun lMissing = Run("import " + Work("missing.asf") + " -o " + Work("out.json"));
    ExpectRefused(lMissing, "missing.asf", false, "missing file");

    // Root reads past permissions; the memory file of a process opens but every read from its
    // start fails, so it stands in for an unreadable file there.
    if (::geteuid() == 0)
    {
        const ToolRun lUnreadable = Run("import /proc/self/mem -o " + Work("out.json"));
        EXPECT_EQ(lUnreadable.mStatus, kRefused) << lUnreadable.mErr;
        EXPECT_NE(lUnreadable.mErr.find("/proc/self/mem: error: "), std::string::npos) << lUnreadable.mErr;
        ExpectOutputUntouched("unreadable file");
        return;
    }
    WriteFile(WorkPath("locked.asf"), ReadFile(kSampleAsf));
    std::filesystem::permissions(WorkPath("locked.asf"), std::filesystem::perms::none);
    const ToolRun lLocked = Run("import " + Work("locked.asf") + " -o " + Work("out.json"));
    ExpectRefused(lLocked, "locked.asf", false, "unreadable file");
}

TEST_F(HostileInputTest, BrokenMotionsAreRefusedWithFileAndLine)
{
    const std::string lSample = ReadFile(kSampleAmc);
    const std::vector<std::pair<std::string, std::string>> lCases = {
        {"binary garbage", Garbage(4000)},
        {"frame numbers going back", Replace(lSample, "\n3\n", "\n1\n")},
        {"frame number repeated", Replace(lSample, "\n3\n", "\n2\n")},
        {"three values for a bone of one DOF", Replace(lSample, "ltibia 5\n", "ltibia 5 0 0\n")},
        {"value that is not a number", Replace(lSample, "ltibia 5\n", "ltibia five\n")},
    };
    for (const auto& [lCase, lText] : lCases) ExpectRefused(ImportMotion(lText), "in.amc", true, lCase);
}

TEST_F(HostileInputTest, MotionForALargerSkeletonWarnsAboutEachMissingBone)
{
    std::string lMotion = ReadFile(kSampleAmc);
    const std::string lExtraBone = "lthumb 1 2\n";
    for (size_t lAt = lMotion.find("\nhead "); lAt != std::string::npos;
         lAt = lMotion.find("\nhead ", lAt + 1 + lExtraBone.size()))
        lMotion.insert(lAt + 1, lExtraBone);
    const ToolRun lRun = ImportMotion(lMotion);
    EXPECT_EQ(lRun.mStatus, 0) << lRun.mErr;
    EXPECT_NE(lRun.mErr.find(WorkPath("in.amc").string() + ":"), std::string::npos) << lRun.mErr;
    EXPECT_NE(lRun.mErr.find("warning: Unknown bone (lthumb)"), std::string::npos) << lRun.mErr;
}

TEST_F(HostileInputTest, OutputThatCannotBeWrittenLeavesNothingBehind)
{
    const ToolRun lMissingFolder = Run("format " + Quoted(kSampleAsf) + " -o " + Work("no/such/folder/out.asf"));
    EXPECT_EQ(lMissingFolder.mStatus, kNotWritten) << lMissingFolder.mErr;
    EXPECT_NE(lMissingFolder.mErr.find("no/such/folder/out.asf"), std::string::npos) << lMissingFolder.mErr;
    ExpectOutputUntouched("missing folder");

    // Root writes into read-only folders; /proc takes no new files from anyone.
    if (::geteuid() == 0)
    {
        const ToolRun lProc = Run("format " + Quoted(kSampleAsf) + " -o /proc/orvasf-out.asf");
        EXPECT_EQ(lProc.mStatus, kNotWritten) << lProc.mErr;
        EXPECT_NE(lProc.mErr.find("/proc/orvasf-out.asf: error: "), std::string::npos) << lProc.mErr;
        return;
    }
    std::filesystem::create_directory(WorkPath("sealed"));
    WriteFile(WorkPath("sealed") / "out.asf", kPreviousOutput);
    std::filesystem::permissions(WorkPath("sealed"), std::filesystem::perms::owner_read | std::filesystem::perms::owner_exec);
    const ToolRun lSealed = Run("format " + Quoted(kSampleAsf) + " -o " + Quoted((WorkPath("sealed") / "out.asf").string()));
    std::filesystem::permissions(WorkPath("sealed"), std::filesystem::perms::owner_all);
    EXPECT_EQ(lSealed.mStatus, kNotWritten) << lSealed.mErr;
    EXPECT_EQ(ReadFile(WorkPath("sealed") / "out.asf"), kPreviousOutput);
}

// A long motion: the sample's frames repeated with rising frame numbers.
std::string LongMotion(int pRepeats)
{
    const std::string lSample = ReadFile(kSampleAmc);
    const size_t lFirstFrame = lSample.find("\n1\n") + 1;
    const std::string lHeader = lSample.substr(0, lFirstFrame);
    std::vector<std::string> lFrames;
    std::string lFrame;
    for (const std::string& lLine : Lines(lSample.substr(lFirstFrame)))
    {
        if (!lLine.empty() && std::isdigit(static_cast<unsigned char>(lLine[0])))
        {
            if (!lFrame.empty()) lFrames.push_back(lFrame);
            lFrame.clear();
            continue;
        }
        lFrame += lLine + "\n";
    }
    lFrames.push_back(lFrame);
    std::string lText = lHeader;
    int lNumber = 1;
    for (int r = 0; r < pRepeats; ++r)
        for (const std::string& lBody : lFrames) lText += std::to_string(lNumber++) + "\n" + lBody;
    return lText;
}

TEST_F(HostileInputTest, KilledRunLeavesTheExistingOutputIntact)
{
    WriteFile(WorkPath("long.amc"), LongMotion(60));
    const std::string lTarget = WorkPath("out.json").string();
    const pid_t lChild = ::fork();
    ASSERT_GE(lChild, 0);
    if (lChild == 0)
    {
        const std::string lMotion = WorkPath("long.amc").string();
        ::execl(ORV_TOOL_PATH, ORV_TOOL_PATH, "pose", kSampleAsf.c_str(), lMotion.c_str(), "-o", lTarget.c_str(),
                static_cast<char*>(nullptr));
        ::_exit(127);
    }
    // Kill the tool as soon as its temporary output exists: it is then writing.
    const auto lDeadline = std::chrono::steady_clock::now() + std::chrono::seconds(20);
    bool lWriting = false;
    while (!lWriting && std::chrono::steady_clock::now() < lDeadline)
    {
        for (const std::string& lName : WorkFolderEntries()) lWriting = lWriting || lName.find("out.json.tmp") == 0;
        if (!lWriting) std::this_thread::sleep_for(std::chrono::microseconds(200));
    }
    ::kill(lChild, SIGKILL);
    int lStatus = 0;
    ::waitpid(lChild, &lStatus, 0);
    ASSERT_TRUE(lWriting) << "the tool never started writing";
    ASSERT_TRUE(WIFSIGNALED(lStatus)) << "the tool finished before it could be killed";
    EXPECT_EQ(ReadFile(lTarget), kPreviousOutput);
}

} // namespace
