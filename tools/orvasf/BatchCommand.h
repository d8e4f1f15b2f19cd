#ifndef ORVASF_TOOLS_ORVASF_BATCHCOMMAND_H
#define ORVASF_TOOLS_ORVASF_BATCHCOMMAND_H

#include "driver/OrvImportDriver.h"

#include <string>

namespace CLI {
class App;
}

namespace orvasf::tool {

// The "batch" subcommand: converts every motion below a folder (see FindBatchWork).
struct BatchCommandOptions
{
    std::string mInputFolder;
    std::string mOutputFolder;
    std::string mFormat;    // "bvh", "glb", "gltf", "csv", "npy" or "asf"
    int mJobs = 0;          // worker threads; 0: one per core
    double mResampleFps = 0.0;  // frame rate of the outputs' motion; 0: each input's own
    bool mForce = false;    // convert even the files whose outputs are up to date
    bool mManifestJson = false;  // write OUTPUT/manifest.json beside manifest.csv
    OrvImportSettings mSettings;  // every import's; each runs on its worker's thread alone
};

// Adds to pCommand (the "batch" subcommand) its folders and the options -o/--output, --to,
// --jobs, --resample, --manifest-json and --force, bound to pOptions. The shared import flags
// are the caller's to add.
void AddBatchOptions(CLI::App& pCommand, BatchCommandOptions& pOptions);

// Converts every file of the batch on pOptions.mJobs threads, one file never stopping another,
// each output written atomically beside its mirrored input path; prints a line per file and a
// summary on standard error and writes OUTPUT/manifest.csv, one row per file (and, when asked,
// OUTPUT/manifest.json: an array of one object per file with the same fields). An output newer
// than all of its inputs is skipped unless pOptions.mForce; temporary files that a killed batch
// left beside the outputs are removed first. On SIGINT or SIGTERM the files in progress are
// finished, no other is started, the manifest is written (the rest "interrupted") and the process
// then ends by that signal; running the batch again converts the rest. Returns eSuccess when every file
// converted (or was up to date); eInputRefused when any failed; eUsageError when the input
// folder is not a folder; eOutputFailed when the manifest could not be written. Costs the
// conversions' sum, spread over the threads.
int RunBatch(const BatchCommandOptions& pOptions);

} // namespace orvasf::tool

#endif
