#ifndef ORVASF_TOOLS_ORVASF_EXITSTATUS_H
#define ORVASF_TOOLS_ORVASF_EXITSTATUS_H

namespace orvasf::tool {

// Exit statuses of the orvasf tool; the README and every --help footer list them.
enum ExitStatus
{
    eSuccess = 0,
    eInputRefused = 1,  // an input file could not be read or was refused
    eUsageError = 2,    // the command line was wrong
    eOutputFailed = 3   // an output file could not be written
};

} // namespace orvasf::tool

#endif
