// Throughput of the reading and import stages, each reported as bytes/s or items/s.
#include "amc/OrvAmcReader.h"
#include "orvsdk/asf/OrvFileAcclaimAsf.h"
#include "orvsdk/host/OrvAnimLayer.h"
#include "orvsdk/host/OrvAnimStack.h"
#include "orvsdk/host/OrvNode.h"
#include "orvsdk/host/OrvScene.h"
#include "orvsdk/skeleton/OrvAsfNode.h"
#include "orvsdk/skeleton/OrvAsfScene.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

namespace {

namespace fs = std::filesystem;
using orvsdk::OrvAsfScene;
using orvsdk::OrvFileAcclaimAsf;
using orvsdk::OrvScene;

struct MotionPair
{
    std::string mSkeleton;
    std::string mMotion;
};

// The longest shared motion, or the bundled sample when the shared data is absent.
MotionPair LongestMotion()
{
    const fs::path lShared = fs::path(ORV_SHARED_DATA_DIR);
    if (fs::exists(lShared / "amc" / "mo_135_02.amc"))
        return {(lShared / "asf" / "mo_martialwalk.asf").string(), (lShared / "amc" / "mo_135_02.amc").string()};
    const fs::path lExamples = fs::path(ORV_SOURCE_DIR) / "examples";
    return {(lExamples / "walker.asf").string(), (lExamples / "walker.amc").string()};
}

std::vector<std::string> SkeletonFiles()
{
    std::vector<std::string> lFiles;
    const fs::path lFolder = fs::path(ORV_SHARED_DATA_DIR) / "asf";
    if (fs::is_directory(lFolder))
        for (const auto& lEntry : fs::directory_iterator(lFolder)) lFiles.push_back(lEntry.path().string());
    if (lFiles.empty()) lFiles.push_back((fs::path(ORV_SOURCE_DIR) / "examples" / "walker.asf").string());
    std::sort(lFiles.begin(), lFiles.end());
    return lFiles;
}

std::string ReadWhole(const std::string& pPath)
{
    std::ifstream lIn(pPath, std::ios::binary);
    std::ostringstream lText;
    lText << lIn.rdbuf();
    return lText.str();
}

bool ReadSkeleton(const std::string& pText, OrvAsfScene& pScene)
{
    OrvFileAcclaimAsf lFile(false);
    return lFile.Open(pText.data(), pText.size(), "skeleton") && lFile.Read(&pScene, false, false, false);
}

// A host scene with a current take, as an import leaves it.
struct HostScene
{
    HostScene() : mScene(OrvScene::Create("bench"))
    {
        orvsdk::OrvAnimStack* lStack = orvsdk::OrvAnimStack::Create(mScene, "Take 001");
        orvsdk::OrvAnimLayer::Create(lStack, "Base Layer");
        mScene->SetCurrentAnimationStack(lStack);
    }
    ~HostScene() { mScene->Destroy(); }
    OrvScene* mScene;
};

// One whole import: skeleton, curves, sampling, flush, host nodes.
size_t ImportOnce(const std::string& pSkeletonText, const MotionPair& pPair, benchmark::State& pState)
{
    OrvAsfScene lAsf;
    if (!ReadSkeleton(pSkeletonText, lAsf)) pState.SkipWithError("skeleton refused");
    HostScene lHost;
    lAsf.mRoot->CreateDataFromDOF(lHost.mScene);
    orvasf::AmcReader lReader;
    const orvasf::AmcReadResult lResult = lReader.Read(pPair.mMotion.c_str(), lAsf, orvasf::AmcReadSettings());
    if (!lResult.mSucceeded) pState.SkipWithError("motion refused");
    orvsdk::OrvNode* lRoot = lAsf.ASFToORV(lHost.mScene, "Take 001", false, false, false);
    lHost.mScene->GetRootNode()->AddChild(lRoot);
    return static_cast<size_t>(lResult.mFrameCount);
}

void BM_ReadSkeleton(benchmark::State& pState, const std::string& pPath)
{
    const std::string lText = ReadWhole(pPath);
    for (auto lIteration : pState)
    {
        OrvAsfScene lScene;
        benchmark::DoNotOptimize(ReadSkeleton(lText, lScene));
    }
    pState.SetBytesProcessed(static_cast<int64_t>(pState.iterations() * lText.size()));
}

void BM_WholeImport(benchmark::State& pState)
{
    const MotionPair lPair = LongestMotion();
    const std::string lSkeleton = ReadWhole(lPair.mSkeleton);
    size_t lFrames = 0;
    for (auto lIteration : pState) lFrames += ImportOnce(lSkeleton, lPair, pState);
    pState.SetItemsProcessed(static_cast<int64_t>(lFrames));
    pState.SetLabel("items = frames");
}
BENCHMARK(BM_WholeImport)->Unit(benchmark::kMillisecond);

void BM_WorldPositionsPerFrame(benchmark::State& pState)
{
    const MotionPair lPair = LongestMotion();
    OrvAsfScene lAsf;
    if (!ReadSkeleton(ReadWhole(lPair.mSkeleton), lAsf)) pState.SkipWithError("skeleton refused");
    HostScene lHost;
    lAsf.mRoot->CreateDataFromDOF(lHost.mScene);
    orvasf::AmcReader lReader;
    const orvasf::AmcReadResult lResult = lReader.Read(lPair.mMotion.c_str(), lAsf, orvasf::AmcReadSettings());
    orvsdk::OrvNode* lRoot = lAsf.ASFToORV(lHost.mScene, "Take 001", false, false, false);
    lHost.mScene->GetRootNode()->AddChild(lRoot);
    std::vector<orvsdk::OrvNode*> lNodes{lRoot};
    for (size_t i = 0; i < lNodes.size(); ++i)
        for (int c = 0; c < lNodes[i]->GetChildCount(); ++c) lNodes.push_back(lNodes[i]->GetChild(c));
    int lFrame = 0;
    for (auto lIteration : pState)
    {
        const orvsdk::OrvTime lTime = orvsdk::OrvTime::FromFrame(lFrame++ % lResult.mFrameCount, 120.0);
        for (orvsdk::OrvNode* lNode : lNodes) benchmark::DoNotOptimize(lNode->EvaluateGlobalTransform(lTime));
    }
    pState.SetItemsProcessed(pState.iterations());
    pState.SetLabel("items = frames, all nodes");
}
BENCHMARK(BM_WorldPositionsPerFrame);

} // namespace

int main(int pArgc, char** pArgv)
{
    for (const std::string& lPath : SkeletonFiles())
        benchmark::RegisterBenchmark(("BM_ReadSkeleton/" + fs::path(lPath).stem().string()).c_str(), BM_ReadSkeleton, lPath);
    benchmark::Initialize(&pArgc, pArgv);
    if (benchmark::ReportUnrecognizedArguments(pArgc, pArgv)) return 1;
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
