// The tool on bad input: every kind of broken skeleton or motion file gets a FILE:LINE message
// and exit status 1, an existing output file is never touched, and no temporary file is left
// behind. The readers' own tests check their messages for each kind of broken line.
#include "support/ToolRunner.h"

#include <algorithm>

namespace {

using namespace tool_support;

// pText (ASCII) as UTF-16 with its byte order mark.
std::string ToUtf16(const std::string& pText, bool pBigEndian)
{
    std::string lWide = pBigEndian ? "\xfe\xff" : "\xff\xfe";
    for (char lChar : pText) lWide += pBigEndian ? std::string{'\0', lChar} : std::string{lChar, '\0'};
    return lWide;
}

using HostileInputTest = ToolTest;

TEST_F(HostileInputTest, BrokenInputFilesAreRefusedWithFileAndLineAndLeaveTheOutputAlone)
{
    // A broken skeleton (in.asf), or the sample skeleton with a broken motion (in.amc), and the
    // error line after the file's path ("" when any line will do).
    struct BrokenFile
    {
        std::string mName;
        std::string mText;
        std::string mError;
    };
    const std::string lAsf = ReadFile(kSampleAsf);
    const std::string lAmc = ReadFile(kSampleAmc);
    const std::string lUtf16 = ":1: error: File is UTF-16 text; save it as ASCII or UTF-8";
    std::string lGarbage(4000, '\0');
    unsigned lState = 12345;
    for (char& lByte : lGarbage) lByte = static_cast<char>((lState = lState * 1103515245u + 12345u) >> 16);
    std::vector<BrokenFile> lFiles = {
        {"in.asf", "", ""},
        {"in.asf", lGarbage, ""},
        {"in.asf", Replace(lAsf, "    length 7.1\n", ""), ""},
        {"in.asf", ToUtf16(lAsf, false), lUtf16},
        {"in.amc", lGarbage, ""},
        {"in.amc", Replace(lAmc, "ltibia 5\n", "ltibia five\n"), ""},
        {"in.amc", ToUtf16(lAmc, true), lUtf16},
        {"in.amc", "", ": error: No frames in the file"},
        {"in.amc", "# nothing yet\n:FULLY-SPECIFIED\n:DEGREES\n", ":3: error: No frames in the file"},
    };
    // The sample skeleton cut right before each section keyword after the first.
    for (size_t lAt = lAsf.find("\n:"); lAt != std::string::npos; lAt = lAsf.find("\n:", lAt + 1))
        lFiles.push_back({"in.asf", lAsf.substr(0, lAt + 1), ""});

    const std::string kPreviousOutput = "previous output, must survive\n";
    for (size_t i = 0; i < lFiles.size(); ++i)
    {
        const BrokenFile& lFile = lFiles[i];
        WriteFile(WorkPath(lFile.mName), lFile.mText);
        WriteFile(WorkPath("out.json"), kPreviousOutput);
        const std::string lInputs =
            lFile.mName == "in.asf" ? Work("in.asf") : Quoted(kSampleAsf) + " --motion " + Work("in.amc");
        const ToolRun lRun = Run("import " + lInputs + " -o " + Work("out.json"));
        fs::remove(WorkPath(lFile.mName));
        SCOPED_TRACE("case " + std::to_string(i) + ", " + lFile.mName + "\n" + lRun.mErr);
        EXPECT_EQ(lRun.mStatus, 1);
        const std::string lWhere = WorkPath(lFile.mName).string() + (lFile.mError.empty() ? ":" : lFile.mError);
        const std::vector<std::string> lErr = Lines(lRun.mErr);
        if (lFile.mError.empty())
            EXPECT_NE(lRun.mErr.find(lWhere), std::string::npos);
        else
            EXPECT_NE(std::find(lErr.begin(), lErr.end(), lWhere), lErr.end());
        EXPECT_EQ(ReadFile(WorkPath("out.json")), kPreviousOutput);
        EXPECT_EQ(WorkFolderEntries(), std::vector<std::string>{"out.json"});
    }
}

TEST_F(HostileInputTest, MotionForALargerSkeletonWarnsAboutTheMissingBone)
{
    WriteFile(WorkPath("in.amc"), Replace(ReadFile(kSampleAmc), "\nhead ", "\nlthumb 1 2\nhead "));
    const ToolRun lRun = Run("import " + Quoted(kSampleAsf) + " --motion " + Work("in.amc"));
    EXPECT_EQ(lRun.mStatus, 0) << lRun.mErr;
    EXPECT_NE(lRun.mErr.find(WorkPath("in.amc").string() + ":"), std::string::npos) << lRun.mErr;
    EXPECT_NE(lRun.mErr.find("warning: Unknown bone (lthumb)"), std::string::npos) << lRun.mErr;
}

} // namespace
