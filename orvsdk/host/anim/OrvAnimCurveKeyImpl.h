#ifndef ORVSDK_HOST_ANIM_ORVANIMCURVEKEYIMPL_H
#define ORVSDK_HOST_ANIM_ORVANIMCURVEKEYIMPL_H

#include "orvsdk/host/core/OrvTime.h"

namespace orvsdk {

/// The data behind an OrvAnimCurveKey record: a time, a value and the key's settings.
/// Trivially copyable, so it can live in memory from OrvMalloc.
class OrvAnimCurveKeyImpl
{
public:
    /// How the curve goes from this key to the next. Curves of this host interpolate linearly
    /// whatever a key says; the setting is kept for callers that inspect keys.
    enum EInterpolationType
    {
        eInterpolationConstant = 2,
        eInterpolationLinear = 4
    };

    /// Stores the time and the value and gives the key the default settings of a new key
    /// (linear interpolation).
    void Set(OrvTime pTime, float pValue)
    {
        mTime = pTime;
        mValue = pValue;
        mInterpolation = eInterpolationLinear;
    }

    ///@{
    /// The time, value and interpolation last set.
    OrvTime GetTime() const { return mTime; }
    float GetValue() const { return mValue; }
    EInterpolationType GetInterpolation() const { return mInterpolation; }
    ///@}

private:
    OrvTime mTime;
    float mValue = 0.0f;
    EInterpolationType mInterpolation = eInterpolationLinear;
};

} // namespace orvsdk

#endif
