#include "tools/orvasf/ConvertCommand.h"

#include "amc/OrvAmcWriter.h"
#include "bvh/OrvBvhWriter.h"
#include "orvsdk/skeleton/OrvAsfScene.h"
#include "tools/orvasf/ExitStatus.h"
#include "tools/orvasf/MessagePrinter.h"
#include "tools/orvasf/ToolImport.h"
#include "tools/orvasf/SkeletonFile.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <cctype>
#include <cstdint>
#include <filesystem>
#include <limits>

namespace orvasf::tool {

namespace {

enum class EFormat
{
    eUnknown,
    eAsf,
    eBvh
};

EFormat FormatOf(const std::string& pPath)
{
    std::string lExtension = std::filesystem::path(pPath).extension().string();
    std::transform(lExtension.begin(), lExtension.end(), lExtension.begin(),
                   [](unsigned char pChar) { return static_cast<char>(std::tolower(pChar)); });
    if (lExtension == ".asf") return EFormat::eAsf;
    if (lExtension == ".bvh") return EFormat::eBvh;
    return EFormat::eUnknown;
}

// The text of a usage problem, or empty when the options fit the files' formats.
std::string UsageProblem(const ConvertCommandOptions& pOptions, EFormat pInput, EFormat pOutput)
{
    if (pInput == EFormat::eUnknown) return "convert reads .asf or .bvh files, not " + pOptions.mImport.mAsfPath;
    if (pOutput == EFormat::eUnknown) return "convert writes .bvh or .asf files, not " + pOptions.mOutputPath;
    if (pInput == EFormat::eBvh && !pOptions.mImport.mMotionPath.empty())
        return "--motion goes with an ASF input; a BVH file holds its motion";
    if (pOutput == EFormat::eBvh && !pOptions.mMotionOutputPath.empty())
        return "--motion-out goes with an ASF output; a BVH file holds its motion";
    if (pInput == EFormat::eAsf && pOptions.mImport.mMotionPath.empty() && !pOptions.mMotionOutputPath.empty())
        return "--motion-out needs a motion to write: give the input's --motion";
    return std::string();
}

// Frames to write: the motion's span (at most the writers' int range), or the rest pose alone
// without a motion.
int FramesToWrite(const OrvImportResult& pImport)
{
    if (pImport.mFrameSpan <= 0) return 1;
    return static_cast<int>(std::min<int64_t>(pImport.mFrameSpan, std::numeric_limits<int>::max()));
}

bool WriteBvh(const std::string& pPath, const OrvImportResult& pImport)
{
    OrvBvhWriteSettings lSettings;
    lSettings.mFramesPerSecond = pImport.mFramesPerSecond;
    lSettings.mFrameCount = FramesToWrite(pImport);
    OrvBvhWriter lWriter;
    const bool lWritten = lWriter.Write(pPath.c_str(), pImport.mRoot, lSettings);
    PrintMessages(lWriter.GetFile().GetMessages());
    return lWritten;
}

// Exports the imported skeleton as ASF and, when it has motion, writes the motion as AMC.
bool WriteAsfAmc(const std::string& pAsfPath, const std::string& pAmcPath, const OrvImportResult& pImport)
{
    // Where the rest offsets sit in the rotation offsets (rest rotations then sit in
    // pre-rotations or in the animated rotation, both of which the export handles), the export
    // leaves the local transform, and with it every frame's motion, out of the rest pose. A lone
    // frame survives an import only as the rest pose (the sampler keeps no curve of a single
    // key), so it is exported as the rest pose itself.
    const int lFrames = FramesToWrite(pImport);
    const bool lUseLocalTransform = !pImport.mRestInRotationOffsets || lFrames == 1;
    orvsdk::OrvAsfScene lExported;
    lExported.ORVToASF(pImport.mRoot, pImport.mJointTranslation, orvsdk::OrvVector4(1.0, 1.0, 1.0),
                       lUseLocalTransform);
    if (!WriteSkeleton(pAsfPath, lExported)) return false;
    if (!pImport.mHasMotion) return true;

    OrvAmcWriteSettings lSettings;
    lSettings.mFramesPerSecond = pImport.mFramesPerSecond;
    lSettings.mFrameCount = lFrames;
    lSettings.mSkeletonFileName = std::filesystem::path(pAsfPath).filename().string();
    OrvAmcWriter lWriter;
    const bool lWritten = lWriter.Write(pAmcPath.c_str(), lExported, pImport.mRoot, lSettings);
    PrintMessages(lWriter.GetFile().GetMessages());
    return lWritten;
}

} // namespace

void AddConvertOptions(CLI::App& pCommand, ConvertCommandOptions& pOptions)
{
    pCommand.add_option("input", pOptions.mImport.mAsfPath, "ASF or BVH file to convert")->required();
    pCommand.add_option("--motion", pOptions.mImport.mMotionPath, "AMC motion of an ASF input")->type_name("FILE.amc");
    pCommand.add_option("-o,--output", pOptions.mOutputPath, "BVH or ASF file to write")
        ->required()
        ->type_name("OUT.bvh|OUT.asf");
    pCommand
        .add_option("--motion-out", pOptions.mMotionOutputPath,
                    "AMC file written with an ASF output (default: the output's name with .amc)")
        ->type_name("FILE.amc");
}

int RunConvert(const ConvertCommandOptions& pOptions)
{
    const EFormat lInput = FormatOf(pOptions.mImport.mAsfPath);
    const EFormat lOutput = FormatOf(pOptions.mOutputPath);
    const std::string lProblem = UsageProblem(pOptions, lInput, lOutput);
    if (!lProblem.empty())
    {
        PrintToolError(lProblem);
        return eUsageError;
    }

    const OrvImportResult lImport = ImportFiles(pOptions.mImport, lInput == EFormat::eBvh);
    if (!lImport.mSucceeded) return eInputRefused;

    if (lOutput == EFormat::eBvh) return WriteBvh(pOptions.mOutputPath, lImport) ? eSuccess : eOutputFailed;
    const std::string lAmcPath = !pOptions.mMotionOutputPath.empty()
                                     ? pOptions.mMotionOutputPath
                                     : std::filesystem::path(pOptions.mOutputPath).replace_extension(".amc").string();
    return WriteAsfAmc(pOptions.mOutputPath, lAmcPath, lImport) ? eSuccess : eOutputFailed;
}

} // namespace orvasf::tool
