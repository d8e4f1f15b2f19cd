#ifndef ORVASF_TOOLS_ORVASF_NPYWRITER_H
#define ORVASF_TOOLS_ORVASF_NPYWRITER_H

#include "driver/OrvExportDriver.h"

#include <cstddef>
#include <string>
#include <vector>

namespace orvasf::tool {

// The header of a NumPy .npy file (format version 1.0) holding little-endian float32 values in C
// order with pShape: the magic "\x93NUMPY", the version, the header's length and the array's
// description, padded with spaces and a final line break so that the data starts at a multiple
// of 64 bytes.
std::string NpyFloat32Header(const std::vector<size_t>& pShape);

// Writes the world positions of pFrames of pImport's motion (which must have succeeded) as a .npy
// file at pArrayPath: frames x joints x 3 float32 values in metres, joints in the pose evaluator's
// order (as "pose" prints them). Beside it, at pDescriptionPath, a JSON object names the joints,
// their parents (indices into the joints, -1 for the top), the frame rate, the frame count and
// the units. Each file replaces its target only when all of it was written; false, with the
// reason on standard error, when either could not be (the array may be written already). Costs
// one whole-pose evaluation per frame; memory holds one block of frames at a time.
bool WritePositionArray(const std::string& pArrayPath, const std::string& pDescriptionPath,
                        const OrvImportResult& pImport, const OrvExportFrames& pFrames);

} // namespace orvasf::tool

#endif
