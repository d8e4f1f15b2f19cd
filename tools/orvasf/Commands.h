#ifndef ORVASF_TOOLS_ORVASF_COMMANDS_H
#define ORVASF_TOOLS_ORVASF_COMMANDS_H

#include "tools/orvasf/CommandOptions.h"

#include <string>
#include <vector>

// The subcommands of the orvasf tool. Each returns an ExitStatus value and prints its warnings
// and errors on standard error as "FILE:LINE: warning: TEXT" / "FILE:LINE: error: TEXT".

namespace orvasf::tool {

// Reads every skeleton file and prints one summary line per file read (name, bones, DOFs,
// units). Success when every file was read, eInputRefused when one was refused.
int RunCheck(const std::vector<std::string>& pPaths);

// Prints the bone tree of a skeleton file, indented, with each bone's DOFs, length and limits.
int RunTree(const std::string& pPath);

// Imports a skeleton (and motion) into a host scene and writes it as JSON, or prints counts
// and timings with mSummary. eOutputFailed when the JSON file could not be written.
int RunImport(const ImportCommandOptions& pOptions);

// Imports a skeleton and motion and prints world joint positions as CSV. eUsageError for a
// frame outside the motion.
int RunPose(const PoseCommandOptions& pOptions);

// Builds host nodes from a skeleton file and writes the skeleton the export extracts from them.
int RunExport(const ExportCommandOptions& pOptions);

// Reads a skeleton file and writes it again.
int RunFormat(const FormatCommandOptions& pOptions);

} // namespace orvasf::tool

#endif
