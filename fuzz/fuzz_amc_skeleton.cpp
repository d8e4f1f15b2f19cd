// AMC motion reader against a skeleton that is itself part of the input. The first byte chooses
// the flags (its low four bits); the rest is the skeleton, then a line "@amc", then the motion.
// Without that line the whole rest is the skeleton and the motion is empty. A skeleton that does
// not read ends the input.

#include "FuzzSupport.h"

#include <algorithm>

namespace {

const char kMarker[] = "\n@amc\n";

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* pData, size_t pSize)
{
    if (pSize == 0) return 0;
    const orvfuzz::ReadFlags lFlags = orvfuzz::FlagsFromByte(pData[0]);
    const uint8_t* lBegin = pData + 1;
    const uint8_t* lEnd = pData + pSize;
    const uint8_t* lMarker = std::search(lBegin, lEnd, kMarker, kMarker + sizeof kMarker - 1);
    const uint8_t* lMotion = lMarker == lEnd ? lEnd : lMarker + sizeof kMarker - 1;

    orvfuzz::HostScene lHost;
    orvsdk::OrvAsfScene lSkeleton;
    if (!orvfuzz::ReadSkeleton(lBegin, static_cast<size_t>(lMarker - lBegin), lFlags, lSkeleton)) return 0;
    orvfuzz::ImportMotion(lMotion, static_cast<size_t>(lEnd - lMotion), lFlags, lSkeleton, lHost);
    return 0;
}
