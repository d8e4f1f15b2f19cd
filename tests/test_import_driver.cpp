// The import driver: what a refused skeleton or motion leaves in the result, the warnings of
// settings whose result a user would not expect, and the BVH import. How the walker poses under
// every combination of the set-up flags is checked in test_import_realdata.cpp.

#include "support/BvhReference.h"
#include "support/ScratchFiles.h"

#include "driver/OrvImportDriver.h"
#include "orvsdk/host/anim/OrvAnimStack.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <fstream>
#include <string>

using namespace orvsdk;
using orvasf::OrvImportResult;
using orvasf::OrvImportSettings;
using orvasf::OrvRotationFilter;

namespace {

const std::string kExamples = std::string(ORV_SOURCE_DIR) + "/examples/";
const std::string kWalkerAsf = kExamples + "walker.asf";

// A file written for one test and removed afterwards.
class ScratchFile
{
public:
    ScratchFile(const std::string& pName, const std::string& pText) : mPath(testfiles::ScratchPath(pName))
    {
        std::ofstream(mPath, std::ios::binary) << pText;
    }
    ~ScratchFile() { std::remove(mPath.c_str()); }
    const std::string& Path() const { return mPath; }

private:
    std::string mPath;
};

//   root   tx ty tz rx ry rz, at pPosition
//   +-- thigh  rx ry rz (X, Y, Z)
//       +-- shin  pShinDofs
std::string LegSkeleton(const std::string& pPosition, const std::string& pShinDofs)
{
    return ":root\n  order TX TY TZ RX RY RZ\n  axis XYZ\n  position " + pPosition +
           "\n  orientation 0 0 0\n:bonedata\n"
           "  begin\n    name thigh\n    direction 0 -1 0\n    length 4\n    axis 0 0 0 XYZ\n    dof rx ry rz\n  end\n"
           "  begin\n    name shin\n    direction 0 -1 0\n    length 4\n    axis 0 0 0 XYZ\n    dof " +
           pShinDofs + "\n  end\n:hierarchy\n  begin\n    root thigh\n    thigh shin\n  end\n";
}

OrvImportSettings Settings(bool pUseRotationOffset, bool pUsePreRotation,
                           OrvRotationFilter pFilter = OrvRotationFilter::eNone)
{
    OrvImportSettings lSettings;
    lSettings.mUseRotationOffset = pUseRotationOffset;
    lSettings.mUsePreRotation = pUsePreRotation;
    lSettings.mRotationFilter = pFilter;
    return lSettings;
}

// The warnings of pResult whose text contains pWords.
int CountWarnings(const OrvImportResult& pResult, const std::string& pWords)
{
    return static_cast<int>(std::count_if(pResult.mMessages.begin(), pResult.mMessages.end(), [&](const OrvMessage& p) {
        return p.mKind == OrvMessage::eWarning && p.mText.find(pWords) != std::string::npos;
    }));
}

} // namespace

// --- Refused files ---------------------------------------------------------------------------------

TEST(ImportDriver, RefusedFileEndsWithTheErrorAtItsFileAndLineAndAttachesNoNode)
{
    struct Refusal
    {
        std::string mAsf;  // text of the skeleton; empty: the walker
        std::string mAmc;  // text of the motion; empty: none
        std::string mError;
        int mLine;
    };
    // The skeleton reader stops without a message of its own on the first three.
    const std::string lRoot = ":root\n  order TX TY TZ RX RY RZ\n  axis XYZ\n";
    const Refusal lRefusals[] = {
        {":name nothing\n", "", "the file ends without a complete :root section", 1},
        {lRoot + ":bonedata\n  begin\n    name a\n", "", "the file ends inside a section", 6},
        {":name\n" + lRoot, "", "reading stopped here (see the warning above)", 1},
        {"", "2\nroot 0 0 0 0 0 0\n1\nroot 0 0 0 0 0 0\n", "Frame number 1 does not follow frame 2", 3},
    };
    for (const Refusal& lCase : lRefusals)
    {
        SCOPED_TRACE(lCase.mError);
        const ScratchFile lAsf("driver.asf", lCase.mAsf);
        const ScratchFile lAmc("driver.amc", lCase.mAmc);
        const bool lMotionRefused = !lCase.mAmc.empty();
        const std::string lAsfPath = lMotionRefused ? kWalkerAsf : lAsf.Path();
        const OrvImportResult lResult =
            orvasf::OrvImportAsf(lAsfPath, lMotionRefused ? lAmc.Path() : "", OrvImportSettings());
        EXPECT_FALSE(lResult.mSucceeded);
        ASSERT_FALSE(lResult.mMessages.empty());
        EXPECT_EQ(OrvFormatMessage(lResult.mMessages.back()), (lMotionRefused ? lAmc.Path() : lAsfPath) + ":" +
                                                                  std::to_string(lCase.mLine) + ": error: " + lCase.mError);
        EXPECT_EQ(lResult.mRoot, nullptr);
        // A refused skeleton makes no scene; a refused motion leaves the scene without nodes, and its
        // curves, still owned by the bones, go with the result.
        ASSERT_EQ(lResult.mScene != nullptr, lMotionRefused);
        EXPECT_TRUE(!lResult.mScene || lResult.mScene->GetRootNode()->GetChildCount() == 0);
    }
}

// --- Warnings of surprising settings ---------------------------------------------------------------

// The gimbal killer keeps only the XYZ and ZYX orders; a root position is counted twice unless
// both set-up flags are set. Each warns once, and only then.
TEST(ImportDriver, SurprisingSettingsWarnOnce)
{
    const auto kGimbal = OrvRotationFilter::eGimbalKiller;
    struct Case
    {
        const char* mPosition;
        const char* mShinDofs;
        OrvImportSettings mSettings;
        const char* mWarning;  // "": none
    };
    const char* const kRootWarning = "root position is not zero";
    const Case lCases[] = {
        {"0 0 0", "rx ry rz", Settings(true, true, kGimbal), ""},
        {"0 0 0", "rz ry rx", Settings(true, true, kGimbal), ""},
        {"0 0 0", "ry rx rz", Settings(true, true, kGimbal), "gimbal-killer"},
        {"0 0 0", "rz rx", Settings(true, true, kGimbal), "gimbal-killer"},
        {"0 0 0", "ry rx rz", Settings(true, true, OrvRotationFilter::eUnroll), ""},
        {"0 0 0", "ry rx rz", Settings(true, true, OrvRotationFilter::eNone), ""},
        {"0 0 0", "tx", Settings(true, true, kGimbal), ""},
        {"0 0 0", "rx ry rz", Settings(false, false), ""},
        {"0 0 1", "rx ry rz", Settings(false, false), kRootWarning},
        {"0 0 1", "rx ry rz", Settings(true, false), kRootWarning},
        {"0 0 1", "rx ry rz", Settings(false, true), kRootWarning},
        {"0 0 1", "rx ry rz", Settings(true, true), ""},
    };
    for (const Case& lCase : lCases)
    {
        const ScratchFile lAsf("warning.asf", LegSkeleton(lCase.mPosition, lCase.mShinDofs));
        const OrvImportResult lResult = orvasf::OrvImportAsf(lAsf.Path(), "", lCase.mSettings);
        SCOPED_TRACE("case " + std::to_string(&lCase - lCases));
        ASSERT_TRUE(lResult.mSucceeded);
        EXPECT_EQ(lResult.mMessages.size(), *lCase.mWarning ? 1u : 0u);
        EXPECT_TRUE(!*lCase.mWarning || CountWarnings(lResult, lCase.mWarning) == 1);
    }
    // The walker has several bones in other orders: still one warning, which counts them and names
    // the first.
    const OrvImportResult lWalker = orvasf::OrvImportAsf(kWalkerAsf, "", Settings(false, false, kGimbal));
    ASSERT_EQ(CountWarnings(lWalker, "gimbal-killer"), 1);
    EXPECT_NE(lWalker.mMessages[0].mText.find("(the first is "), std::string::npos);
    EXPECT_EQ(lWalker.mMessages[0].mFile, kWalkerAsf);
}

// --- Frame spans -----------------------------------------------------------------------------------

TEST(ImportDriver, FrameSpanCoversFrameNumbersAtBothEndsOfTheIntRange)
{
    // The span from frame INT_MIN to INT_MAX is 2^32 frames: more than an int holds.
    const ScratchFile lAsf("span.asf", LegSkeleton("0 0 0", "rx"));
    const std::string lFrame = "root 0 0 0 0 0 0\nthigh 0 0 0\nshin 0\n";
    const ScratchFile lAmc("span.amc", ":DEGREES\n-2147483648\n" + lFrame + "2147483647\n" + lFrame);
    const OrvImportResult lResult = orvasf::OrvImportAsf(lAsf.Path(), lAmc.Path(), OrvImportSettings());
    ASSERT_TRUE(lResult.mSucceeded);
    EXPECT_EQ(lResult.mFrameCount, 2);
    EXPECT_EQ(lResult.mFrameSpan, int64_t{1} << 32);
}

// --- BVH -------------------------------------------------------------------------------------------

TEST(ImportDriver, BvhImportsIntoTheNamedTake)
{
    const ScratchFile lGood("driver.bvh", bvhtest::kSmallBvh);
    OrvImportSettings lSettings;
    lSettings.mTakeName = "Walk";
    const OrvImportResult lResult = orvasf::OrvImportBvh(lGood.Path(), lSettings);
    ASSERT_TRUE(lResult.mSucceeded);
    EXPECT_STREQ(lResult.mTake->GetName(), "Walk");
    EXPECT_EQ(lResult.mScene->GetRootNode()->GetChild(0), lResult.mRoot);
    EXPECT_EQ(lResult.mFrameCount, 3);
    EXPECT_EQ(lResult.mFramesPerSecond, 25.0);
    EXPECT_EQ(lResult.mSkeleton, nullptr);
}
