#ifndef ORVASF_TOOLS_ORVASF_CONVERTCOMMAND_H
#define ORVASF_TOOLS_ORVASF_CONVERTCOMMAND_H

#include "tools/orvasf/CommandOptions.h"

#include "driver/OrvExportDriver.h"
#include "driver/OrvImportDriver.h"

#include <string>
#include <vector>

namespace CLI {
class App;
}

namespace orvasf::tool {

// The "convert" subcommand. Formats follow the file extensions (".asf", ".bvh", ".glb" or
// ".gltf", any case): any of ASF (+ AMC), BVH and glTF to any of them, always through a host
// scene, so that every conversion runs a reader into the host and a writer out of it.
struct ConvertCommandOptions
{
    // mAsfPath is the input file, ASF, BVH or glTF; mMotionPath the AMC motion of an ASF input.
    // The other import settings apply to an ASF input; a BVH file states its own frame rate, and
    // a glTF file is sampled at its keyframe times unless --fps was given.
    ImportOptions mImport;
    std::string mOutputPath;       // ".bvh", ".asf", ".glb" or ".gltf"
    std::string mMotionOutputPath; // the AMC beside an ASF output; empty: the output with ".amc"
    std::string mGltfBuffer;       // of a .gltf output: "embedded" (the default) or "separate"
    double mResampleFps = 0.0;     // frame rate of the output's motion; 0: the input's own
};

// Adds to pCommand (the "convert" subcommand) the options
// -o/--output, --motion-out, --animation, --buffer and --resample, bound to pOptions. The shared import flags (--fps and the rest)
// are the caller's to add, bound to pOptions.mImport.
void AddConvertOptions(CLI::App& pCommand, ConvertCommandOptions& pOptions);

// Runs one conversion, printing warnings and errors on standard error as "FILE:LINE: error: TEXT".
// Returns eSuccess; eUsageError for extensions it cannot convert or options that do not fit them;
// eInputRefused when an input file was refused; eOutputFailed when an output file could not be
// written (an existing file is then left as it was; of an ASF + AMC pair the ASF may be written
// already). Costs the motion's frame count times the joint count, with memory bounded by the
// host scene.
int RunConvert(const ConvertCommandOptions& pOptions);

// Builds the binary glTF file (.glb) that WriteGltf writes for pImport (which must have
// succeeded) and pFrames into pBytes, for a page that embeds it. Appends the writer's messages,
// naming pName, to pMessages. False when the skeleton cannot be written. Same cost as WriteGltf.
bool WriteGltfBinary(std::string& pBytes, const std::string& pName, const OrvImportResult& pImport,
                     const OrvExportFrames& pFrames, std::vector<orvsdk::OrvMessage>& pMessages);

// Writes the skeleton of pImport (which must have succeeded), its skin, a figure and pFrames of its
// motion (see OrvFramesAt) as glTF 2.0 at pPath: binary for a ".glb" path, else text with its binary data embedded as
// base64, or in a .bin file beside it when pSeparateBuffer. The animation is named after the
// take. Appends the writer's messages to pMessages. False when a file could not be written; an
// existing file is then untouched. Costs the motion's frame count times the joint count.
bool WriteGltf(const std::string& pPath, const OrvImportResult& pImport, const OrvExportFrames& pFrames,
               bool pSeparateBuffer, std::vector<orvsdk::OrvMessage>& pMessages);

} // namespace orvasf::tool

#endif
