#ifndef ORVASF_TOOLS_ORVASF_MESSAGEPRINTER_H
#define ORVASF_TOOLS_ORVASF_MESSAGEPRINTER_H

#include "orvsdk/host/io/OrvDiagnostics.h"

#include <string>
#include <vector>

namespace orvasf::tool {

// Prints every message, in order, on standard error, one per line as
// "FILE:LINE: warning: TEXT" or "FILE:LINE: error: TEXT".
void PrintMessages(const std::vector<orvsdk::OrvMessage>& pMessages);

// Prints "orvasf: error: TEXT" on standard error, for a problem that belongs to no file line.
void PrintToolError(const std::string& pText);

} // namespace orvasf::tool

#endif
