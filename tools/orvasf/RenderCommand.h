#ifndef ORVASF_TOOLS_ORVASF_RENDERCOMMAND_H
#define ORVASF_TOOLS_ORVASF_RENDERCOMMAND_H

#include "tools/orvasf/CommandOptions.h"

#include <string>

namespace CLI {
class App;
}

namespace orvasf::tool {

// The "render" subcommand: a film strip of stick figures as SVG.
struct RenderCommandOptions
{
    ImportOptions mImport;  // mAsfPath: an ASF, BVH or glTF file; mMotionPath: the AMC of an ASF
    std::string mFrames;    // frame list text; empty: eight frames evenly over the motion
    std::string mView = "front";
    std::string mOutputPath;
};

// Adds to pCommand the options --frames, --view and -o/--output, bound to pOptions. The input,
// its --motion, the shared import flags and the check of the frame list are the caller's to add.
void AddRenderOptions(CLI::App& pCommand, RenderCommandOptions& pOptions);

// Imports the files and writes the figures of the requested frames (see AddRenderOptions' help)
// as one SVG picture, atomically. eUsageError for an unknown extension, a frame outside the
// motion or too many frames; eInputRefused when an input was refused; eOutputFailed when the
// picture could not be written. Costs one pose evaluation per drawn frame after the import.
int RunRender(const RenderCommandOptions& pOptions);

} // namespace orvasf::tool

#endif
