#ifndef ORVASF_TOOLS_ORVASF_OUTPUTTEXT_H
#define ORVASF_TOOLS_ORVASF_OUTPUTTEXT_H

#include "orvsdk/host/io/OrvTextFile.h"

#include <string>
#include <string_view>

namespace orvasf::tool {

// Text output of a command: a file written atomically, or standard output.
//
// A file goes through a temporary file beside it and replaces the target only when all of the
// text was written (see orvsdk::OrvTextFile), so an existing file never holds half a result.
// Standard output is written as it comes; its errors are caught when the tool flushes it.
class OutputText
{
public:
    // pFileType names the kind of file in messages ("JSON", "CSV").
    explicit OutputText(const char* pFileType);

    // Starts writing to pPath, or to standard output when pPath is empty. False, with the
    // reason printed on standard error naming the file, when the file cannot be created.
    bool Open(const std::string& pPath);
    // Appends pText. False once a write has failed; the failure is reported by Close.
    bool Write(std::string_view pText);
    // Completes the output: the file takes the target's place, or standard output is flushed.
    // False, with the reason printed on standard error naming the file, when any write failed;
    // a target file is then untouched.
    bool Close();

private:
    orvsdk::OrvTextFile mFile;
    bool mToFile = false;
};

// Flushes standard output. False, with the reason printed on standard error, when anything
// written to it could not be delivered (a full disk, a closed pipe).
bool FlushStandardOutput();

} // namespace orvasf::tool

#endif
