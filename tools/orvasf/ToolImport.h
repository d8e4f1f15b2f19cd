#ifndef ORVASF_TOOLS_ORVASF_TOOLIMPORT_H
#define ORVASF_TOOLS_ORVASF_TOOLIMPORT_H

#include "driver/OrvImportDriver.h"
#include "tools/orvasf/CommandOptions.h"

namespace orvasf::tool {

// Runs the library's import driver on the files of pOptions (an ASF file with its optional AMC
// motion, or a BVH file when pBvh) with the reading progress on standard error when it is a
// terminal, then prints every warning and error on standard error.
OrvImportResult ImportFiles(const ImportOptions& pOptions, bool pBvh = false);

} // namespace orvasf::tool

#endif
