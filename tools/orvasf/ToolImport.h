#ifndef ORVASF_TOOLS_ORVASF_TOOLIMPORT_H
#define ORVASF_TOOLS_ORVASF_TOOLIMPORT_H

#include "driver/OrvImportDriver.h"
#include "tools/orvasf/CommandOptions.h"

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

} // namespace orvasf::tool

#endif
