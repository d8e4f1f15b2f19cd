// The orvasf command line: parses the arguments with CLI11 and runs one subcommand.
#include "tools/orvasf/ArgumentValues.h"
#include "tools/orvasf/BatchCommand.h"
#include "tools/orvasf/Commands.h"
#include "tools/orvasf/ConvertCommand.h"
#include "tools/orvasf/ExitStatus.h"
#include "tools/orvasf/OutputText.h"
#include "tools/orvasf/PlotCommand.h"
#include "tools/orvasf/RenderCommand.h"
#include "tools/orvasf/ViewCommand.h"

#include "orvsdk/OrvVersion.h"

#include <CLI/CLI.hpp>

#include <string>
#include <vector>

namespace {

using namespace orvasf;
using namespace orvasf::tool;

const char* const kExitStatusFooter =
    "Exit status: 0 success; 1 an input file was refused (messages FILE:LINE: error: TEXT on "
    "standard error); 2 usage error; 3 an output file could not be written.";

// Refuses a value that ParseFrameList does not accept.
const CLI::Validator kFrameListValidator(
    [](std::string& pText) {
        return ParseFrameList(pText) ? std::string() : "not a frame list such as 0,10,20-30: " + pText;
    },
    "LIST");

// Refuses a value that ParseScale does not accept.
const CLI::Validator kScaleValidator(
    [](std::string& pText) { return ParseScale(pText) ? std::string() : "not a scale X,Y,Z: " + pText; }, "X,Y,Z");

const std::vector<std::string> kRotationFilterNames{"none", "gimbal", "unroll"};

// The rotation filter of a name in kRotationFilterNames, whose index is the filter's code.
OrvRotationFilter RotationFilterNamed(const std::string& pName)
{
    int lCode = 0;
    while (kRotationFilterNames[lCode] != pName) ++lCode;
    return static_cast<OrvRotationFilter>(lCode);
}

// The options every command that imports shares, bound to pOptions. The motion file is added
// by the caller, as an option or a positional argument.
void AddImportFlags(CLI::App& pCommand, OrvImportSettings& pOptions)
{
    pCommand.add_option("--fps", pOptions.mFramesPerSecond, "Frames per second of the motion")
        ->check(CLI::PositiveNumber)
        ->capture_default_str();
    pCommand.add_flag("--remove-dummy", pOptions.mRemoveDummy, "Remove the bones without degrees of freedom");
    pCommand.add_flag("--rotation-offset", pOptions.mUseRotationOffset,
                      "Carry each bone's rest translation in its node's rotation offset");
    pCommand.add_flag("--pre-rotation", pOptions.mUsePreRotation,
                      "Carry each bone's rest rotation in its node's pre-rotation");
    pCommand.add_flag("--limits", pOptions.mUseLimits, "Give the nodes the bones' limits");
    pCommand
        .add_option_function<std::string>(
            "--rotation-filter",
            [&pOptions](const std::string& pName) { pOptions.mRotationFilter = RotationFilterNamed(pName); },
            "Filter run on the rotation curves (default: none)")
        ->check(CLI::IsMember(kRotationFilterNames))
        ->type_name("NAME");
    pCommand.add_flag("--reduce-keys", pOptions.mReduceKeys, "Run the constant-key reducer on the curves");
    pCommand.add_option("--take", pOptions.mTakeName, "Name of the animation stack")->capture_default_str();
    pCommand.add_option("--threads", pOptions.mThreads, "Threads sampling an AMC motion (0: one per core)")
        ->check(CLI::NonNegativeNumber)
        ->capture_default_str();
}

// The input (ASF, BVH or glTF, described by pInputHelp), its --motion and the import flags of a
// command that reads any input. For a glTF input --fps samples the animation at that rate, which
// otherwise keeps its keyframe times.
void AddInputOptions(CLI::App& pCommand, ImportOptions& pOptions, const char* pInputHelp)
{
    pCommand.add_option("input", pOptions.mAsfPath, pInputHelp)->required();
    pCommand.add_option("--motion", pOptions.mMotionPath, "AMC motion of an ASF input")->type_name("FILE.amc");
    AddImportFlags(pCommand, pOptions.mSettings);
    pCommand.final_callback([&pCommand, &pOptions]() {
        if (pCommand.count("--fps") > 0) pOptions.mGltf.mFramesPerSecond = pOptions.mSettings.mFramesPerSecond;
    });
}

CLI::App* AddCommand(CLI::App& pApp, const char* pName, const char* pDescription)
{
    CLI::App* lCommand = pApp.add_subcommand(pName, pDescription);
    lCommand->footer(kExitStatusFooter);
    return lCommand;
}

// The whole parse-and-run; an exit status.
int Run(int pArgc, char** pArgv)
{
    CLI::App lApp("Reads, converts and writes Acclaim ASF skeletons and AMC motions.", "orvasf");
    lApp.footer(kExitStatusFooter);
    lApp.set_version_flag("--version", "orvasf " ORVSDK_VERSION);
    lApp.require_subcommand(1);

    std::vector<std::string> lCheckPaths;
    CLI::App* lCheck = AddCommand(lApp, "check", "Read skeleton files and print a summary line per file");
    lCheck->add_option("files", lCheckPaths, "ASF files")->required();

    std::string lTreePath;
    CLI::App* lTree = AddCommand(lApp, "tree", "Print the bone tree with DOFs, lengths and limits");
    lTree->add_option("file", lTreePath, "ASF file")->required();

    ImportCommandOptions lImport;
    CLI::App* lImportCommand = AddCommand(lApp, "import", "Import a skeleton (and motion) into a host scene, as JSON");
    lImportCommand->add_option("file", lImport.mImport.mAsfPath, "ASF file")->required();
    lImportCommand->add_option("--motion", lImport.mImport.mMotionPath, "AMC motion file")->type_name("FILE.amc");
    AddImportFlags(*lImportCommand, lImport.mImport.mSettings);
    lImportCommand->add_flag("--summary", lImport.mSummary, "Print counts and timings instead of the JSON");
    lImportCommand->add_option("-o,--output", lImport.mOutputPath, "JSON file to write (default: standard output)")
        ->type_name("OUT.json");

    PoseCommandOptions lPose;
    CLI::App* lPoseCommand = AddCommand(lApp, "pose", "Print world joint positions (cm) as CSV frame,joint,x,y,z");
    lPoseCommand->add_option("file", lPose.mImport.mAsfPath, "ASF file")->required();
    lPoseCommand->add_option("motion", lPose.mImport.mMotionPath, "AMC motion file")->required();
    lPoseCommand->add_option("--frames", lPose.mFrames, "0-based frames, e.g. 0,10,20-30 (default: all)")
        ->check(kFrameListValidator);
    AddImportFlags(*lPoseCommand, lPose.mImport.mSettings);
    lPoseCommand->add_option("--decimals", lPose.mDecimals, "Digits after the point of every coordinate")
        ->check(CLI::Range(0, 17))
        ->capture_default_str();
    lPoseCommand->add_option("-o,--output", lPose.mOutputPath, "CSV file to write (default: standard output)")
        ->type_name("OUT.csv");

    ExportCommandOptions lExport;
    CLI::App* lExportCommand = AddCommand(lApp, "export", "Build host nodes from a skeleton and export them as ASF");
    lExportCommand->add_option("file", lExport.mAsfPath, "ASF file")->required();
    lExportCommand->add_option("-o,--output", lExport.mOutputPath, "ASF file to write")->required()->type_name("OUT.asf");
    lExportCommand->add_flag("--translation-dofs", lExport.mTranslationDofs, "Give every bone tx ty tz as well");
    lExportCommand->add_option("--scale", lExport.mScale, "Scale of the bone vectors")
        ->check(kScaleValidator)
        ->capture_default_str();
    lExportCommand->add_flag("--local-transform", lExport.mUseLocalTransform,
                             "Export the rest pose from the nodes' local transforms");

    FormatCommandOptions lFormat;
    CLI::App* lFormatCommand = AddCommand(lApp, "format", "Read a skeleton file and write it again");
    lFormatCommand->add_option("file", lFormat.mAsfPath, "ASF file")->required();
    lFormatCommand->add_option("-o,--output", lFormat.mOutputPath, "ASF file to write")->required()->type_name("OUT.asf");

    ConvertCommandOptions lConvert;
    CLI::App* lConvertCommand =
        AddCommand(lApp, "convert", "Convert between ASF/AMC, BVH and glTF 2.0 through a host scene");
    AddConvertOptions(*lConvertCommand, lConvert);
    AddInputOptions(*lConvertCommand, lConvert.mImport, "ASF, BVH, glb or glTF file to convert");

    ViewCommandOptions lView;
    CLI::App* lViewCommand =
        AddCommand(lApp, "view", "Write one HTML page that plays the motion in a browser, offline");
    AddViewOptions(*lViewCommand, lView);
    AddInputOptions(*lViewCommand, lView.mImport, "ASF, BVH, glb or glTF file to show");

    BatchCommandOptions lBatch;
    CLI::App* lBatchCommand = AddCommand(lApp, "batch", "Convert every AMC and BVH file below a folder, in parallel");
    AddBatchOptions(*lBatchCommand, lBatch);
    AddImportFlags(*lBatchCommand, lBatch.mSettings);

    RenderCommandOptions lRender;
    CLI::App* lRenderCommand = AddCommand(lApp, "render", "Draw stick figures of chosen frames as an SVG film strip");
    AddRenderOptions(*lRenderCommand, lRender);
    lRenderCommand->get_option("--frames")->check(kFrameListValidator);
    AddInputOptions(*lRenderCommand, lRender.mImport, "ASF, BVH, glb or glTF file to draw");

    PlotCommandOptions lPlot;
    CLI::App* lPlotCommand = AddCommand(lApp, "plot", "Draw a joint's rotation or translation keys against time as SVG");
    AddPlotOptions(*lPlotCommand, lPlot);
    AddInputOptions(*lPlotCommand, lPlot.mImport, "ASF, BVH, glb or glTF file whose curves are drawn");

    try
    {
        lApp.parse(pArgc, pArgv);
    }
    catch (const CLI::ParseError& lError)
    {
        // Help and version requests end the parse as well, with status 0.
        return lApp.exit(lError) == 0 ? eSuccess : eUsageError;
    }

    if (lCheck->parsed()) return RunCheck(lCheckPaths);
    if (lTree->parsed()) return RunTree(lTreePath);
    if (lImportCommand->parsed()) return RunImport(lImport);
    if (lPoseCommand->parsed()) return RunPose(lPose);
    if (lExportCommand->parsed()) return RunExport(lExport);
    if (lConvertCommand->parsed()) return RunConvert(lConvert);
    if (lBatchCommand->parsed()) return RunBatch(lBatch);
    if (lRenderCommand->parsed()) return RunRender(lRender);
    if (lPlotCommand->parsed()) return RunPlot(lPlot);
    if (lViewCommand->parsed()) return RunView(lView);
    return RunFormat(lFormat);
}

} // namespace

int main(int pArgc, char** pArgv)
{
    const int lStatus = Run(pArgc, pArgv);
    // Text printed on standard output counts as output: losing it is an output failure.
    if (!FlushStandardOutput()) return eOutputFailed;
    return lStatus;
}
