#ifndef ORVASF_TOOLS_ORVASF_CONVERTCOMMAND_H
#define ORVASF_TOOLS_ORVASF_CONVERTCOMMAND_H

#include "tools/orvasf/CommandOptions.h"

#include <string>

namespace CLI {
class App;
}

namespace orvasf::tool {

// The "convert" subcommand. Formats follow the file extensions (".asf" or ".bvh", any case):
// ASF (+ AMC) to BVH, BVH to ASF + AMC, ASF (+ AMC) to ASF (+ AMC) and BVH to BVH, always through a
// host scene, so that every conversion runs a reader into the host and a writer out of it.
struct ConvertCommandOptions
{
    // mAsfPath is the input file, ASF or BVH; mMotionPath the AMC motion of an ASF input. The
    // other import settings apply to an ASF input; a BVH file states its own frame rate.
    ImportOptions mImport;
    std::string mOutputPath;       // ".bvh" or ".asf"
    std::string mMotionOutputPath; // the AMC beside an ASF output; empty: the output with ".amc"
};

// Adds to pCommand (the "convert" subcommand) its input argument and the options --motion,
// -o/--output and --motion-out, bound to pOptions. The shared import flags (--fps and the rest)
// are the caller's to add, bound to pOptions.mImport.
void AddConvertOptions(CLI::App& pCommand, ConvertCommandOptions& pOptions);

// Runs one conversion, printing warnings and errors on standard error as "FILE:LINE: error: TEXT".
// Returns eSuccess; eUsageError for extensions it cannot convert or options that do not fit them;
// eInputRefused when an input file was refused; eOutputFailed when an output file could not be
// written (an existing file is then left as it was; of an ASF + AMC pair the ASF may be written
// already). Costs the motion's frame count times the joint count, with memory bounded by the
// host scene.
int RunConvert(const ConvertCommandOptions& pOptions);

} // namespace orvasf::tool

#endif
