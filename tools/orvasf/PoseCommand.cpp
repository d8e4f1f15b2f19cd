#include "orvsdk/host/scene/OrvPoseEvaluator.h"
#include "tools/orvasf/Commands.h"
#include "tools/orvasf/ExitStatus.h"
#include "tools/orvasf/MessagePrinter.h"
#include "tools/orvasf/OutputText.h"
#include "tools/orvasf/PoseCsvWriter.h"
#include "tools/orvasf/ToolImport.h"

#include <algorithm>
#include <cstdint>
#include <limits>
#include <optional>
#include <string>

namespace orvasf::tool {

namespace {

// The requested frames, or every frame when no list was given; empty with a message printed
// when a requested frame lies outside the motion.
std::optional<std::vector<FrameRange>> SelectFrames(const std::string& pList, int64_t pSpan)
{
    // Frame indices are ints: a span beyond their range offers its first INT_MAX + 1 frames.
    const int lLastIndex = static_cast<int>(std::min<int64_t>(pSpan - 1, std::numeric_limits<int>::max()));
    if (pList.empty()) return pSpan > 0 ? std::vector<FrameRange>{{0, lLastIndex}} : std::vector<FrameRange>();
    const std::optional<std::vector<FrameRange>> lFrames = ParseFrameList(pList);
    for (const FrameRange& lRange : lFrames.value())
    {
        if (lRange.mLast < pSpan) continue;
        PrintToolError("frame " + std::to_string(lRange.mLast) + " is outside the motion" +
                       (pSpan > 0 ? ", whose frames are 0 to " + std::to_string(lLastIndex) : ", which has no frame"));
        return std::nullopt;
    }
    return lFrames;
}

} // namespace

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
