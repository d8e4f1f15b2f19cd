#include "orvsdk/host/anim/OrvAnimCurve.h"
#include "orvsdk/skeleton/OrvAsfScene.h"
#include "tools/orvasf/Commands.h"
#include "tools/orvasf/ExitStatus.h"
#include "tools/orvasf/HostSceneWalk.h"
#include "tools/orvasf/OutputText.h"
#include "tools/orvasf/ToolImport.h"
#include "tools/orvasf/SceneJsonWriter.h"
#include "tools/orvasf/SkeletonFile.h"

#include <cstdio>
#include <string>

namespace orvasf::tool {

namespace {

std::string Duration(double pSeconds)
{
    char lText[32];
    if (pSeconds < 1.0)
        std::snprintf(lText, sizeof lText, "%.1f ms", pSeconds * 1000.0);
    else
        std::snprintf(lText, sizeof lText, "%.3f s", pSeconds);
    return lText;
}

std::string FramesText(const OrvImportResult& pImport)
{
    if (!pImport.mHasMotion) return "none (no motion file)";
    const double lSpan = pImport.mFrameSpan > 0 ? static_cast<double>(pImport.mFrameSpan - 1) : 0.0;
    char lText[96];
    std::snprintf(lText, sizeof lText, "%d at %g fps (%.3f s)", pImport.mFrameCount, pImport.mFramesPerSecond,
                  lSpan / pImport.mFramesPerSecond);
    return lText;
}

void PrintSummary(const OrvImportResult& pImport, const ImportOptions& pOptions)
{
    const std::vector<orvsdk::OrvNode*> lNodes = CollectNodes(pImport.mRoot);
    const std::vector<CurveBinding> lCurves = CollectCurves(lNodes, pImport.mTake);
    long long lKeys = 0;
    for (const CurveBinding& lBinding : lCurves) lKeys += lBinding.mCurve->KeyGetCount();
    const OrvImportTimings& lTimings = pImport.mTimings;

    std::printf("import of %s%s%s, take \"%s\"\n", pOptions.mAsfPath.c_str(), pImport.mHasMotion ? " with " : "",
                pOptions.mMotionPath.c_str(), pOptions.mSettings.mTakeName.c_str());
    std::printf("  bones          %d + root\n", pImport.mJointCount - 1);
    std::printf("  host nodes     %zu\n", lNodes.size());
    std::printf("  curves         %zu\n", lCurves.size());
    std::printf("  keys           %lld\n", lKeys);
    std::printf("  frames         %s\n", FramesText(pImport).c_str());
    std::printf("  read           %s\n", Duration(lTimings.mReadSeconds).c_str());
    std::printf("  sampling       %s\n", Duration(lTimings.mSamplingSeconds).c_str());
    std::printf("  node building  %s\n", Duration(lTimings.mNodeBuildingSeconds).c_str());
}

} // namespace

int RunImport(const ImportCommandOptions& pOptions)
{
    const OrvImportResult lImport = ImportFiles(pOptions.mImport);
    if (!lImport.mSucceeded) return eInputRefused;
    if (pOptions.mSummary)
    {
        PrintSummary(lImport, pOptions.mImport);
        if (pOptions.mOutputPath.empty()) return eSuccess;
    }
    OutputText lOutput("JSON");
    if (!lOutput.Open(pOptions.mOutputPath)) return eOutputFailed;
    const bool lWritten = WriteSceneJson(lImport, lOutput);
    return lOutput.Close() && lWritten ? eSuccess : eOutputFailed;
}

} // namespace orvasf::tool
