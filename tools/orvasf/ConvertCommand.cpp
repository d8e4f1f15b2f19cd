#include "tools/orvasf/ConvertCommand.h"

#include "driver/OrvExportDriver.h"
#include "gltf/OrvGltfWriter.h"
#include "orvsdk/host/anim/OrvAnimStack.h"
#include "orvsdk/OrvVersion.h"
#include "tools/orvasf/ArgumentValues.h"
#include "tools/orvasf/ExitStatus.h"
#include "tools/orvasf/MessagePrinter.h"
#include "tools/orvasf/ToolImport.h"

#include <CLI/CLI.hpp>

#include <filesystem>

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
    const std::string lExtension = LowerCaseExtension(pPath);
    if (lExtension == ".asf") return EFormat::eAsf;
    if (lExtension == ".bvh") return EFormat::eBvh;
    if (lExtension == ".glb") return EFormat::eGlb;
    if (lExtension == ".gltf") return EFormat::eGltf;
    return EFormat::eUnknown;
}

// The text of a usage problem, or empty when the options fit the files' formats.
std::string UsageProblem(const ConvertCommandOptions& pOptions, EFormat pOutput)
{
    const std::string lInputProblem = InputUsageProblem("convert", pOptions.mImport);
    if (!lInputProblem.empty()) return lInputProblem;
    const EFormat lInput = FormatOf(pOptions.mImport.mAsfPath);
    if (pOutput == EFormat::eUnknown)
        return "convert writes .asf, .bvh, .glb or .gltf files, not " + pOptions.mOutputPath;
    if (pOutput != EFormat::eAsf && !pOptions.mMotionOutputPath.empty())
        return "--motion-out goes with an ASF output; BVH and glTF files hold their motion";
    if (pOutput != EFormat::eGltf && !pOptions.mGltfBuffer.empty()) return "--buffer goes with a .gltf output";
    if (lInput == EFormat::eAsf && pOptions.mImport.mMotionPath.empty() && !pOptions.mMotionOutputPath.empty())
        return "--motion-out needs a motion to write: give the input's --motion";
    return std::string();
}

// The writer settings of pImport's skeleton and motion at pFrames.
OrvGltfWriteSettings GltfSettings(const OrvImportResult& pImport, const OrvExportFrames& pFrames)
{
    OrvGltfWriteSettings lSettings;
    lSettings.mFramesPerSecond = pFrames.mFramesPerSecond;
    lSettings.mFrameCount = pImport.mHasMotion ? pFrames.mFrameCount : 0;
    lSettings.mAnimationName = pImport.mTake->GetName();
    lSettings.mGenerator = "orvasf " ORVSDK_VERSION;
    return lSettings;
}

} // namespace

bool WriteGltfBinary(std::string& pBytes, const std::string& pName, const OrvImportResult& pImport,
                     const OrvExportFrames& pFrames, std::vector<orvsdk::OrvMessage>& pMessages)
{
    OrvGltfWriter lWriter;
    const bool lWritten =
        lWriter.WriteBinary(pBytes, pName, pImport.mRoot, pImport.mTake, GltfSettings(pImport, pFrames));
    pMessages.insert(pMessages.end(), lWriter.GetMessages().begin(), lWriter.GetMessages().end());
    return lWritten;
}

bool WriteGltf(const std::string& pPath, const OrvImportResult& pImport, const OrvExportFrames& pFrames,
               bool pSeparateBuffer, std::vector<orvsdk::OrvMessage>& pMessages)
{
    OrvGltfWriteSettings lSettings = GltfSettings(pImport, pFrames);
    const bool lBinary = FormatOf(pPath) == EFormat::eGlb;
    lSettings.mContainer = lBinary           ? OrvGltfContainer::eBinary
                           : pSeparateBuffer ? OrvGltfContainer::eSeparate
                                             : OrvGltfContainer::eEmbedded;
    OrvGltfWriter lWriter;
    const bool lWritten = lWriter.Write(pPath, pImport.mRoot, pImport.mTake, lSettings);
    pMessages.insert(pMessages.end(), lWriter.GetMessages().begin(), lWriter.GetMessages().end());
    return lWritten;
}

void AddConvertOptions(CLI::App& pCommand, ConvertCommandOptions& pOptions)
{
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
    pCommand
        .add_option("--resample", pOptions.mResampleFps,
                    "Frame rate of the output's motion, evaluated between the input's frames "
                    "(default: the input's own)")
        ->check(CLI::PositiveNumber)
        ->type_name("FPS");
}

int RunConvert(const ConvertCommandOptions& pOptions)
{
    const EFormat lOutput = FormatOf(pOptions.mOutputPath);
    const std::string lProblem = UsageProblem(pOptions, lOutput);
    if (!lProblem.empty())
    {
        PrintToolError(lProblem);
        return eUsageError;
    }

    const OrvImportResult lImport = ImportInput(pOptions.mImport);
    if (!lImport.mSucceeded) return eInputRefused;

    const OrvExportFrames lFrames = OrvFramesAt(lImport, pOptions.mResampleFps);
    std::vector<orvsdk::OrvMessage> lMessages;
    bool lWritten = false;
    if (lOutput == EFormat::eGlb || lOutput == EFormat::eGltf)
        lWritten = WriteGltf(pOptions.mOutputPath, lImport, lFrames, pOptions.mGltfBuffer == "separate", lMessages);
    else if (lOutput == EFormat::eBvh)
        lWritten = OrvWriteBvh(pOptions.mOutputPath, lImport, lFrames, lMessages);
    else
    {
        const std::string lAmcPath =
            !pOptions.mMotionOutputPath.empty()
                ? pOptions.mMotionOutputPath
                : std::filesystem::path(pOptions.mOutputPath).replace_extension(".amc").string();
        lWritten = OrvWriteAsfAmc(pOptions.mOutputPath, lAmcPath, lImport, lFrames, lMessages);
    }
    PrintMessages(lMessages);
    return lWritten ? eSuccess : eOutputFailed;
}

} // namespace orvasf::tool
