#ifndef ORVASF_TOOLS_ORVASF_TOOLIMPORT_H
#define ORVASF_TOOLS_ORVASF_TOOLIMPORT_H

#include "driver/OrvImportDriver.h"
#include "tools/orvasf/ArgumentValues.h"
#include "tools/orvasf/CommandOptions.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace orvasf::tool {

enum class InputFormat
{
    eAsf,  // an ASF file with its optional AMC motion
    eBvh,
    eGltf
};

// Runs the library's import driver on the files of pOptions, of pFormat, with the reading
// progress on standard error when it is a terminal, then prints every warning and error on
// standard error.
OrvImportResult ImportFiles(const ImportOptions& pOptions, InputFormat pFormat = InputFormat::eAsf);

// The format of an input file by its extension (".asf", ".bvh", ".glb", ".gltf", any case); empty
// for any other extension.
std::optional<InputFormat> InputFormatOf(const std::string& pPath);

// The text of a usage problem of pImport's files for pCommand ("convert", "view", "render"): an
// input that is not .asf, .bvh, .glb or .gltf, a motion beside a BVH or glTF input, an animation
// name without a glTF input. Empty when they fit.
std::string InputUsageProblem(const char* pCommand, const ImportOptions& pImport);

// The format of pOptions' input file for subcommand pCommand. Empty, with the InputUsageProblem
// printed as a usage error, when the files do not fit.
std::optional<InputFormat> CheckedInputFormat(const ImportOptions& pOptions, const char* pCommand);

// Imports the input of pImport, ASF (+ AMC), BVH or glTF by its extension (which
// InputUsageProblem accepted), printing its messages. The result owns the host scene. Costs one
// whole import.
OrvImportResult ImportInput(const ImportOptions& pImport);

// The names of the input files without their folders, "FILE.asf + FILE.amc" or "FILE.bvh", for
// titles.
std::string InputNames(const ImportOptions& pOptions);

// The frames of pList (a ParseFrameList text) within a motion of pSpan frames, or every frame
// when pList is empty. Empty result, with "frame N is outside the motion" printed, when a
// requested frame lies beyond the motion.
std::optional<std::vector<FrameRange>> SelectFrames(const std::string& pList, int64_t pSpan);

} // namespace orvasf::tool

#endif
