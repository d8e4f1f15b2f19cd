#ifndef ORVASF_TOOLS_ORVASF_BATCHWORK_H
#define ORVASF_TOOLS_ORVASF_BATCHWORK_H

#include <filesystem>
#include <string>
#include <vector>

namespace orvasf::tool {

// One file of a batch: what to read and where to write it.
struct BatchItem
{
    std::filesystem::path mSkeleton;  // the ASF, or the BVH file
    std::filesystem::path mMotion;    // the AMC of an ASF; empty for a BVH file
    std::filesystem::path mOutput;    // the output's place under the output folder
    std::string mProblem;             // why the item cannot be converted; empty when it can
};

// The work of a batch from pInputFolder to pOutputFolder writing files with pExtension
// (".bvh", ".csv"...): every AMC file below pInputFolder, at any depth, with the ASF of its
// folder (the only one there, or the only one whose name the AMC's name starts with, as 01.asf
// for 01_01.amc), and every BVH file alone. Each output mirrors its input's place: in/07/07_05.amc
// gives out/07/07_05.bvh. An AMC whose folder has no fitting ASF, and a file whose output another
// file already takes, comes with its problem set. pOutputFolder is not searched when it lies
// inside pInputFolder. Sorted by input path, so the order never depends on the file system.
// Costs one directory walk; throws std::filesystem::filesystem_error when a folder cannot be read.
std::vector<BatchItem> FindBatchWork(const std::filesystem::path& pInputFolder,
                                     const std::filesystem::path& pOutputFolder, const std::string& pExtension);

} // namespace orvasf::tool

#endif
