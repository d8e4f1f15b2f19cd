#include "tools/orvasf/ConvertCommand.h"

#include "amc/OrvAmcWriter.h"
#include "bvh/OrvBvhWriter.h"
#include "gltf/OrvGltfWriter.h"
#include "orvsdk/OrvVersion.h"
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
    eBvh,
    eGlb,
    eGltf
};

EFormat FormatOf(const std::string& pPath)
{
    std::string lExtension = std::filesystem::path(pPath).extension().string();
    std::transform(lExtension.begin(), lExtension.end(), lExtension.begin(),
                   [](unsigned char pChar) { return static_cast<char>(std::tolower(pChar)); });
    if (lExtension == ".asf") return EFormat::eAsf;
    if (lExtension == ".bvh") return EFormat::eBvh;
    if (lExtension == ".glb") return EFormat::eGlb;
    if (lExtension == ".gltf") return EFormat::eGltf;
    return EFormat::eUnknown;
}

// The text of a usage problem, or empty when the options fit the files' formats.
std::string UsageProblem(const ConvertCommandOptions& pOptions, EFormat pInput, EFormat pOutput)
{
    const bool lGltfInput = pInput == EFormat::eGlb || pInput == EFormat::eGltf;
    if (pInput == EFormat::eUnknown)
        return "convert reads .asf, .bvh, .glb or .gltf files, not " + pOptions.mImport.mAsfPath;
    if (pOutput == EFormat::eUnknown)
        return "convert writes .asf, .bvh, .glb or .gltf files, not " + pOptions.mOutputPath;
    if (pInput != EFormat::eAsf && !pOptions.mImport.mMotionPath.empty())
        return "--motion goes with an ASF input; a BVH or glTF file holds its motion";
    if (pOutput != EFormat::eAsf && !pOptions.mMotionOutputPath.empty())
        return "--motion-out goes with an ASF output; BVH and glTF files hold their motion";
    if (!lGltfInput && !pOptions.mImport.mGltf.mAnimationName.empty())
        return "--animation goes with a .glb or .gltf input";
    if (pOutput != EFormat::eGltf && !pOptions.mGltfBuffer.empty()) return "--buffer goes with a .gltf output";
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

// Writes the imported skeleton, its skin, a figure and its motion as glTF.
bool WriteGltf(const std::string& pPath, const OrvImportResult& pImport, const ConvertCommandOptions& pOptions,
               EFormat pFormat)
{
    OrvGltfWriteSettings lSettings;
    lSettings.mContainer = pFormat == EFormat::eGlb                ? OrvGltfContainer::eBinary
                           : pOptions.mGltfBuffer == "separate" ? OrvGltfContainer::eSeparate
                                                                : OrvGltfContainer::eEmbedded;
    lSettings.mFramesPerSecond = pImport.mFramesPerSecond;
    lSettings.mFrameCount = pImport.mHasMotion ? FramesToWrite(pImport) : 0;
    lSettings.mAnimationName = pOptions.mImport.mSettings.mTakeName;
    lSettings.mGenerator = "orvasf " ORVSDK_VERSION;
    OrvGltfWriter lWriter;
    const bool lWritten = lWriter.Write(pPath, pImport.mRoot, pImport.mTake, lSettings);
    PrintMessages(lWriter.GetMessages());
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
    pCommand.add_option("input", pOptions.mImport.mAsfPath, "ASF, BVH, glb or glTF file to convert")->required();
    pCommand.add_option("--motion", pOptions.mImport.mMotionPath, "AMC motion of an ASF input")->type_name("FILE.amc");
    pCommand.add_option("-o,--output", pOptions.mOutputPath, "ASF, BVH, glb or glTF file to write")
        ->required()
        ->type_name("OUT.asf|OUT.bvh|OUT.glb|OUT.gltf");
    pCommand.add_option("--animation", pOptions.mImport.mGltf.mAnimationName,
                        "Animation of a glTF input to read (default: the first)")
        ->type_name("NAME");
    pCommand
        .add_option("--buffer", pOptions.mGltfBuffer,
                    "Binary data of a .gltf output: in the file as base64, or in a .bin file beside it "
                    "(default: embedded)")
        ->check(CLI::IsMember({"embedded", "separate"}))
        ->type_name("embedded|separate");
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

    ImportOptions lImportOptions = pOptions.mImport;
    if (pOptions.mFramesPerSecondGiven) lImportOptions.mGltf.mFramesPerSecond = lImportOptions.mSettings.mFramesPerSecond;
    const InputFormat lInputFormat = lInput == EFormat::eBvh   ? InputFormat::eBvh
                                     : lInput == EFormat::eAsf ? InputFormat::eAsf
                                                               : InputFormat::eGltf;
    const OrvImportResult lImport = ImportFiles(lImportOptions, lInputFormat);
    if (!lImport.mSucceeded) return eInputRefused;

    if (lOutput == EFormat::eBvh) return WriteBvh(pOptions.mOutputPath, lImport) ? eSuccess : eOutputFailed;
    if (lOutput != EFormat::eAsf)
        return WriteGltf(pOptions.mOutputPath, lImport, pOptions, lOutput) ? eSuccess : eOutputFailed;
    const std::string lAmcPath = !pOptions.mMotionOutputPath.empty()
                                     ? pOptions.mMotionOutputPath
                                     : std::filesystem::path(pOptions.mOutputPath).replace_extension(".amc").string();
    return WriteAsfAmc(pOptions.mOutputPath, lAmcPath, lImport) ? eSuccess : eOutputFailed;
}

} // namespace orvasf::tool
