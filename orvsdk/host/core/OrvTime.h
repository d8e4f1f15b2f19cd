#ifndef ORVSDK_HOST_CORE_ORVTIME_H
#define ORVSDK_HOST_CORE_ORVTIME_H

#include "orvsdk/host/OrvHostExport.h"

#include <cstdint>

namespace orvsdk {

/// A point in time as a signed 64-bit tick count. kTicksPerSecond (705,600,000) divides evenly
/// by 24, 25, 30, 48, 50, 60, 100 and 120, so frame times at those rates are exact; the range
/// covers about +/- 414 years.
class ORVHOST_API OrvTime
{
public:
    /// Ticks in one second.
    static constexpr int64_t kTicksPerSecond = 705600000;

    ///@{
    /// Time 0, or pTicks ticks.
    constexpr OrvTime() = default;
    constexpr explicit OrvTime(int64_t pTicks) : mTicks(pTicks) {}
    ///@}

    ///@{
    /// The tick count.
    constexpr int64_t Get() const { return mTicks; }
    void Set(int64_t pTicks) { mTicks = pTicks; }
    ///@}

    ///@{
    /// Seconds, rounded to the nearest tick.
    static OrvTime FromSeconds(double pSeconds);
    double GetSecondDouble() const { return static_cast<double>(mTicks) / static_cast<double>(kTicksPerSecond); }
    ///@}

    /// Time of frame pFrame at pFramesPerSecond (> 0), rounded to the nearest tick; exact for the
    /// rates listed above.
    static OrvTime FromFrame(double pFrame, double pFramesPerSecond);
    /// Frame number of this time at pFramesPerSecond, as a (possibly fractional) frame count.
    double GetFrame(double pFramesPerSecond) const;

    ///@{
    /// Comparison of the tick counts.
    constexpr bool operator==(const OrvTime& pOther) const { return mTicks == pOther.mTicks; }
    constexpr bool operator!=(const OrvTime& pOther) const { return mTicks != pOther.mTicks; }
    constexpr bool operator<(const OrvTime& pOther) const { return mTicks < pOther.mTicks; }
    constexpr bool operator<=(const OrvTime& pOther) const { return mTicks <= pOther.mTicks; }
    constexpr bool operator>(const OrvTime& pOther) const { return mTicks > pOther.mTicks; }
    constexpr bool operator>=(const OrvTime& pOther) const { return mTicks >= pOther.mTicks; }
    ///@}

private:
    int64_t mTicks = 0;
};

} // namespace orvsdk

#endif
