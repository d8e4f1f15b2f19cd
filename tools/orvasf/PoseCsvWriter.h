#ifndef ORVASF_TOOLS_ORVASF_POSECSVWRITER_H
#define ORVASF_TOOLS_ORVASF_POSECSVWRITER_H

#include "tools/orvasf/ArgumentValues.h"

#include <vector>

namespace orvsdk {
class OrvNode;
}

namespace orvasf::tool {

class OutputText;

// Writes the world positions of pNodes at the given frames as CSV: the header
// "frame,joint,x,y,z", then one row per frame and node, frames in the order of pFrames, nodes
// in the given order. Frame i is evaluated at time i / pFramesPerSecond; positions are the
// nodes' global translations in the scene's unit (centimetres for imported skeletons), printed
// with four decimals whatever the locale. Costs frames x nodes x depth evaluations; streams
// row by row. False once a write failed.
bool WritePoseCsv(const std::vector<orvsdk::OrvNode*>& pNodes, const std::vector<FrameRange>& pFrames,
                  double pFramesPerSecond, OutputText& pOutput);

} // namespace orvasf::tool

#endif
