#ifndef ORVASF_TOOLS_ORVASF_PLOTCOMMAND_H
#define ORVASF_TOOLS_ORVASF_PLOTCOMMAND_H

#include "tools/orvasf/CommandOptions.h"

#include <string>

namespace CLI {
class App;
}

namespace orvasf::tool {

// The "plot" subcommand: one joint's animation curves against time, as SVG.
struct PlotCommandOptions
{
    ImportOptions mImport;               // mAsfPath: an ASF, BVH or glTF file; mMotionPath: the AMC of an ASF
    std::string mJoint;                  // the host node's name
    std::string mChannels = "rotation";  // "rotation" or "translation"
    std::string mCompareFilter;          // "gimbal", "unroll" or "reduce": import without and with it; empty: once
    std::string mOutputPath;
};

// Adds to pCommand the options --joint, --channels, --compare-filter and -o/--output, bound to
// pOptions. The input, its --motion and the shared import flags are the caller's to add.
void AddPlotOptions(CLI::App& pCommand, PlotCommandOptions& pOptions);

// Imports the files (twice with a compare filter) and writes the keys of the joint's rotation or
// translation curves as one polyline per channel, atomically. eUsageError for an unknown
// extension, an ASF without motion or an unknown joint (the message lists the joints);
// eInputRefused when an input was refused; eOutputFailed when the picture could not be written.
// Costs one or two imports and the joint's key count.
int RunPlot(const PlotCommandOptions& pOptions);

} // namespace orvasf::tool

#endif
