// Whole imports (skeleton, curves, motion, host nodes) running in several threads at once, each
// into its own host scene: every thread must get exactly what the same import gives alone. The
// "tsan" preset runs this under ThreadSanitizer.

#include "support/HostSceneSupport.h"
#include "tests/AsfTestSupport.h"

#include "amc/OrvAmcReader.h"
#include "driver/OrvImportDriver.h"
#include "orvsdk/host/anim/OrvAnimCurve.h"
#include "orvsdk/skeleton/OrvAsfNode.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <string>
#include <thread>
#include <vector>

using namespace orvsdk;
using namespace orvsdk::hosttest;

namespace {

struct ImportCase
{
    std::string mSkeleton;
    std::string mMotion;
    orvasf::OrvImportSettings mSettings;
};

// What an import leaves behind: its frame count, then every joint's world position at a few
// times, in the skeleton's pre-order; empty when the import failed or a bone got no node.
std::vector<double> Import(const ImportCase& pCase)
{
    const orvasf::OrvImportResult lResult = orvasf::OrvImportAsf(pCase.mSkeleton, pCase.mMotion, pCase.mSettings);
    if (!lResult.mSucceeded) return {};
    std::vector<double> lOutcome{static_cast<double>(lResult.mFrameCount)};
    const OrvAsfNode* lUnbuilt = lResult.mSkeleton->mRoot->VisitPreOrder([&](const OrvAsfNode* pBone) {
        OrvNode* lNode = lResult.mScene->GetRootNode()->FindChild(pBone->mName);
        if (!lNode) return true;
        for (const double lSeconds : {0.0, 0.5, 1.0})
        {
            const OrvVector4 lPosition = lNode->EvaluateGlobalTransform(OrvTime::FromSeconds(lSeconds)).GetT();
            lOutcome.insert(lOutcome.end(), {lPosition[0], lPosition[1], lPosition[2]});
        }
        return false;
    });
    return lUnbuilt ? std::vector<double>() : lOutcome;
}

// Lengths in centimetres (length unit 2.54); every bone with its own axis and DOF order.
//
//   root  tx ty tz rx ry rz
//   +-- a  rx ry rz
//   |   +-- b  rz rx ry
//   |       +-- c  ry rz rx
//   +-- d  tx rz
const char* const kChain =
    ":version 1.10\n:name chain\n:units\n  mass 1.0\n  length 2.54\n  angle deg\n"
    ":root\n  order TX TY TZ RX RY RZ\n  axis XYZ\n  position 0 0 0\n  orientation 0 0 0\n:bonedata\n"
    "  begin\n    id 1\n    name a\n    direction 0 1 0\n    length 3\n    axis 10 20 30 XYZ\n    dof rx ry rz\n  end\n"
    "  begin\n    id 2\n    name b\n    direction 1 0 0\n    length 2\n    axis -40 5 90 XYZ\n    dof rz rx ry\n  end\n"
    "  begin\n    id 3\n    name c\n    direction 0 0 1\n    length 1\n    axis 0 -90 0 XYZ\n    dof ry rz rx\n  end\n"
    "  begin\n    id 4\n    name d\n    direction 1 1 0\n    length 2\n    axis 45 0 0 XYZ\n    dof tx rz\n  end\n"
    ":hierarchy\n  begin\n    root a d\n    a b\n    b c\n  end\n";

// pFrames frames of smooth motion for kChain; the line of bone b in frame pBadFrame (when > 0)
// holds a value that is not a number.
std::string ChainMotion(int pFrames, int pBadFrame)
{
    std::string lText = ":FULLY-SPECIFIED\n:DEGREES\n";
    char lLine[256];
    for (int f = 1; f <= pFrames; ++f)
    {
        const double t = f / 120.0;
        std::snprintf(lLine, sizeof lLine,
                      "%d\nroot %.6g %.6g %.6g %.6g %.6g %.6g\na %.6g %.6g %.6g\nb %.6g %.6g %s\nc %.6g %.6g %.6g\n"
                      "d %.6g %.6g\n",
                      f, 10 * std::sin(t), 17.0, 5 * t, 20 * std::sin(t), 170 * std::sin(0.5 * t), 5 * std::cos(t),
                      40 * std::sin(t), 89.9 * std::sin(2 * t), 15 * std::cos(t), 30 * std::sin(3 * t), -60 * t,
                      f == pBadFrame ? "1.5.2" : std::to_string(std::fmod(200 * t, 360.0)).c_str(), 90 * std::cos(t),
                      45.0, -45 * std::sin(t), std::sin(t), 300 * t);
        lText += lLine;
    }
    return lText;
}

// What a read of pMotion with pThreads sampling threads leaves: its messages, then every bone's
// keys (time and value of each curve's keys, bones in pre-order).
struct SamplingOutcome
{
    std::vector<std::string> mMessages;
    std::vector<double> mKeys;
};

SamplingOutcome SampleChain(const std::string& pMotion, int pThreads)
{
    OrvScenePtr lScene = CreateHostScene();
    const std::unique_ptr<asftest::AsfRead> lRead = asftest::ReadAsfText(kChain);
    EXPECT_TRUE(lRead->mRead);
    lRead->mScene.mRoot->CreateDataFromDOF(lScene.get());
    orvasf::OrvAmcReadSettings lSettings;
    lSettings.mThreads = pThreads;
    orvasf::OrvAmcReader lReader;
    const orvasf::OrvAmcReadResult lResult =
        lReader.Read(pMotion.data(), pMotion.size(), "chain.amc", lRead->mScene, lSettings);
    SamplingOutcome lOutcome;
    for (const OrvMessage& lMessage : lResult.mMessages) lOutcome.mMessages.push_back(OrvFormatMessage(lMessage));
    lRead->mScene.mRoot->VisitPreOrder([&](const OrvAsfNode* pBone) {
        for (OrvAnimCurve* const* lCurves : {pBone->mTranslationCurve, pBone->mRotationCurve})
            for (int j = 0; j < 3; ++j)
                for (int k = 0; lCurves[j] && k < lCurves[j]->KeyGetCount(); ++k)
                    lOutcome.mKeys.insert(lOutcome.mKeys.end(), {static_cast<double>(lCurves[j]->KeyGetTime(k).Get()),
                                                                 static_cast<double>(lCurves[j]->KeyGetValue(k))});
        return false;
    });
    return lOutcome;
}

} // namespace

// Sampling on several threads gives every curve the keys one thread gives, to the bit, and a
// refused file the same messages; the file is long enough for the threads to start, with a
// fault before and after its end.
TEST(SamplingConcurrency, EveryThreadCountGivesTheKeysAndMessagesOfOne)
{
    for (const int lBadFrame : {0, 700, 2000})
    {
        SCOPED_TRACE("bad value in frame " + std::to_string(lBadFrame));
        const std::string lMotion = ChainMotion(2000, lBadFrame);
        const SamplingOutcome lAlone = SampleChain(lMotion, 1);
        ASSERT_GT(lAlone.mKeys.size(), 2u * 600 * 17);  // 600 frames at least, 17 DOFs
        EXPECT_EQ(lAlone.mMessages.empty(), lBadFrame == 0);
        for (const int lThreads : {2, 3, 8})
        {
            const SamplingOutcome lParallel = SampleChain(lMotion, lThreads);
            EXPECT_EQ(lParallel.mMessages, lAlone.mMessages) << lThreads << " threads";
            EXPECT_TRUE(lParallel.mKeys == lAlone.mKeys) << lThreads << " threads";
        }
    }
}

TEST(ImportConcurrency, ImportsRunAtOnceIntoTheirOwnScenes)
{
    // The bundled sample under both ends of the set-up flags: every step of the import runs.
    const std::string lExamples = std::string(ORV_SOURCE_DIR) + "/examples/";
    std::vector<ImportCase> lCases;
    for (const bool lFlag : {false, true})
    {
        lCases.push_back({lExamples + "walker.asf", lExamples + "walker.amc", {}});
        lCases.back().mSettings.mUseRotationOffset = lCases.back().mSettings.mUsePreRotation = lFlag;
        lCases.back().mSettings.mUseLimits = true;
    }
    std::vector<std::vector<double>> lAlone;
    for (const ImportCase& lCase : lCases)
    {
        lAlone.push_back(Import(lCase));
        ASSERT_FALSE(lAlone.back().empty()) << lCase.mSkeleton << " + " << lCase.mMotion;
    }

    std::vector<std::vector<double>> lTogether(lCases.size());
    std::vector<std::thread> lThreads;
    for (size_t i = 0; i < lCases.size(); ++i)
        lThreads.emplace_back([&lCases, &lTogether, i] { lTogether[i] = Import(lCases[i]); });
    for (std::thread& lThread : lThreads) lThread.join();

    for (size_t i = 0; i < lCases.size(); ++i)
        EXPECT_TRUE(lTogether[i] == lAlone[i]) << lCases[i].mSkeleton << " + " << lCases[i].mMotion;
}
