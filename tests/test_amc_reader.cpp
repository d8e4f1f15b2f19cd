// The AMC reader on unusual but valid files, on refused frame numbers, in validation mode, and
// its number reading. Each unusual form is made in memory from the bundled walker motion and
// must give the host scene the very world positions of the plain file.

#include "support/HostSceneSupport.h"
#include "support/ScratchFiles.h"

#include "amc/OrvAmcReader.h"
#include "orvsdk/asf/OrvFileAcclaimAsf.h"
#include "orvsdk/skeleton/OrvAsfNode.h"
#include "orvsdk/skeleton/OrvAsfScene.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <charconv>
#include <cmath>
#include <cstring>
#include <functional>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

using namespace orvsdk;
using namespace orvsdk::hosttest;

namespace {

constexpr double kFramesPerSecond = 120.0;
constexpr double kPi = 3.14159265358979323846;

const std::string kExamples = std::string(ORV_SOURCE_DIR) + "/examples/";

// A skeleton read from the bundled walker, its curves in a host scene, and the result of reading
// one motion text into it; the host nodes are built when the read succeeded.
struct WalkerImport
{
    explicit WalkerImport(const std::string& pMotion, bool pSampleValues = true)
    {
        OrvFileAcclaimAsf lFile(false);
        EXPECT_TRUE(lFile.Open((kExamples + "walker.asf").c_str()) && lFile.Read(&mAsf, false, false, false));
        if (pSampleValues) mAsf.mRoot->CreateDataFromDOF(mScene.get());
        orvasf::OrvAmcReadSettings lSettings;
        lSettings.mFramesPerSecond = kFramesPerSecond;
        lSettings.mSampleValues = pSampleValues;
        mResult = mReader.Read(pMotion.data(), pMotion.size(), "walk.amc", mAsf, lSettings);
        if (!mResult.mSucceeded || !pSampleValues) return;
        mRoot = mAsf.ASFToORV(mScene.get(), "Take", false, false, false);
        mScene->GetRootNode()->AddChild(mRoot);
    }

    OrvScenePtr mScene = CreateHostScene("Take");  // outlives the bones, which may own curves
    OrvAsfScene mAsf;
    orvasf::OrvAmcReader mReader;
    orvasf::OrvAmcReadResult mResult;
    OrvNode* mRoot = nullptr;
};

// Expects every node of pActual at every frame within pTolerance (centimetres) of pExpected.
void ExpectSamePositions(const WalkerImport& pExpected, const WalkerImport& pActual, double pTolerance)
{
    ASSERT_TRUE(pActual.mResult.mSucceeded);
    ASSERT_NE(pActual.mRoot, nullptr);
    EXPECT_EQ(pActual.mResult.mFrameCount, pExpected.mResult.mFrameCount);
    ASSERT_EQ(WorldPositions(pActual.mRoot, OrvTime()).size(), WorldPositions(pExpected.mRoot, OrvTime()).size());
    for (int f = 0; f < pExpected.mResult.mFrameCount; ++f)
        ASSERT_LE(LargestDistance(pExpected.mRoot, pActual.mRoot, OrvTime::FromFrame(f, kFramesPerSecond)), pTolerance)
            << "at frame " << f;
}

// --- Text surgery on the walker motion -----------------------------------------------------------

std::string JoinLines(const std::vector<std::string>& pLines, const char* pEnd = "\n")
{
    std::string lText;
    for (const std::string& lLine : pLines) lText += lLine + pEnd;
    return lText;
}

bool IsFrameLine(const std::string& pLine)
{
    return !pLine.empty() && std::isdigit(static_cast<unsigned char>(pLine[0]));
}

bool IsBoneLine(const std::string& pLine)
{
    return !pLine.empty() && std::isalpha(static_cast<unsigned char>(pLine[0]));
}

std::string ShortestText(double pValue)
{
    char lText[32];
    const auto lResult = std::to_chars(lText, lText + sizeof lText, pValue);
    return std::string(lText, lResult.ptr);
}

// The walker's bone lines with their values rewritten by pRewrite(bone, values); other lines kept.
std::string RewriteBoneLines(const std::string& pText,
                             const std::function<void(const OrvAsfNode&, std::vector<std::string>&)>& pRewrite)
{
    WalkerImport lSkeleton("", false);
    std::vector<std::string> lLines = testfiles::Lines(pText);
    for (std::string& lLine : lLines)
    {
        if (!IsBoneLine(lLine)) continue;
        std::istringstream lIn(lLine);
        std::string lName;
        lIn >> lName;
        std::vector<std::string> lValues;
        for (std::string lValue; lIn >> lValue;) lValues.push_back(lValue);
        pRewrite(*lSkeleton.mAsf.mRoot->Find(lName.c_str()), lValues);
        lLine = lName;
        for (const std::string& lValue : lValues) lLine += " " + lValue;
    }
    return JoinLines(lLines);
}

// The error a read ended with, as "LINE: TEXT".
std::string FinalError(const WalkerImport& pRead)
{
    if (pRead.mResult.mSucceeded || pRead.mResult.mMessages.empty()) return "no error";
    const OrvMessage& lLast = pRead.mResult.mMessages.back();
    return std::to_string(lLast.mLine) + ": " + lLast.mText;
}

class AmcReaderVariants : public ::testing::Test
{
protected:
    void SetUp() override
    {
        mPlainText = testfiles::ReadFile(kExamples + "walker.amc");
        ASSERT_FALSE(mPlainText.empty());
        mPlain = std::make_unique<WalkerImport>(mPlainText);
        ASSERT_TRUE(mPlain->mResult.mSucceeded);
        ASSERT_EQ(mPlain->mResult.mFrameCount, 240);
        ASSERT_TRUE(mPlain->mResult.mMessages.empty());
    }

    // Reads pText, expects no message and the plain file's positions within pTolerance, and
    // returns the read's result.
    orvasf::OrvAmcReadResult ExpectLikePlain(const std::string& pText, double pTolerance = 0.0)
    {
        const WalkerImport lVariant(pText);
        for (const OrvMessage& lMessage : lVariant.mResult.mMessages) ADD_FAILURE() << OrvFormatMessage(lMessage);
        ExpectSamePositions(*mPlain, lVariant, pTolerance);
        return lVariant.mResult;
    }

    std::string mPlainText;
    std::unique_ptr<WalkerImport> mPlain;
};

} // namespace

TEST_F(AmcReaderVariants, UnusualButValidFormsGiveTheSamePose)
{
    // All at once: angles in radians; forced three-DOF lines, where bones with fewer DOFs carry
    // fillers after their own values and bones without DOFs get lines of three; each frame's bone
    // lines in another order; a UTF-8 byte order mark; comment lines with Latin-1 and UTF-8 bytes;
    // comments after bone lines; tabs, leading and trailing blanks; CRLF and LF mixed; no final
    // line end.
    const std::string lLatin1 = "# caf\xe9, na\xefve, \xa9 \xff\xfe";
    const std::string lUtf8 = "# caf\xc3\xa9 \xe2\x82\xac \xf0\x9f\x8e\xac";
    const std::vector<std::string> lLines = testfiles::Lines(
        RewriteBoneLines(mPlainText, [](const OrvAsfNode& pBone, std::vector<std::string>& pValues) {
            for (size_t i = 0; i < pValues.size(); ++i)
                if (pBone.mDof[i] >= 3) pValues[i] = ShortestText(std::stod(pValues[i]) * kPi / 180.0);
            pValues.resize(std::max<size_t>(pValues.size(), 3), "-777.5");
        }));
    std::string lText = "\xEF\xBB\xBF" + lLatin1 + "\n" + lUtf8;
    size_t lWritten = 0;
    for (size_t i = 0; i < lLines.size();)
    {
        std::vector<std::string> lGroup{lLines[i++]};  // a header line, or a frame line and its bones
        if (IsFrameLine(lGroup[0]))
        {
            lGroup.insert(lGroup.end(), {"lhipjoint 1 2 3", "rhipjoint 4 5 6"});
            while (i < lLines.size() && IsBoneLine(lLines[i])) lGroup.push_back(lLines[i++]);
            // Turned by the frame's number, so that no two frames agree.
            const int lFrame = std::stoi(lGroup[0]);
            std::rotate(lGroup.begin() + 1, lGroup.begin() + 1 + lFrame % static_cast<int>(lGroup.size() - 1),
                        lGroup.end());
            std::reverse(lGroup.begin() + 1, lGroup.end());
            if (lFrame % 10 == 0) lGroup.insert(lGroup.begin(), lLatin1);
        }
        for (std::string lLine : lGroup)
        {
            std::replace(lLine.begin(), lLine.end(), ' ', '\t');
            if (IsBoneLine(lLine)) lLine = " \t" + lLine + (lLine[0] == 'l' ? " " + lUtf8 : "");
            lText += (++lWritten % 3 == 0 ? "\r\n" : "\n") + lLine + " \t  ";
        }
    }
    lText.replace(lText.find(":DEGREES"), std::strlen(":DEGREES"), ":RADIANS\n:FORCE-ALL-JOINTS-BE-3DOF");
    // Degrees to radians and back may move an angle by one unit in the last place.
    const orvasf::OrvAmcReadResult lResult = ExpectLikePlain(lText, 1e-4);
    EXPECT_TRUE(lResult.mRadians);
    EXPECT_TRUE(lResult.mAllJointsThreeDof);
    const std::string lCrlf = JoinLines(testfiles::Lines(mPlainText), "\r\n");
    ExpectLikePlain(lCrlf.substr(0, lCrlf.size() - 2));
}

TEST_F(AmcReaderVariants, LinesThatCannotBeReadAreRefusedAtTheirLine)
{
    // With the header every bone takes exactly three values; without it a 1-DOF bone takes one.
    const std::string lForced = ":FORCE-ALL-JOINTS-BE-3DOF\n1\nroot 0 0 0 0 0 0\n";
    const std::pair<std::string, std::string> lCases[] = {
        {lForced + "ltibia 5 0\n", "4: Bone ltibia takes 3 values, the line holds 2"},
        {lForced + "ltibia 5 0 x\n", "4: Not a number (x)"},
        {"1\nroot 0 0 0 0 0 0\nltibia 5 0 0\n", "3: Bone ltibia takes 1 values, the line holds 3"},
        {":DEGREES\nroot 0 0 0 0 0 0\n", "2: Frame number expected before bone line (root)"},
        {"1x\nroot 0 0 0 0 0 0\n", "1: Bad frame number (1x)"},
        {"1 2\nroot 0 0 0 0 0 0\n", "1: Bad frame number (1)"},
        {"1\n:DEGREES\n", "2: Header keyword inside the frames (:DEGREES)"},
        {"2\nroot 0 0 0 0 0 0\n2\n", "3: Frame number 2 does not follow frame 2"},
        {"2\nroot 0 0 0 0 0 0\n1\n", "3: Frame number 1 does not follow frame 2"},
        {"1\nroot 0 0 0 0 0 0\n# " + std::string(orvasf::OrvAmcReader::kMaxLineLength, 'x') + "\n",
         "3: Line longer than 1048576 bytes"},
    };
    for (const auto& [lText, lError] : lCases) EXPECT_EQ(FinalError(WalkerImport(lText)), lError) << lText.substr(0, 80);
}

TEST_F(AmcReaderVariants, ValidationModeChecksLikeARunAndSamplesNothing)
{
    // Without curves (CreateDataFromDOF never ran): validation does not need them.
    WalkerImport lChecked(mPlainText, false);
    EXPECT_TRUE(lChecked.mResult.mSucceeded);
    EXPECT_EQ(lChecked.mResult.mFrameCount, 240);
    EXPECT_TRUE(lChecked.mResult.mMessages.empty());
    std::string lBroken = mPlainText;
    lBroken.replace(lBroken.find("ltibia 5"), std::strlen("ltibia 5"), "ltibia 5x");
    EXPECT_EQ(FinalError(WalkerImport(lBroken, false)), FinalError(WalkerImport(lBroken)));

    // With curves: a run would have keyed them.
    orvasf::OrvAmcReadSettings lSettings;
    lSettings.mSampleValues = false;
    lChecked.mAsf.mRoot->CreateDataFromDOF(lChecked.mScene.get());
    const orvasf::OrvAmcReadResult lValidated =
        lChecked.mReader.Read(mPlainText.data(), mPlainText.size(), "walk.amc", lChecked.mAsf, lSettings);
    EXPECT_TRUE(lValidated.mSucceeded);
    EXPECT_EQ(lChecked.mAsf.mRoot->Find("lfemur")->mRotationCurve[0]->KeyGetCount(), 0);
}

// --- Hostile input -------------------------------------------------------------------------------

TEST_F(AmcReaderVariants, NulByteIsRefusedAtItsLineWhereverTheFileIsCutIntoChunks)
{
    // Short comment lines across the first chunk boundaries, then a comment line longer than a
    // chunk, then the motion. The reader takes the file in chunks of 64 KiB.
    const size_t kChunk = 1 << 16;
    std::string lText;
    while (lText.size() < 3 * kChunk) lText += "# short comment line\n";
    const size_t lLongLine = lText.size();
    lText += "#" + std::string(3 * kChunk, 'y') + "\n" + mPlainText;
    for (const size_t lAt : {size_t{0}, kChunk - 1, kChunk, kChunk + 1, 3 * kChunk - 2, lLongLine + 5,
                             lLongLine + 2 * kChunk, lText.size() - 1})
    {
        const std::string lBroken = lText.substr(0, lAt) + '\0' + lText.substr(lAt);
        const auto lLine = 1 + std::count(lText.begin(), lText.begin() + static_cast<long>(lAt), '\n');
        EXPECT_EQ(FinalError(WalkerImport(lBroken)), std::to_string(lLine) + ": NUL byte in line") << "NUL at " << lAt;
    }
}

TEST(AmcReaderHostile, UnknownBoneNamesAreRememberedUpToTheLimit)
{
    // Two frames naming pNames distinct unknown bones each, among known bone lines.
    auto lMotion = [](size_t pNames) {
        std::string lText;
        for (int lFrame = 1; lFrame <= 2; ++lFrame)
        {
            lText += std::to_string(lFrame) + "\nroot 0 16.9 0 0 0 0\n";
            for (size_t i = 0; i < pNames; ++i) lText += "unknown" + std::to_string(i) + " 1 2\n";
            lText += "ltibia 5\n";
        }
        return lText;
    };
    const size_t lLimit = orvasf::OrvAmcReader::kMaxUnknownBones;
    ASSERT_EQ(lLimit, static_cast<size_t>(OrvDiagnostics::kMaxKeptWarnings));
    const WalkerImport lAtLimit(lMotion(lLimit));
    ASSERT_TRUE(lAtLimit.mResult.mSucceeded);
    EXPECT_EQ(lAtLimit.mResult.mWarningCount, static_cast<int>(lLimit));
    ASSERT_EQ(lAtLimit.mResult.mMessages.size(), lLimit);
    EXPECT_EQ(lAtLimit.mResult.mMessages.back().mText,
              "Unknown bone (unknown" + std::to_string(lLimit - 1) + "), its lines are skipped");

    // One name more is not remembered: it counts as a warning in both frames, and the first of
    // those is replaced by the note; the known bones still read.
    const WalkerImport lBeyond(lMotion(lLimit + 1));
    ASSERT_TRUE(lBeyond.mResult.mSucceeded);
    EXPECT_EQ(lBeyond.mResult.mWarningCount, static_cast<int>(lLimit) + 2);
    ASSERT_EQ(lBeyond.mResult.mMessages.size(), lLimit + 1);
    EXPECT_EQ(lBeyond.mResult.mMessages.back().mText, "Too many warnings, the others are not reported");
    EXPECT_EQ(lBeyond.mResult.mMessages.back().mLine, static_cast<int>(lLimit) + 3);
    ExpectSamePositions(WalkerImport(lMotion(0)), lBeyond, 0.0);
}

// --- Number reading ------------------------------------------------------------------------------

// What the reader promises: from_chars on the whole token, one leading '+' allowed, NaN refused;
// the value bit for bit (-0 is not 0).
TEST(AmcReaderValues, EdgeTokensReadExactlyAsFromChars)
{
    for (const std::string lToken :
         {"0", "-0", "-0.0", "00012.5000", "7.62852e-016", "1E5", "1e+22", "1e23", "1e-22", "4.9e-324", "1e400",
          "9007199254740992", "9007199254740993", "1234567890123456789", "12345678901234567890", "0.1", "0.3",
          "-2.07272e-014", "1.", ".5", "+5", "+-5", "-+5", "++5", "inf", "-inf", "+infinity", "nan", "1e", "1e+",
          "1e0001", "1e00001", "1x", "x", "", "-", ".", "1..2", "1.2.3", "0x10", "1,5", "0.7", "-123.456",
          "2.675", "98765.4321e-10", "-0.000123456789", "3.141592653589793", "1.7976931348623157e308"})
    {
        const char* const lEnd = lToken.data() + lToken.size();
        double lExpected = 0.0;
        const auto lFrom = std::from_chars(lToken.data() + (lToken.rfind('+', 0) == 0 ? 1 : 0), lEnd, lExpected);
        const bool lExpectedOk = lFrom.ec == std::errc() && lFrom.ptr == lEnd && !std::isnan(lExpected);
        double lActual = 0.0;
        ASSERT_EQ(orvasf::OrvAmcReader::ParseValue(lToken, lActual), lExpectedOk) << lToken;
        EXPECT_TRUE(!lExpectedOk || std::memcmp(&lActual, &lExpected, sizeof lActual) == 0) << lToken;
    }
}
