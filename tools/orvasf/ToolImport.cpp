#include "tools/orvasf/ToolImport.h"

#include "tools/orvasf/MessagePrinter.h"
#include "tools/orvasf/ProgressReporter.h"

#include <algorithm>
#include <filesystem>
#include <limits>

namespace orvasf::tool {

OrvImportResult ImportFiles(const ImportOptions& pOptions, InputFormat pFormat)
{
    ProgressReporter lProgress(pOptions.mMotionPath);
    OrvImportSettings lSettings = pOptions.mSettings;
    lSettings.mProgress = [&lProgress](uint64_t pDone, uint64_t pTotal) { lProgress.Update(pDone, pTotal); };
    OrvImportResult lResult = pFormat == InputFormat::eBvh    ? OrvImportBvh(pOptions.mAsfPath, lSettings)
                              : pFormat == InputFormat::eGltf ? OrvImportGltf(pOptions.mAsfPath, lSettings, pOptions.mGltf)
                                                              : OrvImportAsf(pOptions.mAsfPath, pOptions.mMotionPath, lSettings);
    lProgress.Finish();
    PrintMessages(lResult.mMessages);
    return lResult;
}

std::optional<InputFormat> InputFormatOf(const std::string& pPath)
{
    const std::string lExtension = LowerCaseExtension(pPath);
    if (lExtension == ".asf") return InputFormat::eAsf;
    if (lExtension == ".bvh") return InputFormat::eBvh;
    if (lExtension == ".glb" || lExtension == ".gltf") return InputFormat::eGltf;
    return std::nullopt;
}

std::string InputUsageProblem(const char* pCommand, const ImportOptions& pImport)
{
    const std::optional<InputFormat> lInput = InputFormatOf(pImport.mAsfPath);
    if (!lInput) return std::string(pCommand) + " reads .asf, .bvh, .glb or .gltf files, not " + pImport.mAsfPath;
    if (*lInput != InputFormat::eAsf && !pImport.mMotionPath.empty())
        return "--motion goes with an ASF input; a BVH or glTF file holds its motion";
    if (*lInput != InputFormat::eGltf && !pImport.mGltf.mAnimationName.empty())
        return "--animation goes with a .glb or .gltf input";
    return std::string();
}

std::optional<InputFormat> CheckedInputFormat(const ImportOptions& pOptions, const char* pCommand)
{
    const std::string lProblem = InputUsageProblem(pCommand, pOptions);
    if (lProblem.empty()) return InputFormatOf(pOptions.mAsfPath);
    PrintToolError(lProblem);
    return std::nullopt;
}

OrvImportResult ImportInput(const ImportOptions& pImport)
{
    return ImportFiles(pImport, InputFormatOf(pImport.mAsfPath).value());
}

std::string InputNames(const ImportOptions& pOptions)
{
    std::string lNames = std::filesystem::path(pOptions.mAsfPath).filename().string();
    if (!pOptions.mMotionPath.empty())
        lNames += " + " + std::filesystem::path(pOptions.mMotionPath).filename().string();
    return lNames;
}

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

} // namespace orvasf::tool
