#ifndef ORVSDK_HOST_SCENE_ORVLIMITS_H
#define ORVSDK_HOST_SCENE_ORVLIMITS_H

#include "orvsdk/host/OrvHostExport.h"
#include "orvsdk/host/math/OrvVector4.h"

namespace orvsdk {

/// Bounds on a node's X, Y and Z values (translation or rotation). A record is inactive, with
/// no bound active and all bounds 0, until set. The record only stores the bounds: nothing in
/// this host clamps values with them.
class ORVHOST_API OrvLimits
{
public:
    ///@{
    /// Whether the limits apply at all.
    bool GetActive() const { return mActive; }
    void SetActive(bool pActive) { mActive = pActive; }
    ///@}

    ///@{
    /// Which lower and upper bounds are set, for X, Y and Z.
    void SetMinActive(bool pX, bool pY, bool pZ);
    void SetMaxActive(bool pX, bool pY, bool pZ);
    void GetMinActive(bool& pX, bool& pY, bool& pZ) const;
    void GetMaxActive(bool& pX, bool& pY, bool& pZ) const;
    ///@}

    ///@{
    /// The bounds (X, Y, Z), stored as given whatever the active flags say.
    void SetMin(const OrvVectorTemplate3<double>& pMin) { mMin = pMin; }
    void SetMax(const OrvVectorTemplate3<double>& pMax) { mMax = pMax; }
    OrvVectorTemplate3<double> GetMin() const { return mMin; }
    OrvVectorTemplate3<double> GetMax() const { return mMax; }
    ///@}

private:
    bool mActive = false;
    bool mMinActive[3] = {false, false, false};
    bool mMaxActive[3] = {false, false, false};
    OrvVectorTemplate3<double> mMin;
    OrvVectorTemplate3<double> mMax;
};

} // namespace orvsdk

#endif
