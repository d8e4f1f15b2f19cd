#include "tools/orvasf/ViewCommand.h"

#include "driver/OrvExportDriver.h"
#include "tools/orvasf/ArgumentValues.h"
#include "tools/orvasf/ConvertCommand.h"
#include "tools/orvasf/ExitStatus.h"
#include "tools/orvasf/MessagePrinter.h"
#include "tools/orvasf/OutputText.h"
#include "tools/orvasf/PlayerPage.h"
#include "tools/orvasf/ToolImport.h"

#include <CLI/CLI.hpp>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <cstdint>
#include <filesystem>

namespace orvasf::tool {

namespace {

bool IsHtmlPath(const std::string& pPath)
{
    const std::string lExtension = LowerCaseExtension(pPath);
    return lExtension == ".html" || lExtension == ".htm";
}

// pBytes as base64 text (RFC 4648, with padding).
std::string Base64(const std::string& pBytes)
{
    static const char kDigits[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::string lText;
    lText.reserve((pBytes.size() + 2) / 3 * 4);
    for (std::size_t lAt = 0; lAt < pBytes.size(); lAt += 3)
    {
        const std::size_t lCount = std::min<std::size_t>(3, pBytes.size() - lAt);
        uint32_t lGroup = 0;
        for (std::size_t lByte = 0; lByte < 3; ++lByte)
            lGroup = (lGroup << 8) | (lByte < lCount ? static_cast<unsigned char>(pBytes[lAt + lByte]) : 0u);
        for (std::size_t lDigit = 0; lDigit < 4; ++lDigit)
            lText += lDigit <= lCount ? kDigits[(lGroup >> (18 - 6 * lDigit)) & 0x3F] : '=';
    }
    return lText;
}

// The page's settings as JSON that can sit inside a <script> element: every '<' escaped, so no
// file name ends the element.
std::string PageSettings(const std::string& pSourcePath, const OrvExportFrames& pFrames, int pFrameCount)
{
    const nlohmann::json lSettings = {{"source", std::filesystem::path(pSourcePath).filename().string()},
                                      {"framesPerSecond", pFrames.mFramesPerSecond},
                                      {"frameCount", pFrameCount}};
    std::string lText;
    for (const char lChar : lSettings.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace))
        lText += lChar == '<' ? std::string("\\u003c") : std::string(1, lChar);
    return lText;
}

// pPage with the first pPlaceholder replaced by pValue.
void Fill(std::string& pPage, const std::string& pPlaceholder, const std::string& pValue)
{
    pPage.replace(pPage.find(pPlaceholder), pPlaceholder.size(), pValue);
}

} // namespace

void AddViewOptions(CLI::App& pCommand, ViewCommandOptions& pOptions)
{
    pCommand.add_option("--animation", pOptions.mImport.mGltf.mAnimationName,
                        "Animation of a glTF input to show (default: the first)")
        ->type_name("NAME");
    pCommand.add_option("-o,--output", pOptions.mOutputPath, "HTML page to write")->required()->type_name("OUT.html");
}

int RunView(const ViewCommandOptions& pOptions)
{
    std::string lProblem = InputUsageProblem("view", pOptions.mImport);
    if (lProblem.empty() && !IsHtmlPath(pOptions.mOutputPath))
        lProblem = "view writes an .html page, not " + pOptions.mOutputPath;
    std::string lPage = PlayerPageTemplate();
    if (lProblem.empty() && lPage.empty())
        lProblem = "this orvasf was built without the motion player: node_modules/three was missing when the build "
                   "was configured (scripts/setup.sh installs it; configure and build again)";
    if (!lProblem.empty())
    {
        PrintToolError(lProblem);
        return eUsageError;
    }

    const OrvImportResult lImport = ImportInput(pOptions.mImport);
    if (!lImport.mSucceeded) return eInputRefused;
    const OrvExportFrames lFrames = OrvFramesAt(lImport, 0.0);
    std::string lGlb;
    std::vector<orvsdk::OrvMessage> lMessages;
    const bool lBuilt = WriteGltfBinary(lGlb, pOptions.mOutputPath, lImport, lFrames, lMessages);
    PrintMessages(lMessages);
    if (!lBuilt) return eOutputFailed;

    const int lFrameCount = lImport.mHasMotion ? lFrames.mFrameCount : 1;
    Fill(lPage, "@ORV_CONFIG@", PageSettings(pOptions.mImport.mAsfPath, lFrames, lFrameCount));
    Fill(lPage, "@ORV_GLB@", Base64(lGlb));
    OutputText lOutput("HTML");
    if (!lOutput.Open(pOptions.mOutputPath)) return eOutputFailed;
    lOutput.Write(lPage);
    return lOutput.Close() ? eSuccess : eOutputFailed;
}

} // namespace orvasf::tool
