#ifndef ORVASF_TOOLS_ORVASF_ARGUMENTVALUES_H
#define ORVASF_TOOLS_ORVASF_ARGUMENTVALUES_H

#include "orvsdk/host/math/OrvVector4.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace orvasf::tool {

// An inclusive range of 0-based frame indices; a single frame has mFirst == mLast.
struct FrameRange
{
    int mFirst;
    int mLast;
};

// Parses a frame list such as "0,10,20-30": comma-separated indices (>= 0) and inclusive
// ranges whose end is not below their start. Ranges stay unexpanded, so a huge range costs
// nothing. Empty result when the text is not such a list.
std::optional<std::vector<FrameRange>> ParseFrameList(std::string_view pText);

// Parses a scale "X,Y,Z" of three finite numbers (read independently of the locale) into
// X, Y and Z of the result. Empty result when the text is not such a triple.
std::optional<orvsdk::OrvVector4> ParseScale(std::string_view pText);

// The extension of the file pPath names, with its dot, in ASCII lower case: "Walk.BVH" gives
// ".bvh"; "" when the name has none. File formats are chosen by it.
std::string LowerCaseExtension(const std::string& pPath);

} // namespace orvasf::tool

#endif
