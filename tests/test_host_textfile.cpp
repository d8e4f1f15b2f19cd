#include "orvsdk/host/io/OrvTextFile.h"

#include "support/ScratchFiles.h"

#include <gtest/gtest.h>

#include <clocale>
#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <limits>
#include <random>
#include <string>

using namespace orvsdk;

namespace {

const char* const kDelimiters = " \t, ()\r\n";
const double kInf = std::numeric_limits<double>::infinity();

const TextToken kUnits[] = {{"mass", 0}, {"length", 0}, {"angle", 0}, {"", 0}};
const TextToken kSections[] = {{":version", 0}, {":name", 0}, {":units", 0}, {":", 0}, {"", 0}};

// A reader with the ASF lexical rules over pText.
class Reader : public OrvTextFile
{
public:
    explicit Reader(const std::string& pText, bool pSkipEmptyLines = true, bool pEcho = false)
        : OrvTextFile("ASF", kDelimiters, "#", pSkipEmptyLines, pEcho)
    {
        Open(pText.data(), pText.size(), "walk.asf");
        FirstLine();
    }
};

// Every remaining token of the file, lines separated by "|".
std::string Walk(OrvTextFile& pFile)
{
    std::string lTokens;
    for (bool lLine = !pFile.mEndOfFile; lLine; lLine = pFile.NextLine())
    {
        char lToken[64];
        while (pFile.GetString(lToken, sizeof lToken)) lTokens += std::string(lToken) + " ";
        lTokens += "|";
    }
    return lTokens;
}

// Switches LC_NUMERIC to a locale whose decimal point is ',' and restores the old one.
class CommaLocale
{
public:
    CommaLocale() : mPrevious(std::setlocale(LC_NUMERIC, nullptr))
    {
        for (const char* lName : {"de_DE.UTF-8", "de_DE.utf8", "de_DE", "fr_FR.UTF-8", "fr_FR.utf8", "nl_NL.UTF-8",
                                  "ru_RU.UTF-8", "es_ES.UTF-8", "it_IT.UTF-8"})
            if (std::setlocale(LC_NUMERIC, lName) && std::localeconv()->decimal_point[0] == ',')
            {
                mActive = true;
                return;
            }
        std::setlocale(LC_NUMERIC, mPrevious.c_str());
    }
    ~CommaLocale() { std::setlocale(LC_NUMERIC, mPrevious.c_str()); }
    bool IsActive() const { return mActive; }

private:
    std::string mPrevious;
    bool mActive = false;
};

// A fresh folder for files written by a test, removed afterwards.
class HostTextFileWrite : public ::testing::Test
{
protected:
    void SetUp() override
    {
        std::string lTemplate = ::testing::TempDir() + "orv_textfile_XXXXXX";
        ASSERT_NE(mkdtemp(&lTemplate[0]), nullptr);
        mFolder = lTemplate;
    }
    void TearDown() override { std::filesystem::remove_all(mFolder); }

    // Files of the folder other than pKeep.
    int CountOtherFiles(const std::string& pKeep) const
    {
        int lCount = 0;
        for (const auto& lEntry : std::filesystem::directory_iterator(mFolder))
            lCount += lEntry.path().filename() != pKeep;
        return lCount;
    }

    std::filesystem::path mFolder;
};

} // namespace

// ---- Lexical rules -------------------------------------------------------------------------

TEST(HostTextFile, ParenthesesAndCommasOnlySeparateNumbers)
{
    Reader lFile("limits ( -160 , 20 )\n(-160,20)\n-160 20\n");
    double lPair[2] = {0.0, 0.0};
    EXPECT_STREQ(lFile.mCurrentToken, "limits");
    char lWord[8];
    EXPECT_TRUE(lFile.GetString(lWord, sizeof lWord));
    for (int lLine = 0; lLine < 3; ++lLine)
    {
        lPair[0] = lPair[1] = 0.0;
        ASSERT_TRUE(lFile.GetPair(lPair, 1.0)) << "line " << lLine;
        EXPECT_EQ(lPair[0], -160.0);
        EXPECT_EQ(lPair[1], 20.0);
        EXPECT_STREQ(lFile.mCurrentToken, "");
        lFile.NextLine();
    }
    EXPECT_TRUE(lFile.mEndOfFile);
}

TEST(HostTextFile, CommentsRunToTheLineEnd)
{
    Reader lFile("# header comment\nname walker # trailing (1, 2)\n   # indented\nend#notacomment\n#\n");
    EXPECT_EQ(lFile.GetLineNumber(), 2);
    EXPECT_EQ(Walk(lFile), "name walker |end#notacomment |");
    EXPECT_EQ(lFile.GetLineNumber(), 5);

    OrvTextFile lSlashes("TXT", " ", "//", true, false);
    const std::string lText = "a / b // c d\n/\n//\n";
    lSlashes.Open(lText.data(), lText.size());
    lSlashes.FirstLine();
    EXPECT_EQ(Walk(lSlashes), "a / b |/ |");
}

TEST(HostTextFile, CrLfAndBlankLines)
{
    Reader lFile("\r\na b\r\n\r\n \t \r\n\nc\r\nlast");
    EXPECT_EQ(lFile.GetLineNumber(), 2);
    EXPECT_STREQ(lFile.mCurrentToken, "a");
    EXPECT_EQ(Walk(lFile), "a b |c |last |");

    Reader lEveryLine("a\r\n\n# only a comment\nb\n", false);
    EXPECT_EQ(Walk(lEveryLine), "a |||b |");
    EXPECT_EQ(lEveryLine.GetLineNumber(), 4);
}

TEST(HostTextFile, NulByteRefusesItsLineAndEndsTheWalk)
{
    // In a token, in a comment, and alone on a line that would otherwise be skipped as empty.
    for (const std::string& lBad : {std::string("b\0c", 3), std::string("b # x\0", 6), std::string(1, '\0')})
    {
        Reader lFile("a 1\n" + lBad + "\r\nd\n");
        EXPECT_EQ(Walk(lFile), "a 1 |");
        EXPECT_TRUE(lFile.mEndOfFile);
        EXPECT_FALSE(lFile.NextLine());
        EXPECT_EQ(lFile.GetLineNumber(), 2);
        ASSERT_EQ(lFile.GetMessages().size(), 1u);
        EXPECT_EQ(OrvFormatMessage(lFile.GetMessages()[0]), "walk.asf:2: error: NUL byte in line");
    }
}

TEST(HostTextFile, Utf8ByteOrderMarkIsSkipped)
{
    Reader lFile("\xEF\xBB\xBF:version 1.10\nx\n");
    EXPECT_EQ(lFile.GetLineNumber(), 1);
    EXPECT_EQ(lFile.Check(kSections), 0);
    EXPECT_EQ(Walk(lFile), ":version 1.10 |x |");
    ASSERT_TRUE(lFile.FirstLine());
    EXPECT_EQ(lFile.Check(kSections), 0);

    Reader lMarkOnly("\xEF\xBB\xBF");
    EXPECT_TRUE(lMarkOnly.mEndOfFile);
    // Byte order marks count only at the start: elsewhere these are Latin-1 letters.
    Reader lLatin1("a\n\xFF\xFE b\n\xEF\xBB\xBF\n");
    EXPECT_EQ(Walk(lLatin1), "a |\xFF\xFE b |\xEF\xBB\xBF |");
    EXPECT_TRUE(lMarkOnly.GetMessages().empty() && lLatin1.GetMessages().empty());
}

TEST(HostTextFile, WalkingEndsCleanlyAndCanStartOver)
{
    Reader lEmpty("\n\n# nothing\n");
    EXPECT_TRUE(lEmpty.mEndOfFile);
    EXPECT_STREQ(lEmpty.mCurrentToken, "");
    EXPECT_FALSE(lEmpty.NextLine());

    Reader lFile("x 1 2\ny (3,4)\r\nz");
    const std::string lFirst = Walk(lFile);
    EXPECT_TRUE(lFile.mEndOfFile);
    ASSERT_TRUE(lFile.FirstLine());
    EXPECT_EQ(lFile.GetLineNumber(), 1);
    EXPECT_EQ(Walk(lFile), lFirst);
}

// ---- Keyword tables ------------------------------------------------------------------------

TEST(HostTextFile, KeywordsMatchWithoutRegardToCase)
{
    Reader lFile("LENGTH 2.5 Mass\n");
    EXPECT_EQ(lFile.Check(kUnits), 1);
    EXPECT_EQ(lFile.Check(kUnits), 1);  // Check consumes nothing
    EXPECT_EQ(lFile.Handle(kUnits), 1);
    EXPECT_EQ(lFile.Handle(kUnits), -1);  // "2.5"
    EXPECT_STREQ(lFile.mCurrentToken, "2.5");
    double lLength = 0.0;
    EXPECT_TRUE(lFile.GetDouble(lLength, 1.0));
    EXPECT_EQ(lFile.Handle(kUnits), 0);
    EXPECT_EQ(lFile.Check(kUnits), -1);  // no token left
    EXPECT_EQ(lFile.Handle(kUnits), -1);
}

TEST(HostTextFile, ColonEntryCatchesOtherColonWords)
{
    Reader lFile(":NAME\n:foo bar\n:\n:versions\nversion\n", false);
    EXPECT_EQ(lFile.Handle(kSections), 1);
    lFile.NextLine();
    EXPECT_EQ(lFile.Handle(kSections), 3);
    EXPECT_STREQ(lFile.mCurrentToken, "bar");
    lFile.NextLine();
    EXPECT_EQ(lFile.Check(kSections), 3);
    lFile.NextLine();
    EXPECT_EQ(lFile.Check(kSections), 3);
    lFile.NextLine();
    EXPECT_EQ(lFile.Check(kSections), -1);
}

TEST(HostTextFile, MatchCountersBelongToTheFile)
{
    Reader lFirst("mass length mass\n");
    Reader lSecond("angle\n");
    lFirst.InitTokens(kUnits);
    lSecond.InitTokens(kUnits);
    while (lFirst.Handle(kUnits) >= 0) {}
    lSecond.Handle(kUnits);
    EXPECT_EQ(lFirst.GetTokenCount(kUnits, 0), 2);
    EXPECT_EQ(lFirst.GetTokenCount(kUnits, 1), 1);
    EXPECT_EQ(lFirst.GetTokenCount(kUnits, 2), 0);
    EXPECT_EQ(lSecond.GetTokenCount(kUnits, 2), 1);
    EXPECT_EQ(lSecond.GetTokenCount(kUnits, 0), 0);
    for (int i = 0; i < 3; ++i) EXPECT_EQ(kUnits[i].count, 0);  // the shared table is never written
    lFirst.InitTokens(kUnits);
    EXPECT_EQ(lFirst.GetTokenCount(kUnits, 0), 0);
    EXPECT_EQ(lFirst.GetTokenCount(kSections, 0), 0);  // a table never used
    EXPECT_EQ(lFirst.GetTokenCount(kUnits, 3), 0);     // past the last keyword
}

// ---- Typed reads ---------------------------------------------------------------------------

TEST(HostTextFile, NumbersMustBeWholeTokens)
{
    struct Case
    {
        const char* mText;
        bool mRead;
        double mValue;
    };
    const Case lCases[] = {
        {"1.5", true, 1.5},        {"-2", true, -2.0},      {"+3", true, 3.0},       {"7.62852e-016", true, 7.62852e-16},
        {"inf", true, kInf},       {"-inf", true, -kInf},   {"+inf", true, kInf},    {"1e308", true, 1e308},
        {"nan", false, 0},         {"-nan", false, 0},      {"1e400", false, 0},     {"-1e400", false, 0},
        {"1.5x", false, 0},        {"0x10", false, 0},      {"+-1", false, 0},       {"++1", false, 0},
        {"+", false, 0},           {"-", false, 0},         {"1,5", true, 1.0},      {":units", false, 0},
    };
    for (const Case& lCase : lCases)
    {
        Reader lFile(lCase.mText);
        double lValue = 42.0;
        const bool lRead = lFile.GetDouble(lValue, 2.0);  // the scale multiplies
        EXPECT_EQ(lRead, lCase.mRead) << lCase.mText;
        EXPECT_EQ(lValue, lCase.mRead ? 2.0 * lCase.mValue : 42.0) << lCase.mText;
    }
}

TEST(HostTextFile, PairOverflowToInfinityReadsOnlyOverflowsAsInfinities)
{
    struct Case
    {
        const char* mText;
        bool mRead;
        double mFirst;
        double mSecond;
    };
    const double kLargest = std::numeric_limits<double>::max();
    const Case lCases[] = {
        {"1e400 -1e400", true, kInf, -kInf},
        {"+1e999 1.7976931348623157e308", true, kInf, kLargest},
        {"-1.7976931348623159e308 -inf", true, -kInf, -kInf},
        {"1e-400 0", false, 0, 0},
        {"0 1e400x", false, 0, 0},
        {"nan 1e400", false, 0, 0},
    };
    for (const Case& lCase : lCases)
    {
        Reader lFile(lCase.mText);
        double lPair[2] = {42.0, 42.0};
        EXPECT_EQ(lFile.GetPairOverflowToInfinity(lPair, 1.0), lCase.mRead) << lCase.mText;
        EXPECT_EQ(lPair[0], lCase.mRead ? lCase.mFirst : 42.0) << lCase.mText;
        EXPECT_EQ(lPair[1], lCase.mRead ? lCase.mSecond : 42.0) << lCase.mText;
    }
}

TEST(HostTextFile, FailedReadsLeaveTargetAndToken)
{
    Reader lFile("1 2 name 3\n");
    double lVector[3] = {7.0, 8.0, 9.0};
    EXPECT_FALSE(lFile.GetVector(lVector, 1.0));
    EXPECT_EQ(lVector[0], 7.0);
    EXPECT_EQ(lVector[1], 8.0);
    EXPECT_STREQ(lFile.mCurrentToken, "1");
    double lPair[2] = {};
    ASSERT_TRUE(lFile.GetPair(lPair, 0.5));
    EXPECT_EQ(lPair[1], 1.0);
    int lInteger = -5;
    EXPECT_FALSE(lFile.GetInteger(lInteger));
    EXPECT_EQ(lInteger, -5);
    double lValue = 6.0;
    EXPECT_FALSE(lFile.GetDouble(lValue, 1.0));
    EXPECT_EQ(lValue, 6.0);
    EXPECT_STREQ(lFile.mCurrentToken, "name");
    char lName[8];
    ASSERT_TRUE(lFile.GetString(lName, sizeof lName));
    EXPECT_FALSE(lFile.GetPair(lPair, 1.0));  // only one number left
    EXPECT_STREQ(lFile.mCurrentToken, "3");
    ASSERT_TRUE(lFile.GetInteger(lInteger));
    EXPECT_EQ(lInteger, 3);
    EXPECT_FALSE(lFile.GetString(lName, sizeof lName));
    EXPECT_FALSE(lFile.GetDouble(lValue, 1.0));
    EXPECT_EQ(lFile.GetWarningCount() + lFile.GetErrorCount(), 0);
}

TEST(HostTextFile, IntegersStayWithinIntRange)
{
    const std::pair<const char*, bool> lCases[] = {{"42", true},          {"+5", true},       {"-2147483648", true},
                                                   {"2147483647", true},  {"2147483648", false}, {"-2147483649", false},
                                                   {"1.0", false},        {"12a", false},     {"inf", false}};
    for (const auto& lCase : lCases)
    {
        Reader lFile(lCase.first);
        int lValue = 99;
        EXPECT_EQ(lFile.GetInteger(lValue), lCase.second) << lCase.first;
        const std::string lExpected = lCase.second ? lCase.first + (lCase.first[0] == '+') : "99";
        EXPECT_EQ(std::to_string(lValue), lExpected) << lCase.first;
    }
}

TEST(HostTextFile, NumbersReadTheSameUnderACommaLocale)
{
    CommaLocale lLocale;
    if (!lLocale.IsActive()) GTEST_SKIP() << "no locale with a decimal comma is installed";
    Reader lFile("length 0.45 (-1.5,2)\n");
    lFile.Handle(kUnits);
    double lLength = 0.0;
    ASSERT_TRUE(lFile.GetDouble(lLength, 1.0));
    EXPECT_EQ(lLength, 0.45);
    double lPair[2] = {};
    ASSERT_TRUE(lFile.GetPair(lPair, 1.0));
    EXPECT_EQ(lPair[0], -1.5);
    lFile.Warning("Bad File format version (%f)\n", 1.5);
    EXPECT_EQ(lFile.GetMessages().back().mText, "Bad File format version (1.500000)");
}

TEST(HostTextFile, LongTokensAreTruncatedWithAWarning)
{
    Reader lFile("abcd abcde lhumerus\n");
    char lName[5];
    ASSERT_TRUE(lFile.GetString(lName, sizeof lName));  // 4 bytes fit
    EXPECT_STREQ(lName, "abcd");
    EXPECT_EQ(lFile.GetWarningCount(), 0);
    ASSERT_TRUE(lFile.GetString(lName, sizeof lName));  // 5 do not
    EXPECT_STREQ(lName, "abcd");
    ASSERT_EQ(lFile.GetWarningCount(), 1);
    EXPECT_EQ(lFile.GetMessages()[0].mText, "Name too long, truncated to 4 bytes (abcde)");
    EXPECT_STREQ(lFile.mCurrentToken, "lhumerus");
    char lOne[1];
    ASSERT_TRUE(lFile.GetString(lOne, 1));
    EXPECT_STREQ(lOne, "");
}

// ---- Messages ------------------------------------------------------------------------------

TEST(HostTextFile, MessagesCarryKindLineAndFile)
{
    std::string lText;
    for (int i = 1; i <= 12; ++i) lText += "line" + std::to_string(i) + "\n";
    Reader lFile(lText);
    lFile.Warning("Before anything\n");  // line 1 is current
    while (lFile.GetLineNumber() < 12) lFile.NextLine();
    lFile.Error("Unknown rotation order\n");
    ASSERT_EQ(lFile.GetMessages().size(), 2u);
    const OrvMessage& lError = lFile.GetMessages()[1];
    EXPECT_EQ(lError.mKind, OrvMessage::eError);
    EXPECT_EQ(lError.mLine, 12);
    EXPECT_EQ(OrvFormatMessage(lError), "walk.asf:12: error: Unknown rotation order");
    EXPECT_EQ(OrvFormatMessage(lFile.GetMessages()[0]), "walk.asf:1: warning: Before anything");
    EXPECT_EQ(OrvFormatMessage(OrvMessage{OrvMessage::eWarning, "walk.asf", 0, "x"}), "walk.asf: warning: x");
    EXPECT_EQ(lFile.GetErrorCount(), 1);
    EXPECT_EQ(lFile.GetWarningCount(), 1);
}

TEST(HostTextFile, MessagesAreEchoedOnlyWhenAsked)
{
    ::testing::internal::CaptureStderr();
    Reader lQuiet("a\n", true, false);
    lQuiet.Warning("quiet %d\n", 1);
    Reader lLoud("a\n", true, true);
    lLoud.Warning("loud %d\n", 2);
    EXPECT_EQ(::testing::internal::GetCapturedStderr(), "walk.asf:1: warning: loud 2\n");
}

TEST(HostTextFile, OpenFailureNamesFileAndReason)
{
    OrvTextFile lFile("ASF", kDelimiters, "#", true, false);
    const std::string lMissing = std::string(ORV_SOURCE_DIR) + "/no/such/walk.asf";
    EXPECT_FALSE(lFile.Open(lMissing.c_str()));
    ASSERT_EQ(lFile.GetErrorCount(), 1);
    EXPECT_EQ(lFile.GetMessages()[0].mText, "Can't open ASF file " + lMissing + ": No such file or directory");
    EXPECT_TRUE(lFile.mEndOfFile);
    EXPECT_FALSE(lFile.FirstLine());

    EXPECT_FALSE(lFile.Open(ORV_SOURCE_DIR));
    ASSERT_EQ(lFile.GetErrorCount(), 1);  // messages start afresh with each file
    EXPECT_NE(lFile.GetMessages()[0].mText.find("Is a directory"), std::string::npos);
}

TEST(HostTextFile, ReadsARealSkeletonFile)
{
    const std::string lPath = std::string(ORV_SHARED_DATA_DIR) + "/asf/cmu_01.asf";
    if (!std::filesystem::exists(lPath)) GTEST_SKIP() << lPath << " is absent";
    OrvTextFile lFile("ASF", kDelimiters, "#", true, false);
    ASSERT_TRUE(lFile.Open(lPath.c_str()));
    ASSERT_TRUE(lFile.FirstLine());
    EXPECT_EQ(lFile.Check(kSections), 0);  // the header comment is passed over
    int lSections = 0;
    int lLines = 0;
    for (bool lLine = true; lLine; lLine = lFile.NextLine(), ++lLines)
    {
        lSections += lFile.Check(kSections) >= 0;
        EXPECT_NE(lFile.mCurrentToken[0], '\0');
        EXPECT_EQ(std::string(lFile.mCurrentToken).find('\r'), std::string::npos);
    }
    EXPECT_GE(lSections, 6);
    EXPECT_GT(lLines, 200);
    EXPECT_EQ(lFile.GetWarningCount() + lFile.GetErrorCount(), 0);
}

// ---- Robustness ----------------------------------------------------------------------------

TEST(HostTextFile, ArbitraryBytesDoNotCrash)
{
    std::mt19937 lRandom(12345);
    std::string lText(1 << 20, '\0');
    // Every byte but NUL, which would end the walk at its line.
    for (char& lByte : lText)
    {
        const auto lDraw = 1 + lRandom() % 299;
        lByte = static_cast<char>(lDraw < 256 ? lDraw : (lDraw < 280 ? '\n' : ' '));
    }
    OrvTextFile lFile("ASF", kDelimiters, "#", true, false);
    ASSERT_TRUE(lFile.Open(lText.data(), lText.size()));
    int lTokens = 0;
    for (bool lLine = lFile.FirstLine(); lLine; lLine = lFile.NextLine())
    {
        double lValues[3];
        int lInteger = 0;
        char lName[4];
        lFile.Check(kSections);
        lFile.Handle(kUnits);
        lFile.GetVector(lValues, 1.0);
        lFile.GetInteger(lInteger);
        while (lFile.GetString(lName, sizeof lName)) ++lTokens;
    }
    EXPECT_GT(lTokens, 1000);
}

TEST(HostTextFile, HugeLinesAndManyTokens)
{
    std::string lText(20 << 20, 'x');
    lText += "\n";
    for (int i = 0; i < 2000000; ++i) lText += "1,";
    lText += "\n(";
    Reader lFile(lText);
    char lName[8];
    ASSERT_TRUE(lFile.GetString(lName, sizeof lName));
    ASSERT_EQ(lFile.GetWarningCount(), 1);
    EXPECT_LT(lFile.GetMessages()[0].mText.size(), 400u);  // the token is quoted in short
    ASSERT_TRUE(lFile.NextLine());
    int lCount = 0;
    double lValue = 0.0;
    while (lFile.GetDouble(lValue, 1.0)) ++lCount;
    EXPECT_EQ(lCount, 2000000);
    EXPECT_FALSE(lFile.NextLine());  // the last line holds only a delimiter
    EXPECT_TRUE(lFile.mEndOfFile);
}

// ---- Writing -------------------------------------------------------------------------------

TEST_F(HostTextFileWrite, PrintIndentsAndReplacesTheTarget)
{
    const std::filesystem::path lTarget = mFolder / "out.asf";
    std::ofstream(lTarget) << "old content\n";
    OrvTextFile lFile("ASF", kDelimiters, "#", true, false);
    ASSERT_TRUE(lFile.Create(lTarget.c_str()));
    EXPECT_EQ(testfiles::ReadFile(lTarget), "old content\n");  // untouched until Close
    EXPECT_TRUE(lFile.Print(0, "%s\n", ":units"));
    EXPECT_TRUE(lFile.Print(1, "%s %g\n", "mass", 1.0));
    EXPECT_TRUE(lFile.Print(2, "%s", "limits"));
    EXPECT_TRUE(lFile.Print(0, " (%s , %f)\n", "-inf", 2.5));
    EXPECT_TRUE(lFile.Close());
    EXPECT_TRUE(lFile.Close());  // a second Close does nothing
    EXPECT_EQ(testfiles::ReadFile(lTarget), ":units\n  mass 1\n    limits (-inf , 2.500000)\n");
    EXPECT_EQ(CountOtherFiles("out.asf"), 0);
    EXPECT_FALSE(lFile.Print(0, "late\n"));
}

TEST_F(HostTextFileWrite, PrintUsesADecimalPointUnderACommaLocale)
{
    CommaLocale lLocale;
    if (!lLocale.IsActive()) GTEST_SKIP() << "no locale with a decimal comma is installed";
    const std::filesystem::path lTarget = mFolder / "units.asf";
    OrvTextFile lFile("ASF", kDelimiters, "#", true, false);
    ASSERT_TRUE(lFile.Create(lTarget.c_str()));
    lFile.Print(1, "%s %g %f\n", "length", 0.45, -1.5);
    ASSERT_TRUE(lFile.Close());
    EXPECT_EQ(testfiles::ReadFile(lTarget), "  length 0.45 -1.500000\n");
}

TEST_F(HostTextFileWrite, CreateInAMissingFolderFails)
{
    const std::filesystem::path lTarget = mFolder / "missing" / "out.asf";
    OrvTextFile lFile("ASF", kDelimiters, "#", true, false);
    EXPECT_FALSE(lFile.Create(lTarget.c_str()));
    ASSERT_EQ(lFile.GetErrorCount(), 1);
    EXPECT_NE(lFile.GetMessages()[0].mText.find(lTarget.string()), std::string::npos);
    EXPECT_FALSE(lFile.Print(0, "x\n"));
    EXPECT_TRUE(lFile.Close());
    EXPECT_EQ(CountOtherFiles(""), 0);
}

TEST_F(HostTextFileWrite, FailedRenameKeepsTheTarget)
{
    const std::filesystem::path lTarget = mFolder / "out.asf";
    std::filesystem::create_directory(lTarget);  // a directory cannot be replaced by a file
    std::ofstream(lTarget / "inside") << "kept\n";
    OrvTextFile lFile("ASF", kDelimiters, "#", true, false);
    ASSERT_TRUE(lFile.Create(lTarget.c_str()));
    lFile.Print(0, "text\n");
    EXPECT_FALSE(lFile.Close());
    EXPECT_EQ(lFile.GetErrorCount(), 1);
    EXPECT_EQ(testfiles::ReadFile(lTarget / "inside"), "kept\n");
    EXPECT_EQ(CountOtherFiles("out.asf"), 0);
}

TEST_F(HostTextFileWrite, FailedWriteKeepsTheTargetAndRemovesTheTemporaryFile)
{
    const std::filesystem::path lTarget = mFolder / "out.asf";
    std::ofstream(lTarget) << "old content\n";
    OrvTextFile lFile("ASF", kDelimiters, "#", true, false);
    ASSERT_TRUE(lFile.Create(lTarget.c_str()));

    // Files may not grow beyond 4 KB while the text is written.
    bool lAllPrinted = true;
    bool lClosed = true;
    ASSERT_TRUE(testfiles::WithFileSizeLimit(4096, [&] {
        for (int i = 0; i < 1000; ++i) lAllPrinted = lFile.Print(1, "%s %d\n", "line of text", i) && lAllPrinted;
        lClosed = lFile.Close();
    }));

    EXPECT_FALSE(lAllPrinted);
    EXPECT_FALSE(lClosed);
    EXPECT_EQ(lFile.GetErrorCount(), 1);
    EXPECT_EQ(testfiles::ReadFile(lTarget), "old content\n");
    EXPECT_EQ(CountOtherFiles("out.asf"), 0);
}
