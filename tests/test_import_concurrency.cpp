// Whole imports (skeleton, curves, motion, host nodes) of different files running in several
// threads at once, each into its own host scene: every thread must get exactly what the same
// import gives alone. The "tsan" preset runs this under ThreadSanitizer.

#include "support/HostSceneSupport.h"

#include "amc/OrvAmcReader.h"
#include "orvsdk/asf/OrvFileAcclaimAsf.h"
#include "orvsdk/skeleton/OrvAsfNode.h"
#include "orvsdk/skeleton/OrvAsfScene.h"

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
    bool mUseRotationOffset;
    bool mUsePreRotation;
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

const char* const kTake = "Take";
const double kSampleSeconds[] = {0.0, 0.5, 1.0};

ImportOutcome Import(const ImportCase& pCase)
{
    ImportOutcome lOutcome;
    ScenePointer lScene = CreateHostScene(kTake);  // outlives the bones, which may own curves
    OrvAsfScene lAsf;
    OrvFileAcclaimAsf lFile(false);
    if (!lFile.Open(pCase.mSkeleton.c_str()) ||
        !lFile.Read(&lAsf, false, pCase.mUseRotationOffset, pCase.mUsePreRotation))
        return lOutcome;
    std::vector<std::string> lNames;
    lAsf.mRoot->VisitPreOrder([&lNames](const OrvAsfNode* pBone) {
        lNames.push_back(pBone->mName);
        return false;
    });

    lAsf.mRoot->CreateDataFromDOF(lScene.get());
    orvasf::OrvAmcReadSettings lSettings;
    lSettings.mUseRotationOffset = pCase.mUseRotationOffset;
    lSettings.mUsePreRotation = pCase.mUsePreRotation;
    orvasf::OrvAmcReader lReader;
    const orvasf::OrvAmcReadResult lRead = lReader.Read(pCase.mMotion.c_str(), lAsf, lSettings);
    lOutcome.mFrameCount = lRead.mFrameCount;
    if (!lRead.mSucceeded) return lOutcome;
    OrvNode* lRoot = lAsf.ASFToORV(lScene.get(), kTake, true, pCase.mUseRotationOffset, pCase.mUsePreRotation);
    lScene->GetRootNode()->AddChild(lRoot);

    for (const std::string& lName : lNames)
    {
        OrvNode* lNode = lName == lRoot->GetName() ? lRoot : lRoot->FindChild(lName.c_str());
        if (!lNode) return lOutcome;
        for (const double lSeconds : kSampleSeconds)
        {
            const OrvVector4 lPosition = lNode->EvaluateGlobalTransform(OrvTime::FromSeconds(lSeconds)).GetT();
            for (int k = 0; k < 3; ++k) lOutcome.mPositions.push_back(lPosition[k]);
        }
    }
    lOutcome.mSucceeded = true;
    return lOutcome;
}

// The bundled sample, and short motions of the shared data folder when it is there, each under
// another combination of the set-up flags.
std::vector<ImportCase> Cases()
{
    const std::string lExamples = std::string(ORV_SOURCE_DIR) + "/examples/";
    std::vector<ImportCase> lCases = {
        {lExamples + "walker.asf", lExamples + "walker.amc", false, false},
        {lExamples + "walker.asf", lExamples + "walker.amc", true, true},
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
        lCases.push_back({SharedDataPath("asf", lPair[0], ".asf"), SharedDataPath("amc", lPair[1], ".amc"), lFlag,
                          !lFlag});
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
