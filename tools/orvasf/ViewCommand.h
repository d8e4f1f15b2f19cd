#ifndef ORVASF_TOOLS_ORVASF_VIEWCOMMAND_H
#define ORVASF_TOOLS_ORVASF_VIEWCOMMAND_H

#include "tools/orvasf/CommandOptions.h"

#include <string>

namespace CLI {
class App;
}

namespace orvasf::tool {

// The "view" subcommand: one self-contained HTML page that plays a motion in a browser, offline.
struct ViewCommandOptions
{
    // The input, ASF (+ AMC), BVH or glTF, read as "convert" reads it.
    ImportOptions mImport;
    std::string mOutputPath;  // ".html" or ".htm"
};

// Adds to pCommand (the "view" subcommand) the options --animation and -o/--output, bound to
// pOptions. The input, its --motion and the shared import flags are the caller's to add, bound
// to pOptions.mImport.
void AddViewOptions(CLI::App& pCommand, ViewCommandOptions& pOptions);

// Imports the input and writes the page: the figure as a binary glTF file in base64, three.js
// and the player inlined. Returns eSuccess; eUsageError for inputs or outputs of other formats,
// options that do not fit them, or a tool built without the player; eInputRefused when an input
// file was refused; eOutputFailed when the page could not be written (an existing file is then
// left as it was). Messages go to standard error as "FILE:LINE: error: TEXT". Costs the
// motion's frame count times the joint count, plus the page (about 3 MB and the .glb's 4/3).
int RunView(const ViewCommandOptions& pOptions);

} // namespace orvasf::tool

#endif
