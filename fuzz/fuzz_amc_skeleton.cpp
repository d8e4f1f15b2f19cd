// AMC motion reader against a skeleton that is itself part of the input. The first byte chooses
// the flags (its low four bits); the rest is the skeleton, then a line "@amc", then the motion.
// Without that line the whole rest is the skeleton and the motion is empty. Each input is a whole
// import through the import driver.

#include "FuzzSupport.h"

#include <algorithm>

namespace {

const char kMarker[] = "\n@amc\n";

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* pData, size_t pSize)
{
    static const orvfuzz::ScratchFile sSkeleton(".asf");
    static const orvfuzz::ScratchFile sMotion(".amc");
    if (pSize == 0) return 0;
    const uint8_t* lBegin = pData + 1;
    const uint8_t* lEnd = pData + pSize;
    const uint8_t* lMarker = std::search(lBegin, lEnd, kMarker, kMarker + sizeof kMarker - 1);
    const uint8_t* lMotion = lMarker == lEnd ? lEnd : lMarker + sizeof kMarker - 1;
    orvfuzz::Import(sSkeleton.Write(lBegin, static_cast<size_t>(lMarker - lBegin)),
                    sMotion.Write(lMotion, static_cast<size_t>(lEnd - lMotion)), orvfuzz::SettingsFromByte(pData[0]));
    return 0;
}
