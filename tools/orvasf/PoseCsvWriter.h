#ifndef ORVASF_TOOLS_ORVASF_POSECSVWRITER_H
#define ORVASF_TOOLS_ORVASF_POSECSVWRITER_H

#include "tools/orvasf/ArgumentValues.h"

#include <string>
#include <string_view>
#include <vector>

namespace orvsdk {
class OrvPoseEvaluator;
}

namespace orvasf::tool {

class OutputText;

// Appends pField to pText as one CSV field: quoted when it holds a comma, a quote or a line
// break, with its quotes doubled.
void AppendCsvField(std::string& pText, std::string_view pField);

// Writes the world positions of the evaluator's nodes at the given frames as CSV: the header
// "frame,joint,x,y,z", then one row per frame and node, frames in the order of pFrames, nodes
// in the evaluator's order. Frame i is evaluated at time i / pFramesPerSecond; positions are the
// nodes' global translations in the scene's unit (centimetres for imported skeletons), printed
// with pDecimals digits after the point whatever the locale. Costs one whole-pose evaluation per frame; streams
// frame by frame. False once a write failed.
bool WritePoseCsv(const orvsdk::OrvPoseEvaluator& pEvaluator, const std::vector<FrameRange>& pFrames,
                  double pFramesPerSecond, int pDecimals, OutputText& pOutput);

} // namespace orvasf::tool

#endif
