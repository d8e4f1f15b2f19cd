// The tool on bad input: every kind of broken skeleton or motion file gets a FILE:LINE message
// and a non-zero exit status, an existing output file is never touched, and no temporary file
// is left behind. The readers' own tests check their messages for each kind of broken line.
#include "support/ToolRunner.h"

#include <algorithm>

namespace {

using namespace tool_support;

constexpr int kRefused = 1;
constexpr int kAnyLine = -1;
const std::string kPreviousOutput = "previous output, must survive\n";

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

// A broken input file: its text, the 1-based line the error names (0 none, kAnyLine some line)
// and the message ("" for any).
struct BrokenFile
{
    std::string mCase;
    std::string mText;
    int mLine = kAnyLine;
    std::string mMessage = "";
};

const char* const kUtf16 = "File is UTF-16 text; save it as ASCII or UTF-8";

std::vector<BrokenFile> BrokenSkeletons()
{
    const std::string lSample = ReadFile(kSampleAsf);
    std::vector<BrokenFile> lFiles = {
        {"empty file", ""},
        {"binary garbage", Garbage(4000)},
        {"bone block without a length", Replace(lSample, "    length 7.1\n", "")},
        {"UTF-16", ToUtf16(lSample, false), 1, kUtf16},
    };
    // Cut right before each section keyword after the first.
    for (size_t lAt = lSample.find("\n:"); lAt != std::string::npos; lAt = lSample.find("\n:", lAt + 1))
        lFiles.push_back({"cut after " + std::to_string(lAt + 1) + " bytes", lSample.substr(0, lAt + 1)});
    return lFiles;
}

std::vector<BrokenFile> BrokenMotions()
{
    const std::string lSample = ReadFile(kSampleAmc);
    return {
        {"binary garbage", Garbage(4000)},
        {"value that is not a number", Replace(lSample, "ltibia 5\n", "ltibia five\n")},
        {"UTF-16", ToUtf16(lSample, true), 1, kUtf16},
        {"empty motion file", "", 0, "No frames in the file"},
        {"header lines only", "# nothing yet\n:FULLY-SPECIFIED\n:DEGREES\n", 3, "No frames in the file"},
    };
}

class HostileInputTest : public ToolTest
{
protected:
    void SetUp() override
    {
        ToolTest::SetUp();
        WriteFile(WorkPath("out.json"), kPreviousOutput);
    }

    // Imports into the existing out.json: pSkeleton, or the sample skeleton with pMotion.
    ToolRun Import(const std::string& pSkeleton, const std::string& pMotion = "")
    {
        if (pMotion.empty()) return Run("import " + pSkeleton + " -o " + Work("out.json"));
        return Run("import " + pSkeleton + " --motion " + pMotion + " -o " + Work("out.json"));
    }

    ToolRun ImportFile(const std::string& pName, const std::string& pText)
    {
        WriteFile(WorkPath(pName), pText);
        const bool lMotion = pName.find(".amc") != std::string::npos;
        return lMotion ? Import(Quoted(kSampleAsf), Work(pName)) : Import(Work(pName));
    }

    // The run was refused with an error naming pWhere (at any line when pLine is kAnyLine, else
    // the error line pWhere:pLine: error: pMessage, without the line when it is 0), and left the
    // output and the folder as they were.
    void ExpectRefused(const ToolRun& pRun, const std::string& pWhere, int pLine, const std::string& pMessage,
                       const std::string& pCase)
    {
        SCOPED_TRACE(pCase + "\n" + pRun.mErr);
        EXPECT_EQ(pRun.mStatus, kRefused);
        if (pLine == kAnyLine)
            EXPECT_NE(pRun.mErr.find(pWhere + ":"), std::string::npos);
        else
        {
            const std::vector<std::string> lErr = Lines(pRun.mErr);
            const std::string lLine = pWhere + (pLine > 0 ? ":" + std::to_string(pLine) : "") + ": error: " + pMessage;
            EXPECT_NE(std::find(lErr.begin(), lErr.end(), lLine), lErr.end());
        }
        ExpectOutputUntouched();
    }

    void ExpectOutputUntouched()
    {
        EXPECT_EQ(ReadFile(WorkPath("out.json")), kPreviousOutput);
        for (const std::string& lName : WorkFolderEntries()) EXPECT_EQ(lName.find(".tmp"), std::string::npos) << lName;
    }
};

TEST_F(HostileInputTest, BrokenInputFilesAreRefusedWithFileAndLine)
{
    for (const auto& [lName, lFiles] : {std::make_pair("in.asf", BrokenSkeletons()), std::make_pair("in.amc", BrokenMotions())})
        for (const BrokenFile& lFile : lFiles)
            ExpectRefused(ImportFile(lName, lFile.mText), WorkPath(lName).string(), lFile.mLine, lFile.mMessage,
                          lName + std::string(": ") + lFile.mCase);
}

TEST_F(HostileInputTest, MotionForALargerSkeletonWarnsAboutTheMissingBone)
{
    const ToolRun lRun = ImportFile("in.amc", Replace(ReadFile(kSampleAmc), "\nhead ", "\nlthumb 1 2\nhead "));
    EXPECT_EQ(lRun.mStatus, 0) << lRun.mErr;
    EXPECT_NE(lRun.mErr.find(WorkPath("in.amc").string() + ":"), std::string::npos) << lRun.mErr;
    EXPECT_NE(lRun.mErr.find("warning: Unknown bone (lthumb)"), std::string::npos) << lRun.mErr;
}

} // namespace
