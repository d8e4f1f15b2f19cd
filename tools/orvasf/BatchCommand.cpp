#include "tools/orvasf/BatchCommand.h"

#include "driver/OrvExportDriver.h"
#include "orvsdk/host/io/OrvNumberText.h"
#include "orvsdk/host/io/OrvTextFile.h"
#include "orvsdk/host/scene/OrvPoseEvaluator.h"
#include "tools/orvasf/BatchWork.h"
#include "tools/orvasf/CommandOptions.h"
#include "tools/orvasf/ConvertCommand.h"
#include "tools/orvasf/ExitStatus.h"
#include "tools/orvasf/InterruptWatch.h"
#include "tools/orvasf/MessagePrinter.h"
#include "tools/orvasf/NpyWriter.h"
#include "tools/orvasf/OutputText.h"
#include "tools/orvasf/PoseCsvWriter.h"
#include "tools/orvasf/ProgressReporter.h"

#include <CLI/CLI.hpp>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <atomic>
#include <charconv>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <map>
#include <mutex>
#include <set>
#include <thread>

namespace orvasf::tool {

namespace fs = std::filesystem;

namespace {

// What became of one file of the batch: a manifest row.
struct BatchOutcome
{
    std::string mStatus;  // "ok", "warnings", "failed", "skipped" (up to date) or "interrupted" (not started)
    int mFrames = 0;
    double mFramesPerSecond = 0.0;
    int mBones = 0;
    std::string mFirstMessage;  // "FILE:LINE: warning|error: TEXT"; empty without messages
};

// The files an item writes: an ASF output comes with its AMC beside it, an NPY output with its
// JSON description.
std::vector<fs::path> OutputsOf(const BatchItem& pItem, const std::string& pFormat)
{
    std::vector<fs::path> lOutputs{pItem.mOutput};
    if (pFormat == "asf") lOutputs.push_back(fs::path(pItem.mOutput).replace_extension(".amc"));
    if (pFormat == "npy") lOutputs.push_back(fs::path(pItem.mOutput).replace_extension(".json"));
    return lOutputs;
}

// True when every output exists and is newer than every input.
bool IsUpToDate(const BatchItem& pItem, const std::string& pFormat)
{
    std::error_code lError;
    fs::file_time_type lNewestInput = fs::file_time_type::min();
    for (const fs::path& lInput : {pItem.mSkeleton, pItem.mMotion})
    {
        if (lInput.empty()) continue;
        lNewestInput = std::max(lNewestInput, fs::last_write_time(lInput, lError));
        if (lError) return false;
    }
    for (const fs::path& lOutput : OutputsOf(pItem, pFormat))
    {
        const fs::file_time_type lWritten = fs::last_write_time(lOutput, lError);
        if (lError || lWritten <= lNewestInput) return false;
    }
    return true;
}

// Writes pFrames as "pose" prints them by default.
bool WritePoseCsvFile(const std::string& pPath, const OrvImportResult& pImport, const OrvExportFrames& pFrames)
{
    OutputText lOutput("CSV");
    if (!lOutput.Open(pPath)) return false;
    const std::vector<FrameRange> lFrames{{0, pFrames.mFrameCount - 1}};
    const bool lWritten = WritePoseCsv(orvsdk::OrvPoseEvaluator(pImport.mRoot, pImport.mTake), lFrames,
                                       pFrames.mFramesPerSecond, PoseCommandOptions().mDecimals, lOutput);
    return lOutput.Close() && lWritten;
}

// Writes pFrames of the imported motion as pFormat at pItem's output, appending the writers'
// messages.
bool WriteOutput(const BatchItem& pItem, const std::string& pFormat, const OrvImportResult& pImport,
                 const OrvExportFrames& pFrames, std::vector<orvsdk::OrvMessage>& pMessages)
{
    std::error_code lError;
    fs::create_directories(pItem.mOutput.parent_path(), lError);
    const std::string lPath = pItem.mOutput.string();
    if (pFormat == "bvh") return OrvWriteBvh(lPath, pImport, pFrames, pMessages);
    if (pFormat == "asf") return OrvWriteAsfAmc(lPath, OutputsOf(pItem, pFormat)[1].string(), pImport, pFrames, pMessages);
    if (pFormat == "csv") return WritePoseCsvFile(lPath, pImport, pFrames);
    if (pFormat == "npy") return WritePositionArray(lPath, OutputsOf(pItem, pFormat)[1].string(), pImport, pFrames);
    return WriteGltf(lPath, pImport, pFrames, false, pMessages);
}

// Imports and writes one item that can be converted; its messages are appended to pMessages.
BatchOutcome Convert(const BatchItem& pItem, const BatchCommandOptions& pOptions,
                     std::vector<orvsdk::OrvMessage>& pMessages)
{
    OrvImportSettings lSettings = pOptions.mSettings;
    lSettings.mThreads = 1;  // the batch's workers already fill the cores
    const OrvImportResult lImport = pItem.mMotion.empty()
                                        ? OrvImportBvh(pItem.mSkeleton.string(), lSettings)
                                        : OrvImportAsf(pItem.mSkeleton.string(), pItem.mMotion.string(), lSettings);
    pMessages = lImport.mMessages;
    BatchOutcome lOutcome;
    lOutcome.mFramesPerSecond = lImport.mFramesPerSecond;
    lOutcome.mBones = lImport.mJointCount;
    lOutcome.mStatus = "failed";
    if (!lImport.mSucceeded) return lOutcome;
    const OrvExportFrames lFrames = OrvFramesAt(lImport, pOptions.mResampleFps);
    if (!WriteOutput(pItem, pOptions.mFormat, lImport, lFrames, pMessages)) return lOutcome;
    lOutcome.mStatus = pMessages.empty() ? "ok" : "warnings";
    lOutcome.mFrames = lFrames.mFrameCount;
    lOutcome.mFramesPerSecond = lFrames.mFramesPerSecond;
    return lOutcome;
}

// What becomes of one item: refused for its problem, skipped as up to date, or converted.
BatchOutcome Process(const BatchItem& pItem, const BatchCommandOptions& pOptions,
                     std::vector<orvsdk::OrvMessage>& pMessages)
{
    BatchOutcome lOutcome;
    if (!pItem.mProblem.empty())
    {
        const fs::path& lInput = pItem.mMotion.empty() ? pItem.mSkeleton : pItem.mMotion;
        pMessages.push_back({orvsdk::OrvMessage::eError, lInput.string(), 0, pItem.mProblem});
        lOutcome.mStatus = "failed";
    }
    else if (!pOptions.mForce && IsUpToDate(pItem, pOptions.mFormat))
        lOutcome.mStatus = "skipped";
    else
        lOutcome = Convert(pItem, pOptions, pMessages);
    if (!pMessages.empty()) lOutcome.mFirstMessage = orvsdk::OrvFormatMessage(pMessages.front());
    return lOutcome;
}

// The files each item reads, relative to the input folder, as the manifest names them.
std::string InputName(const fs::path& pPath, const fs::path& pFolder)
{
    return pPath.empty() ? std::string() : pPath.lexically_relative(pFolder).generic_string();
}

// pValue to 6 significant digits: a BVH frame time of 0.008333333 s gives 120 frames per
// second, not 120.0000048.
double Rounded(double pValue)
{
    std::string lText;
    orvsdk::OrvAppendGeneral(lText, pValue, 6);
    double lValue = pValue;
    std::from_chars(lText.data(), lText.data() + lText.size(), lValue);
    return lValue;
}

// One file's manifest record, its fields in the order of the CSV columns.
nlohmann::ordered_json ManifestRecord(const BatchItem& pItem, const BatchOutcome& pOutcome,
                                      const BatchCommandOptions& pOptions)
{
    const bool lConverted = pOutcome.mFrames > 0;
    return {{"skeleton", InputName(pItem.mSkeleton, pOptions.mInputFolder)},
            {"motion", InputName(pItem.mMotion, pOptions.mInputFolder)},
            {"output", pItem.mOutput.lexically_relative(pOptions.mOutputFolder).generic_string()},
            {"frames", pOutcome.mFrames},
            {"fps", Rounded(pOutcome.mFramesPerSecond)},
            {"duration", Rounded(lConverted ? pOutcome.mFrames / pOutcome.mFramesPerSecond : 0.0)},
            {"bones", pOutcome.mBones},
            {"status", pOutcome.mStatus},
            {"message", pOutcome.mFirstMessage}};
}

// The record as a CSV row: texts as fields, numbers to 6 significant digits.
std::string CsvRow(const nlohmann::ordered_json& pRecord)
{
    std::string lRow;
    for (const auto& lField : pRecord.items())
    {
        if (lField.key() != "skeleton") lRow += ',';
        if (lField.value().is_string())
            AppendCsvField(lRow, lField.value().get_ref<const std::string&>());
        else
            orvsdk::OrvAppendGeneral(lRow, lField.value().get<double>(), 6);
    }
    return lRow + '\n';
}

// Writes OUTPUT/manifest.csv and, when asked, OUTPUT/manifest.json (an array of the records).
bool WriteManifest(const std::vector<BatchItem>& pItems, const std::vector<BatchOutcome>& pOutcomes,
                   const BatchCommandOptions& pOptions)
{
    nlohmann::ordered_json lRecords = nlohmann::ordered_json::array();
    for (size_t i = 0; i < pItems.size(); ++i) lRecords.push_back(ManifestRecord(pItems[i], pOutcomes[i], pOptions));
    OutputText lCsv("CSV");
    if (!lCsv.Open((fs::path(pOptions.mOutputFolder) / "manifest.csv").string())) return false;
    bool lWritten = lCsv.Write("skeleton,motion,output,frames,fps,duration,bones,status,message\n");
    for (const nlohmann::ordered_json& lRecord : lRecords) lWritten = lWritten && lCsv.Write(CsvRow(lRecord));
    if (!lCsv.Close() || !lWritten) return false;
    if (!pOptions.mManifestJson) return true;
    OutputText lJson("JSON");
    if (!lJson.Open((fs::path(pOptions.mOutputFolder) / "manifest.json").string())) return false;
    lWritten = lJson.Write(lRecords.dump(2, ' ', false, nlohmann::ordered_json::error_handler_t::replace) + "\n");
    return lJson.Close() && lWritten;
}

// How far a batch has come, counted as its items finish.
struct BatchProgress
{
    size_t mDone = 0;
    size_t mTotal = 0;
    long long mFrames = 0;  // frames written so far
    size_t mFailed = 0;
    std::chrono::steady_clock::time_point mStart = std::chrono::steady_clock::now();
};

// "batch: 12/54 files, 45200 frames/s, 3 s left, 1 failed": the time left assumes the files
// still to come take as long as those done.
std::string ProgressText(const BatchProgress& pProgress)
{
    const double lSeconds =
        std::chrono::duration<double>(std::chrono::steady_clock::now() - pProgress.mStart).count();
    const double lLeft = lSeconds / static_cast<double>(pProgress.mDone) *
                         static_cast<double>(pProgress.mTotal - pProgress.mDone);
    return "batch: " + std::to_string(pProgress.mDone) + "/" + std::to_string(pProgress.mTotal) + " files, " +
           std::to_string(std::llround(lSeconds > 0.0 ? static_cast<double>(pProgress.mFrames) / lSeconds : 0.0)) +
           " frames/s, " + std::to_string(std::llround(lLeft)) + " s left, " + std::to_string(pProgress.mFailed) +
           " failed";
}

// Reports one finished item: its messages, then the progress line on a terminal, or a plain
// line naming the item elsewhere.
void ReportItem(const BatchItem& pItem, const BatchOutcome& pOutcome, const std::vector<orvsdk::OrvMessage>& pMessages,
                BatchProgress& pProgress, ProgressReporter& pReporter)
{
    ++pProgress.mDone;
    pProgress.mFrames += pOutcome.mFrames;
    pProgress.mFailed += pOutcome.mStatus == "failed";
    if (!pMessages.empty()) pReporter.Finish();
    PrintMessages(pMessages);
    if (pReporter.IsEnabled())
        pReporter.Show(ProgressText(pProgress));
    else
        std::fprintf(stderr, "[%zu/%zu] %s: %s\n", pProgress.mDone, pProgress.mTotal, pItem.mOutput.string().c_str(),
                     pOutcome.mStatus.c_str());
}

// Removes the temporary files that a batch killed while writing left beside the outputs of
// pItems (and of the manifest), each output folder listed once; prints how many it removed.
void RemoveLeftoverTemporaries(const std::vector<BatchItem>& pItems, const BatchCommandOptions& pOptions)
{
    std::map<fs::path, std::set<fs::path>> lOutputsByFolder;
    const fs::path lFolder = pOptions.mOutputFolder;
    lOutputsByFolder[lFolder] = {lFolder / "manifest.csv", lFolder / "manifest.json"};
    for (const BatchItem& lItem : pItems)
        for (const fs::path& lOutput : OutputsOf(lItem, pOptions.mFormat))
            lOutputsByFolder[lOutput.parent_path()].insert(lOutput);
    size_t lRemoved = 0;
    std::error_code lError;
    for (const auto& [lOutputFolder, lOutputs] : lOutputsByFolder)
        for (const auto& lEntry : fs::directory_iterator(lOutputFolder, lError))
        {
            const std::string lTarget = orvsdk::OrvTextFile::TargetOfTemporary(lEntry.path().string());
            if (!lTarget.empty() && lOutputs.count(lTarget) > 0) lRemoved += fs::remove(lEntry.path(), lError);
        }
    if (lRemoved > 0)
        std::fprintf(stderr, "batch: removed %zu temporary file(s) left by an interrupted batch\n", lRemoved);
}

// Runs the items on pJobs threads, each taking the next item not yet taken until pWatch asks to
// stop, and reports each finished item, one at a time. Items not started stay "interrupted".
std::vector<BatchOutcome> ConvertAll(const std::vector<BatchItem>& pItems, const BatchCommandOptions& pOptions,
                                     int pJobs, const InterruptWatch& pWatch)
{
    std::vector<BatchOutcome> lOutcomes(pItems.size());
    for (BatchOutcome& lOutcome : lOutcomes) lOutcome.mStatus = "interrupted";
    std::atomic<size_t> lNext{0};
    std::mutex lReporting;
    BatchProgress lProgress;
    lProgress.mTotal = pItems.size();
    ProgressReporter lReporter("batch");
    const auto lWork = [&]() {
        for (size_t i = lNext++; i < pItems.size() && pWatch.Signal() == 0; i = lNext++)
        {
            std::vector<orvsdk::OrvMessage> lMessages;
            lOutcomes[i] = Process(pItems[i], pOptions, lMessages);
            const std::lock_guard<std::mutex> lLock(lReporting);
            ReportItem(pItems[i], lOutcomes[i], lMessages, lProgress, lReporter);
        }
    };
    std::vector<std::thread> lWorkers;
    for (int i = 1; i < pJobs; ++i) lWorkers.emplace_back(lWork);
    lWork();
    for (std::thread& lWorker : lWorkers) lWorker.join();
    return lOutcomes;
}

// pFolder without a final separator, so that paths below it are relative to it lexically:
// "in/" and "in" both give "in".
std::string FolderPath(const std::string& pFolder)
{
    return (fs::path(pFolder) / "").lexically_normal().parent_path().string();
}

} // namespace

void AddBatchOptions(CLI::App& pCommand, BatchCommandOptions& pOptions)
{
    pCommand.add_option("input", pOptions.mInputFolder, "Folder searched for AMC (with their ASF) and BVH files")
        ->required()
        ->check(CLI::ExistingDirectory);
    pCommand.add_option("-o,--output", pOptions.mOutputFolder, "Folder the outputs and manifest.csv are written to")
        ->required()
        ->type_name("DIR");
    pCommand.add_option("--to", pOptions.mFormat, "Format of the outputs")
        ->required()
        ->check(CLI::IsMember({"bvh", "glb", "gltf", "csv", "npy", "asf"}))
        ->type_name("bvh|glb|gltf|csv|npy|asf");
    pCommand.add_option("--jobs", pOptions.mJobs, "Files converted at once (default: one per core)")
        ->check(CLI::PositiveNumber);
    pCommand
        .add_option("--resample", pOptions.mResampleFps,
                    "Frame rate of the outputs' motion, evaluated between the inputs' frames (default: each input's own)")
        ->check(CLI::PositiveNumber)
        ->type_name("FPS");
    pCommand.add_flag("--manifest-json", pOptions.mManifestJson, "Write the manifest as manifest.json too");
    pCommand.add_flag("--force", pOptions.mForce, "Convert even the files whose outputs are newer than their inputs");
}

int RunBatch(const BatchCommandOptions& pOptions)
{
    BatchCommandOptions lOptions = pOptions;
    lOptions.mInputFolder = FolderPath(pOptions.mInputFolder);
    lOptions.mOutputFolder = FolderPath(pOptions.mOutputFolder);
    std::vector<BatchItem> lItems;
    try
    {
        lItems = FindBatchWork(lOptions.mInputFolder, lOptions.mOutputFolder, "." + lOptions.mFormat);
        fs::create_directories(lOptions.mOutputFolder);
    }
    catch (const fs::filesystem_error& lError)
    {
        PrintToolError(lError.what());
        return eOutputFailed;
    }
    RemoveLeftoverTemporaries(lItems, lOptions);
    const int lJobs = lOptions.mJobs > 0 ? lOptions.mJobs : static_cast<int>(std::max(1u, std::thread::hardware_concurrency()));
    InterruptWatch lWatch;
    const std::vector<BatchOutcome> lOutcomes = ConvertAll(lItems, lOptions, lJobs, lWatch);
    const auto lCount = [&lOutcomes](const char* pStatus) {
        return std::count_if(lOutcomes.begin(), lOutcomes.end(),
                             [pStatus](const BatchOutcome& pOutcome) { return pOutcome.mStatus == pStatus; });
    };
    std::fprintf(stderr, "batch: %zu files: %td ok, %td with warnings, %td up to date, %td failed\n", lItems.size(),
                 lCount("ok"), lCount("warnings"), lCount("skipped"), lCount("failed"));
    if (lWatch.Signal() != 0)
        std::fprintf(stderr, "batch: interrupted by %s: %td files not started; running the batch again converts them\n",
                     lWatch.Signal() == SIGINT ? "SIGINT" : "SIGTERM", lCount("interrupted"));
    const bool lManifestWritten = WriteManifest(lItems, lOutcomes, lOptions);
    lWatch.EndAsSignalled();
    if (!lManifestWritten) return eOutputFailed;
    return lCount("failed") > 0 ? eInputRefused : eSuccess;
}

} // namespace orvasf::tool
