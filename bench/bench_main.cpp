// Throughput of the reading and import stages, each reported as bytes/s or items/s (CPU time).
// The import pair is the longest shared motion (see ImportPair); the stages are timed one by one
// on it, then all together.
#include "bench/BenchSupport.h"

#include "gltf/OrvGltfWriter.h"
#include "orvsdk/host/scene/OrvPoseEvaluator.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <memory>
#include <string>
#include <vector>

namespace {

using namespace orvbench;
using orvsdk::OrvAsfScene;

// pRoot and every node below it.
std::vector<orvsdk::OrvNode*> CollectNodes(orvsdk::OrvNode* pRoot)
{
    std::vector<orvsdk::OrvNode*> lNodes{pRoot};
    for (size_t i = 0; i < lNodes.size(); ++i)
        for (int c = 0; c < lNodes[i]->GetChildCount(); ++c) lNodes.push_back(lNodes[i]->GetChild(c));
    return lNodes;
}

// True when the import pair reads without error; otherwise the benchmark is marked as failed
// and must return.
bool PairReadable(benchmark::State& pState, const MotionPair& pPair)
{
    OrvAsfScene lAsf;
    orvasf::OrvAmcReadSettings lSettings;
    lSettings.mSampleValues = false;
    orvasf::OrvAmcReader lReader;
    if (ReadSkeleton(ReadWhole(pPair.mSkeleton), lAsf) && lReader.Read(pPair.mMotion.c_str(), lAsf, lSettings).mSucceeded)
        return true;
    pState.SkipWithError(("cannot read " + pPair.mSkeleton + " with " + pPair.mMotion).c_str());
    return false;
}

// --- Reading -------------------------------------------------------------------------------------

void BM_ReadSkeleton(benchmark::State& pState, const std::string& pPath)
{
    const std::string lText = ReadWhole(pPath);
    OrvAsfScene lCheck;
    if (!ReadSkeleton(lText, lCheck))
    {
        pState.SkipWithError(("cannot read " + pPath).c_str());
        return;
    }
    for (auto lIteration : pState)
    {
        OrvAsfScene lScene;
        benchmark::DoNotOptimize(ReadSkeleton(lText, lScene));
    }
    pState.SetBytesProcessed(static_cast<int64_t>(pState.iterations() * lText.size()));
}

// The AMC reader in validation mode: the file read from disk (the page cache) and split into
// checked values, nothing sampled.
void BM_AmcRead(benchmark::State& pState)
{
    const MotionPair lPair = ImportPair();
    if (!PairReadable(pState, lPair)) return;
    OrvAsfScene lAsf;
    ReadSkeleton(ReadWhole(lPair.mSkeleton), lAsf);
    orvasf::OrvAmcReadSettings lSettings;
    lSettings.mSampleValues = false;
    const auto lSize = static_cast<int64_t>(fs::file_size(lPair.mMotion));
    int64_t lFrames = 0;
    for (auto lIteration : pState)
    {
        orvasf::OrvAmcReader lReader;
        lFrames += lReader.Read(lPair.mMotion.c_str(), lAsf, lSettings).mFrameCount;
    }
    pState.SetBytesProcessed(pState.iterations() * lSize);
    pState.counters["frames/s"] = benchmark::Counter(static_cast<double>(lFrames), benchmark::Counter::kIsRate);
}
BENCHMARK(BM_AmcRead)->Unit(benchmark::kMillisecond);

// --- Sampling ------------------------------------------------------------------------------------

// One AddSampleFromDOF per item: every bone line of the motion, then the keys are cleared (the
// curves keep their room) for the next pass. Arguments: rotation offset, pre-rotation.
void BM_AddSampleFromDOF(benchmark::State& pState)
{
    const bool lUseRotationOffset = pState.range(0) != 0;
    const bool lUsePreRotation = pState.range(1) != 0;
    const MotionPair lPair = ImportPair();
    if (!PairReadable(pState, lPair)) return;
    HostScene lHost;
    OrvAsfScene lAsf;
    ReadSkeleton(ReadWhole(lPair.mSkeleton), lAsf, lUseRotationOffset, lUsePreRotation);
    lAsf.mRoot->CreateDataFromDOF(lHost.mScene.get());
    Motion lMotion = SplitMotion(ReadWhole(lPair.mMotion), lAsf);
    for (auto lIteration : pState)
    {
        SampleMotion(lMotion, lAsf, lUseRotationOffset, lUsePreRotation);
        ForEachCurve(lAsf.mRoot, [](orvsdk::OrvAnimCurve& pCurve) { pCurve.KeyClear(); });
    }
    pState.SetItemsProcessed(pState.iterations() * static_cast<int64_t>(lMotion.mSamples.size()));
    pState.SetLabel("items = bone-frames");
}
BENCHMARK(BM_AddSampleFromDOF)
    ->ArgNames({"rotation_offset", "pre_rotation"})
    ->ArgsProduct({{0, 1}, {0, 1}})
    ->Unit(benchmark::kMillisecond);

// A skeleton whose curves were sampled from the first pFrames frames of the import pair (known to
// be readable), in a host scene of its own with the given flush settings.
struct SampledSkeleton
{
    SampledSkeleton(const std::string& pSkeletonText, const std::string& pMotionText, size_t pFrames,
                    int pRotationFilter = 0, bool pUseConstantKeyReducer = false)
        : mHost(pRotationFilter, pUseConstantKeyReducer)
    {
        ReadSkeleton(pSkeletonText, mAsf);
        mAsf.mRoot->CreateDataFromDOF(mHost.mScene.get());
        Motion lMotion = SplitMotion(pMotionText, mAsf, pFrames);
        SampleMotion(lMotion, mAsf, false, false);
    }

    HostScene mHost;  // declared first: destroyed after the bones, which own curves of it
    OrvAsfScene mAsf;
};

// StopSamplingData on curves freshly sampled from the first 1,200 frames (ten seconds) of the
// motion; set-up and tear-down are not timed, so the iterations are counted, not timed.
// Arguments: rotation filter (0 none, 1 gimbal killer, 2 unroll), constant-key reducer.
void BM_StopSamplingData(benchmark::State& pState)
{
    constexpr size_t kFrames = 1200;
    const int lFilter = static_cast<int>(pState.range(0));
    const bool lReduce = pState.range(1) != 0;
    const MotionPair lPair = ImportPair();
    if (!PairReadable(pState, lPair)) return;
    const std::string lSkeletonText = ReadWhole(lPair.mSkeleton);
    const std::string lMotionText = ReadWhole(lPair.mMotion);
    int64_t lKeys = 0;
    for (auto lIteration : pState)
    {
        pState.PauseTiming();
        auto lSampled = std::make_unique<SampledSkeleton>(lSkeletonText, lMotionText, kFrames, lFilter, lReduce);
        ForEachCurve(lSampled->mAsf.mRoot, [&lKeys](orvsdk::OrvAnimCurve& pCurve) { lKeys += pCurve.KeyGetCount(); });
        pState.ResumeTiming();
        lSampled->mAsf.mRoot->StopSamplingData();
        pState.PauseTiming();
        lSampled.reset();
        pState.ResumeTiming();
    }
    pState.SetItemsProcessed(lKeys);
    pState.SetLabel("items = keys");
}
BENCHMARK(BM_StopSamplingData)
    ->ArgNames({"filter", "reducer"})
    ->ArgsProduct({{0, 1, 2}, {0, 1}})
    ->Iterations(20)
    ->Unit(benchmark::kMillisecond);

// --- Node building -------------------------------------------------------------------------------

// ASFToORV, limits included, on a skeleton whose curves hold two frames of keys; set-up and
// tear-down are not timed, so the iterations are counted, not timed.
void BM_ASFToORV(benchmark::State& pState)
{
    const MotionPair lPair = ImportPair();
    if (!PairReadable(pState, lPair)) return;
    const std::string lSkeletonText = ReadWhole(lPair.mSkeleton);
    const std::string lMotionText = ReadWhole(lPair.mMotion);
    int64_t lNodes = 0;
    for (auto lIteration : pState)
    {
        pState.PauseTiming();
        auto lSampled = std::make_unique<SampledSkeleton>(lSkeletonText, lMotionText, 2);
        lSampled->mAsf.mRoot->StopSamplingData();
        pState.ResumeTiming();
        orvsdk::OrvNode* lRoot = lSampled->mAsf.ASFToORV(lSampled->mHost.mScene.get(), kTake, true, false, false);
        lSampled->mHost.mScene->GetRootNode()->AddChild(lRoot);
        pState.PauseTiming();
        lNodes += static_cast<int64_t>(CollectNodes(lRoot).size());
        lSampled.reset();
        pState.ResumeTiming();
    }
    pState.SetItemsProcessed(lNodes);
    pState.SetLabel("items = host nodes");
}
BENCHMARK(BM_ASFToORV)->Iterations(500)->Unit(benchmark::kMicrosecond);

// --- The whole import ----------------------------------------------------------------------------

// The import driver with its default settings but the number of sampling threads: skeleton read,
// curves, the AMC file read and sampled, the flush, the host nodes; what `orvasf import` does.
// Wall time, as the threads work side by side.
void BM_WholeImport(benchmark::State& pState)
{
    const MotionPair lPair = ImportPair();
    if (!PairReadable(pState, lPair)) return;
    orvasf::OrvImportSettings lSettings;
    lSettings.mThreads = static_cast<int>(pState.range(0));
    int64_t lFrames = 0;
    for (auto lIteration : pState)
        lFrames += orvasf::OrvImportAsf(lPair.mSkeleton, lPair.mMotion, lSettings).mFrameCount;
    pState.SetItemsProcessed(lFrames);
    pState.SetBytesProcessed(pState.iterations() * static_cast<int64_t>(fs::file_size(lPair.mMotion)));
    pState.SetLabel("items = frames");
}
BENCHMARK(BM_WholeImport)->ArgName("threads")->Arg(1)->Arg(2)->UseRealTime()->Unit(benchmark::kMillisecond);

// --- Evaluation ----------------------------------------------------------------------------------

// The world transform of every host node at one frame, per item.
void BM_WorldPositionsPerFrame(benchmark::State& pState)
{
    const MotionPair lPair = ImportPair();
    if (!PairReadable(pState, lPair)) return;
    const orvasf::OrvImportResult lImport = orvasf::OrvImportAsf(lPair.mSkeleton, lPair.mMotion, orvasf::OrvImportSettings());
    const int lFrameCount = std::max(lImport.mFrameCount, 1);
    const std::vector<orvsdk::OrvNode*> lNodes = CollectNodes(lImport.mRoot);
    int lFrame = 0;
    for (auto lIteration : pState)
    {
        const orvsdk::OrvTime lTime = orvsdk::OrvTime::FromFrame(lFrame++ % lFrameCount, kFramesPerSecond);
        for (orvsdk::OrvNode* lNode : lNodes) benchmark::DoNotOptimize(lNode->EvaluateGlobalTransform(lTime));
    }
    pState.SetItemsProcessed(pState.iterations());
    pState.counters["nodes"] = static_cast<double>(lNodes.size());
    pState.SetLabel("items = frames, every node");
}
BENCHMARK(BM_WorldPositionsPerFrame);

// The same with the whole-pose evaluator: one top-down pass over every node per frame.
void BM_PoseEvaluatorPerFrame(benchmark::State& pState)
{
    const MotionPair lPair = ImportPair();
    if (!PairReadable(pState, lPair)) return;
    const orvasf::OrvImportResult lImport = orvasf::OrvImportAsf(lPair.mSkeleton, lPair.mMotion, orvasf::OrvImportSettings());
    const int lFrameCount = std::max(lImport.mFrameCount, 1);
    const orvsdk::OrvPoseEvaluator lEvaluator(lImport.mRoot, lImport.mTake);
    std::vector<orvsdk::OrvAMatrix> lGlobals(static_cast<size_t>(lEvaluator.GetNodeCount()));
    int lFrame = 0;
    for (auto lIteration : pState)
    {
        lEvaluator.EvaluateGlobals(orvsdk::OrvTime::FromFrame(lFrame++ % lFrameCount, kFramesPerSecond), lGlobals.data());
        benchmark::DoNotOptimize(lGlobals.data());
    }
    pState.SetItemsProcessed(pState.iterations());
    pState.counters["nodes"] = static_cast<double>(lGlobals.size());
    pState.SetLabel("items = frames, every node");
}
BENCHMARK(BM_PoseEvaluatorPerFrame);

// What the Python package's load + positions() costs without Python: the whole import, then the
// world position of every node at every frame into one block of memory.
void BM_ImportAndPositions(benchmark::State& pState)
{
    const MotionPair lPair = ImportPair();
    if (!PairReadable(pState, lPair)) return;
    int64_t lFrames = 0;
    for (auto lIteration : pState)
    {
        const orvasf::OrvImportResult lImport =
            orvasf::OrvImportAsf(lPair.mSkeleton, lPair.mMotion, orvasf::OrvImportSettings());
        const orvsdk::OrvPoseEvaluator lEvaluator(lImport.mRoot, lImport.mTake);
        std::vector<double> lPositions(3 * static_cast<size_t>(lEvaluator.GetNodeCount() * lImport.mFrameCount));
        lEvaluator.EvaluatePositionFrames(0, lImport.mFrameCount, lImport.mFramesPerSecond, lPositions.data());
        benchmark::DoNotOptimize(lPositions.data());
        lFrames += lImport.mFrameCount;
    }
    pState.SetItemsProcessed(lFrames);
    pState.SetLabel("items = frames");
}
BENCHMARK(BM_ImportAndPositions)->Unit(benchmark::kMillisecond);

// --- glTF ----------------------------------------------------------------------------------------

// The import pair, imported, with the settings that write its every frame as .glb.
struct GltfCase
{
    orvasf::OrvImportResult mImport;
    orvasf::OrvGltfWriteSettings mSettings;
};

GltfCase ImportForGltf(const MotionPair& pPair)
{
    GltfCase lCase{orvasf::OrvImportAsf(pPair.mSkeleton, pPair.mMotion, orvasf::OrvImportSettings()), {}};
    lCase.mSettings.mFramesPerSecond = lCase.mImport.mFramesPerSecond;
    lCase.mSettings.mFrameCount = static_cast<int>(lCase.mImport.mFrameSpan);
    return lCase;
}

// The import pair's scene written as .glb (pose evaluation, decomposition, buffer, file), per frame.
void BM_GltfWrite(benchmark::State& pState)
{
    const MotionPair lPair = ImportPair();
    if (!PairReadable(pState, lPair)) return;
    const GltfCase lCase = ImportForGltf(lPair);
    const std::string lPath = (fs::temp_directory_path() / "orv_bench.glb").string();
    orvasf::OrvGltfWriter lWriter;
    for (auto lIteration : pState)
        if (!lWriter.Write(lPath, lCase.mImport.mRoot, lCase.mImport.mTake, lCase.mSettings))
            pState.SkipWithError("cannot write glTF");
    pState.SetItemsProcessed(pState.iterations() * lCase.mSettings.mFrameCount);
    pState.SetBytesProcessed(pState.iterations() * static_cast<int64_t>(fs::file_size(lPath)));
    pState.SetLabel("items = frames, bytes = .glb");
    fs::remove(lPath);
}
BENCHMARK(BM_GltfWrite)->Unit(benchmark::kMillisecond);

// That .glb read back into a host scene, sampled at its keyframe times, per frame.
void BM_GltfRead(benchmark::State& pState)
{
    const MotionPair lPair = ImportPair();
    if (!PairReadable(pState, lPair)) return;
    const GltfCase lCase = ImportForGltf(lPair);
    const std::string lPath = (fs::temp_directory_path() / "orv_bench_read.glb").string();
    if (!orvasf::OrvGltfWriter().Write(lPath, lCase.mImport.mRoot, lCase.mImport.mTake, lCase.mSettings))
        return pState.SkipWithError("cannot write glTF");
    int64_t lFrames = 0;
    for (auto lIteration : pState)
        lFrames += orvasf::OrvImportGltf(lPath, orvasf::OrvImportSettings(), orvasf::OrvGltfReadSettings()).mFrameCount;
    pState.SetItemsProcessed(lFrames);
    pState.SetBytesProcessed(pState.iterations() * static_cast<int64_t>(fs::file_size(lPath)));
    pState.SetLabel("items = frames, bytes = .glb");
    fs::remove(lPath);
}
BENCHMARK(BM_GltfRead)->Unit(benchmark::kMillisecond);

} // namespace

int main(int pArgc, char** pArgv)
{
    for (const std::string& lPath : SkeletonFiles())
        benchmark::RegisterBenchmark(("BM_ReadSkeleton/" + fs::path(lPath).stem().string()).c_str(), BM_ReadSkeleton,
                                     lPath);
    benchmark::Initialize(&pArgc, pArgv);
    if (benchmark::ReportUnrecognizedArguments(pArgc, pArgv)) return 1;
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
