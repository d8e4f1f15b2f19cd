// Whole imports (skeleton, curves, motion, host nodes) running in several threads at once, each
// into its own host scene: every thread must get exactly what the same import gives alone. The
// "tsan" preset runs this under ThreadSanitizer.

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

} // namespace

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
