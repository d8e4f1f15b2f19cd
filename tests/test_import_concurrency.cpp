// Whole imports (skeleton, curves, motion, host nodes) of different files running in several
// threads at once, each into its own host scene: every thread must get exactly what the same
// import gives alone. The "tsan" preset runs this under ThreadSanitizer.

#include "support/HostSceneSupport.h"

#include "driver/OrvImportDriver.h"
#include "orvsdk/skeleton/OrvAsfNode.h"

#include <gtest/gtest.h>

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

// What an import leaves behind: the frame count and every joint's world position at a few
// times, in the skeleton's pre-order.
struct ImportOutcome
{
    bool mSucceeded = false;
    int mFrameCount = 0;
    std::vector<double> mPositions;

    bool operator==(const ImportOutcome& pOther) const
    {
        return mSucceeded == pOther.mSucceeded && mFrameCount == pOther.mFrameCount &&
               mPositions == pOther.mPositions;
    }
};

const double kSampleSeconds[] = {0.0, 0.5, 1.0};

ImportOutcome Import(const ImportCase& pCase)
{
    ImportOutcome lOutcome;
    const orvasf::OrvImportResult lResult = orvasf::OrvImportAsf(pCase.mSkeleton, pCase.mMotion, pCase.mSettings);
    lOutcome.mFrameCount = lResult.mFrameCount;
    if (!lResult.mSucceeded) return lOutcome;
    const OrvAsfNode* lUnbuilt = lResult.mSkeleton->mRoot->VisitPreOrder([&](const OrvAsfNode* pBone) {
        OrvNode* lNode = lResult.mScene->GetRootNode()->FindChild(pBone->mName);
        if (!lNode) return true;
        for (const double lSeconds : kSampleSeconds)
        {
            const OrvVector4 lPosition = lNode->EvaluateGlobalTransform(OrvTime::FromSeconds(lSeconds)).GetT();
            for (int k = 0; k < 3; ++k) lOutcome.mPositions.push_back(lPosition[k]);
        }
        return false;
    });
    lOutcome.mSucceeded = lUnbuilt == nullptr;
    return lOutcome;
}

orvasf::OrvImportSettings WithFlags(bool pUseRotationOffset, bool pUsePreRotation)
{
    orvasf::OrvImportSettings lSettings;
    lSettings.mUseRotationOffset = pUseRotationOffset;
    lSettings.mUsePreRotation = pUsePreRotation;
    lSettings.mUseLimits = true;
    return lSettings;
}

// The bundled sample, and short motions of the shared data folder when it is there, each under
// another combination of the set-up flags.
std::vector<ImportCase> Cases()
{
    const std::string lExamples = std::string(ORV_SOURCE_DIR) + "/examples/";
    std::vector<ImportCase> lCases = {
        {lExamples + "walker.asf", lExamples + "walker.amc", WithFlags(false, false)},
        {lExamples + "walker.asf", lExamples + "walker.amc", WithFlags(true, true)},
    };
    if (!HasSharedData()) return lCases;
    const char* const kPairs[][2] = {
        {"cmu_09-run", "cmu_09_06-run"},
        {"cmu_07-walk", "cmu_07_12-walk"},
        {"cmu02_fzzzz_walk_vs", "cmu02_02_01_walk"},
        {"cmu_16", "cmu_16_15"},
    };
    bool lFlag = false;
    for (const auto& lPair : kPairs)
    {
        lCases.push_back(
            {SharedDataPath("asf", lPair[0], ".asf"), SharedDataPath("amc", lPair[1], ".amc"), WithFlags(lFlag, !lFlag)});
        lFlag = !lFlag;
    }
    return lCases;
}

} // namespace

TEST(ImportConcurrency, DifferentFilesImportAtOnceIntoTheirOwnScenes)
{
    const std::vector<ImportCase> lCases = Cases();
    std::vector<ImportOutcome> lAlone;
    for (const ImportCase& lCase : lCases)
    {
        lAlone.push_back(Import(lCase));
        ASSERT_TRUE(lAlone.back().mSucceeded) << lCase.mSkeleton << " + " << lCase.mMotion;
    }

    std::vector<ImportOutcome> lTogether(lCases.size());
    std::vector<std::thread> lThreads;
    for (size_t i = 0; i < lCases.size(); ++i)
        lThreads.emplace_back([&lCases, &lTogether, i] { lTogether[i] = Import(lCases[i]); });
    for (std::thread& lThread : lThreads) lThread.join();

    for (size_t i = 0; i < lCases.size(); ++i)
        EXPECT_TRUE(lTogether[i] == lAlone[i]) << lCases[i].mSkeleton << " + " << lCases[i].mMotion;
}
