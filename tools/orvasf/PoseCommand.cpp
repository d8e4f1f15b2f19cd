#include "orvsdk/host/scene/OrvPoseEvaluator.h"
#include "tools/orvasf/Commands.h"
#include "tools/orvasf/ExitStatus.h"
#include "tools/orvasf/OutputText.h"
#include "tools/orvasf/PoseCsvWriter.h"
#include "tools/orvasf/ToolImport.h"

#include <optional>
#include <string>

namespace orvasf::tool {

int RunPose(const PoseCommandOptions& pOptions)
{
    const OrvImportResult lImport = ImportFiles(pOptions.mImport);
    if (!lImport.mSucceeded) return eInputRefused;
    const std::optional<std::vector<FrameRange>> lFrames = SelectFrames(pOptions.mFrames, lImport.mFrameSpan);
    if (!lFrames) return eUsageError;
    OutputText lOutput("CSV");
    if (!lOutput.Open(pOptions.mOutputPath)) return eOutputFailed;
    const bool lWritten = WritePoseCsv(orvsdk::OrvPoseEvaluator(lImport.mRoot, lImport.mTake), *lFrames,
                                       lImport.mFramesPerSecond, pOptions.mDecimals, lOutput);
    return lOutput.Close() && lWritten ? eSuccess : eOutputFailed;
}

} // namespace orvasf::tool
