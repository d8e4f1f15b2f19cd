#include "orvsdk/host/core/OrvTime.h"

#include <cmath>

namespace orvsdk {

// Nearest tick count, saturated to the int64 range; NaN gives 0.
static int64_t RoundTicks(double pTicks)
{
    if (std::isnan(pTicks)) return 0;
    if (pTicks >= 9223372036854775807.0) return INT64_MAX;
    if (pTicks <= -9223372036854775808.0) return INT64_MIN;
    return std::llround(pTicks);
}

OrvTime OrvTime::FromSeconds(double pSeconds)
{
    return OrvTime(RoundTicks(pSeconds * static_cast<double>(kTicksPerSecond)));
}

OrvTime OrvTime::FromFrame(double pFrame, double pFramesPerSecond)
{
    // Multiplying first keeps one rounding only; for rates that divide the tick rate the
    // quotient is an integer and comes out exact.
    return OrvTime(RoundTicks(pFrame * static_cast<double>(kTicksPerSecond) / pFramesPerSecond));
}

double OrvTime::GetFrame(double pFramesPerSecond) const
{
    return static_cast<double>(mTicks) * pFramesPerSecond / static_cast<double>(kTicksPerSecond);
}

} // namespace orvsdk
