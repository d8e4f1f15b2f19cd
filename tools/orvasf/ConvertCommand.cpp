#include "tools/orvasf/ConvertCommand.h"

#include "driver/OrvExportDriver.h"
#include "tools/orvasf/ExitStatus.h"
#include "tools/orvasf/MessagePrinter.h"
#include "tools/orvasf/ToolImport.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <cctype>
#include <filesystem>

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

    std::vector<orvsdk::OrvMessage> lMessages;
    bool lWritten = false;
    if (lOutput == EFormat::eBvh)
        lWritten = OrvWriteBvh(pOptions.mOutputPath, lImport, OrvAllFrames(lImport), lMessages);
    else
    {
        const std::string lAmcPath =
            !pOptions.mMotionOutputPath.empty()
                ? pOptions.mMotionOutputPath
                : std::filesystem::path(pOptions.mOutputPath).replace_extension(".amc").string();
        lWritten = OrvWriteAsfAmc(pOptions.mOutputPath, lAmcPath, lImport, OrvAllFrames(lImport), lMessages);
    }
    PrintMessages(lMessages);
    return lWritten ? eSuccess : eOutputFailed;
}

} // namespace orvasf::tool
