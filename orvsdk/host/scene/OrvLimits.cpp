#include "orvsdk/host/scene/OrvLimits.h"

namespace orvsdk {

void OrvLimits::SetMinActive(bool pX, bool pY, bool pZ)
{
    mMinActive[0] = pX;
    mMinActive[1] = pY;
    mMinActive[2] = pZ;
}

void OrvLimits::SetMaxActive(bool pX, bool pY, bool pZ)
{
    mMaxActive[0] = pX;
    mMaxActive[1] = pY;
    mMaxActive[2] = pZ;
}

void OrvLimits::GetMinActive(bool& pX, bool& pY, bool& pZ) const
{
    pX = mMinActive[0];
    pY = mMinActive[1];
    pZ = mMinActive[2];
}

void OrvLimits::GetMaxActive(bool& pX, bool& pY, bool& pZ) const
{
    pX = mMaxActive[0];
    pY = mMaxActive[1];
    pZ = mMaxActive[2];
}

} // namespace orvsdk
