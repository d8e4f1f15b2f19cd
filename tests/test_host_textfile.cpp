#include "orvsdk/host/io/OrvNumberText.h"
#include "orvsdk/host/io/OrvTextFile.h"

#include "support/ScratchFiles.h"

#include <gtest/gtest.h>

#include <clocale>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <limits>
#include <random>
#include <utility>
#include <string>
#include <vector>

using namespace orvsdk;

namespace {

const char* const kDelimiters = " \t, ()\r\n";
const double kInf = std::numeric_limits<double>::infinity();

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
struct CommaLocale
{
    CommaLocale()
    {
        for (const char* lName : {"de_DE.UTF-8", "de_DE.utf8", "de_DE", "fr_FR.UTF-8", "fr_FR.utf8", "nl_NL.UTF-8",
                                  "ru_RU.UTF-8", "es_ES.UTF-8", "it_IT.UTF-8"})
            if (!mActive && std::setlocale(LC_NUMERIC, lName)) mActive = std::localeconv()->decimal_point[0] == ',';
    }
    ~CommaLocale() { std::setlocale(LC_NUMERIC, mPrevious.c_str()); }

    const std::string mPrevious = std::setlocale(LC_NUMERIC, nullptr);
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

TEST(HostTextFile, CommentsRunToTheLineEnd)
{
    Reader lFile("# header comment\nname walker # trailing (1, 2)\n   # indented\nend#notacomment\n#\n");
    EXPECT_EQ(lFile.GetLineNumber(), 2);
    EXPECT_EQ(Walk(lFile), "name walker |end#notacomment |");
    EXPECT_EQ(lFile.GetLineNumber(), 5);
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
    EXPECT_EQ(Walk(lFile), ":version 1.10 |x |");

    Reader lMarkOnly("\xEF\xBB\xBF");
    EXPECT_TRUE(lMarkOnly.mEndOfFile);
    // Byte order marks count only at the start: elsewhere these are Latin-1 letters.
    Reader lLatin1("a\n\xFF\xFE b\n\xEF\xBB\xBF\n");
    EXPECT_EQ(Walk(lLatin1), "a |\xFF\xFE b |\xEF\xBB\xBF |");
    EXPECT_TRUE(lMarkOnly.GetMessages().empty() && lLatin1.GetMessages().empty());
}

// ---- Keyword tables ------------------------------------------------------------------------

TEST(HostTextFile, KeywordsIgnoreCaseAndTheColonEntryCatchesOtherColonWords)
{
    Reader lFile(":NAME\n:foo bar\n:\n:versions\nversion\n");
    EXPECT_EQ(lFile.Check(kSections), 1);  // Check consumes nothing
    EXPECT_EQ(lFile.Handle(kSections), 1);
    EXPECT_EQ(lFile.Handle(kSections), -1);  // no token left
    lFile.NextLine();
    EXPECT_EQ(lFile.Handle(kSections), 3);
    EXPECT_EQ(lFile.Handle(kSections), -1);  // not a keyword: left in place
    EXPECT_STREQ(lFile.mCurrentToken, "bar");
    for (int lLine = 0; lLine < 3; ++lLine)
    {
        lFile.NextLine();
        EXPECT_EQ(lFile.Check(kSections), lLine < 2 ? 3 : -1) << lFile.mCurrentToken;
    }
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

TEST(HostTextFile, FailedReadsLeaveTargetAndToken)
{
    Reader lFile("1 2 name 3\n");
    double lVector[3] = {7.0, 8.0, 9.0};
    EXPECT_FALSE(lFile.GetVector(lVector, 1.0));
    EXPECT_EQ(lVector[1], 8.0);
    EXPECT_STREQ(lFile.mCurrentToken, "1");
    double lPair[2] = {};
    ASSERT_TRUE(lFile.GetPair(lPair, 0.5));
    EXPECT_EQ(lPair[1], 1.0);
    int lInteger = -5;
    EXPECT_FALSE(lFile.GetInteger(lInteger));
    EXPECT_EQ(lInteger, -5);
    char lName[8];
    ASSERT_TRUE(lFile.GetString(lName, sizeof lName));
    EXPECT_FALSE(lFile.GetPair(lPair, 1.0));  // only one number left
    EXPECT_STREQ(lFile.mCurrentToken, "3");
    ASSERT_TRUE(lFile.GetInteger(lInteger));
    EXPECT_FALSE(lFile.GetString(lName, sizeof lName));
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

// ---- Messages ------------------------------------------------------------------------------

TEST(HostTextFile, MessagesCarryKindLineAndFileAndAreEchoedOnlyWhenAsked)
{
    ::testing::internal::CaptureStderr();
    Reader lFile("a\n\nb\n");
    lFile.Warning("Before anything\n");  // line 1 is current
    lFile.NextLine();
    lFile.Error("Unknown rotation order\n");
    Reader lLoud("a\n", true, true);
    lLoud.Warning("loud %d\n", 2);
    EXPECT_EQ(::testing::internal::GetCapturedStderr(), "walk.asf:1: warning: loud 2\n");
    ASSERT_EQ(lFile.GetMessages().size(), 2u);
    EXPECT_EQ(OrvFormatMessage(lFile.GetMessages()[0]), "walk.asf:1: warning: Before anything");
    EXPECT_EQ(OrvFormatMessage(lFile.GetMessages()[1]), "walk.asf:3: error: Unknown rotation order");
    EXPECT_EQ(OrvFormatMessage(OrvMessage{OrvMessage::eWarning, "walk.asf", 0, "x"}), "walk.asf: warning: x");
    EXPECT_EQ(lFile.GetErrorCount(), 1);
}

TEST(HostTextFile, OpenFailureNamesFileAndReason)
{
    OrvTextFile lFile("ASF", kDelimiters, "#", true, false);
    const std::string lMissing = std::string(ORV_SOURCE_DIR) + "/no/such/walk.asf";
    EXPECT_FALSE(lFile.Open(lMissing.c_str()));
    ASSERT_EQ(lFile.GetErrorCount(), 1);
    EXPECT_EQ(lFile.GetMessages()[0].mText, "Can't open ASF file " + lMissing + ": No such file or directory");
    EXPECT_FALSE(lFile.Open(ORV_SOURCE_DIR));
    ASSERT_EQ(lFile.GetErrorCount(), 1);  // messages start afresh with each file
    EXPECT_NE(lFile.GetMessages()[0].mText.find("Is a directory"), std::string::npos);
}

// ---- Writing -------------------------------------------------------------------------------

TEST_F(HostTextFileWrite, PrintIndentsAndReplacesTheTarget)
{
    const std::filesystem::path lTarget = mFolder / "out.asf";
    std::ofstream(lTarget) << "old content\n";
    OrvTextFile lFile("ASF", kDelimiters, "#", true, false);
    ASSERT_TRUE(lFile.Create(lTarget.c_str()));
    EXPECT_EQ(testfiles::ReadFile(lTarget), "old content\n");  // untouched until Close
    EXPECT_TRUE(lFile.Print(1, "%s %g\n", "mass", 1.0));
    EXPECT_TRUE(lFile.Print(2, "%s (%f)\n", "limits", 2.5));
    EXPECT_TRUE(lFile.Close());
    EXPECT_TRUE(lFile.Close());  // a second Close does nothing
    EXPECT_EQ(testfiles::ReadFile(lTarget), "  mass 1\n    limits (2.500000)\n");
    EXPECT_EQ(CountOtherFiles("out.asf"), 0);
    EXPECT_FALSE(lFile.Print(0, "late\n"));
}

// The temporary file that Create makes is recognised by its name alone, so a batch can find the
// ones a killed process left; names one letter short or long, or with other letters, are not.
TEST_F(HostTextFileWrite, TemporaryFilesAreRecognisedByNameAndLeadToTheirTarget)
{
    const std::filesystem::path lTarget = mFolder / "walk.bvh";
    OrvTextFile lFile("BVH", kDelimiters, "#", true, false);
    ASSERT_TRUE(lFile.Create(lTarget.c_str()));
    std::vector<std::filesystem::path> lEntries;
    for (const auto& lEntry : std::filesystem::directory_iterator(mFolder)) lEntries.push_back(lEntry.path());
    ASSERT_EQ(lEntries.size(), 1u);
    EXPECT_EQ(OrvTextFile::TargetOfTemporary(lEntries[0].string()), lTarget.string());
    EXPECT_TRUE(lFile.Close());

    const std::pair<const char*, const char*> kNames[] = {
        {"a/walk.bvh.tmpAb3dE9", "a/walk.bvh"},
        {"walk.bvh.tmpAb3dE", ""},     // five letters
        {"walk.bvh.tmpAb3dE9x", ""},   // seven
        {"walk.bvh.tmpAb3-E9", ""},    // not a letter or digit
        {"walk.bvh.tmxAb3dE9", ""},
        {".tmpAb3dE9", ""},            // no target
        {"walk.bvh", ""},
    };
    for (const auto& [lName, lTargetName] : kNames) EXPECT_EQ(OrvTextFile::TargetOfTemporary(lName), lTargetName) << lName;
}

TEST_F(HostTextFileWrite, NumbersUseADecimalPointUnderACommaLocale)
{
    CommaLocale lLocale;
    if (!lLocale.mActive) GTEST_SKIP() << "no locale with a decimal comma is installed";
    Reader lRead("0.45 (-1.5,2)\n");
    double lValues[3] = {};
    ASSERT_TRUE(lRead.GetVector(lValues, 1.0));
    EXPECT_EQ(lValues[0], 0.45);
    EXPECT_EQ(lValues[1], -1.5);
    lRead.Warning("Bad File format version (%f)\n", 1.5);
    EXPECT_EQ(lRead.GetMessages().back().mText, "Bad File format version (1.500000)");
    const std::filesystem::path lTarget = mFolder / "units.asf";
    OrvTextFile lFile("ASF", kDelimiters, "#", true, false);
    ASSERT_TRUE(lFile.Create(lTarget.c_str()));
    lFile.Print(1, "%s %g %f\n", "length", 0.45, -1.5);
    ASSERT_TRUE(lFile.Close());
    EXPECT_EQ(testfiles::ReadFile(lTarget), "  length 0.45 -1.500000\n");
}

namespace {

// printf's text of pValue in the C locale (an independent formatter), "-0" forms without the sign.
std::string PrintfText(const char* pFormat, int pDigits, double pValue)
{
    const std::string lPrevious = std::setlocale(LC_NUMERIC, nullptr);
    std::setlocale(LC_NUMERIC, "C");
    char lText[400];
    std::snprintf(lText, sizeof lText, pFormat, pDigits, pValue);
    std::setlocale(LC_NUMERIC, lPrevious.c_str());
    std::string lResult = lText;
    if (lResult.front() == '-' && lResult.find_first_not_of("-0.") == std::string::npos) lResult.erase(0, 1);
    return lResult;
}

} // namespace

// The writers' number text is printf's "%.*g" and "%.*f" in the C locale, but with '.' under any
// locale and no "-0": on chosen values (zeros, ties, powers of ten, the edges of the plain form,
// rounding that carries into a new digit) and on many drawn ones of every magnitude.
TEST(HostNumberText, MatchesPrintfInTheCLocaleWithoutNegativeZeroUnderAnyLocale)
{
    std::vector<double> lValues = {0.0,      -0.0,      1.0,      -1.5,        0.1,     0.09999999999, 123456789.0,
                                   999999999.5, 99999999.95, 9.9999999995, 1234567890.0, 1e-5,  -1e-5,   2.5e-7,
                                   -4.9e-5,  -5.1e-5,   180.0,    -179.99999999, 1e300,  -1e-300, 16.9f,
                                   0.00005,  -0.00004999, 3.14159265358979, 1e21,   0.125,   2.5,     -0.5,
                                   1e9,      1e8,       0.3,      95.391111111111,  std::nan(""), kInf};
    std::mt19937_64 lRandom(20261123);
    for (int i = 0; i < 15000; ++i)
    {
        const double lMagnitude = std::pow(10.0, std::uniform_real_distribution<double>(-7.0, 11.0)(lRandom));
        const double lValue = (lRandom() % 2 ? -1.0 : 1.0) * lMagnitude;
        lValues.push_back(lValue);
        // Decimal ties of the short forms: a whole number of half-units of the fourth and ninth digit.
        lValues.push_back(std::round(lValue * 2e4) / 2e4);
        lValues.push_back(std::round(lValue * 2e8) / 2e8);
    }
    CommaLocale lLocale;
    for (const double lValue : lValues)
        for (const int lDigits : {1, 4, 6, 9, 17})
        {
            std::string lGeneral;
            OrvAppendGeneral(lGeneral, lValue, lDigits);
            ASSERT_EQ(lGeneral, PrintfText("%.*g", lDigits, lValue)) << lValue << " with " << lDigits << " digits";
            std::string lFixed;
            OrvAppendFixed(lFixed, lValue, lDigits);
            ASSERT_EQ(lFixed, PrintfText("%.*f", lDigits, lValue)) << lValue << " with " << lDigits << " decimals";
        }
}
