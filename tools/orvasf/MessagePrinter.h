#ifndef ORVASF_TOOLS_ORVASF_MESSAGEPRINTER_H
#define ORVASF_TOOLS_ORVASF_MESSAGEPRINTER_H

#include "amc/OrvAmcReader.h"

#include <string>
#include <vector>

namespace orvsdk {
class OrvTextFile;
}

namespace orvasf::tool {

// Prints every warning and error pFile recorded, in order, on standard error, one per line as
// "FILE:LINE: warning: TEXT" or "FILE:LINE: error: TEXT".
void PrintMessages(const orvsdk::OrvTextFile& pFile);

// The same for the messages of a motion read by pReader (its last read).
void PrintMessages(const OrvAmcReader& pReader, const std::vector<OrvAmcMessage>& pMessages);

// Prints "orvasf: error: TEXT" on standard error, for a problem that belongs to no file line.
void PrintToolError(const std::string& pText);

} // namespace orvasf::tool

#endif
