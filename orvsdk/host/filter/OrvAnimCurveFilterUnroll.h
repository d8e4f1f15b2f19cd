#ifndef ORVSDK_HOST_FILTER_ORVANIMCURVEFILTERUNROLL_H
#define ORVSDK_HOST_FILTER_ORVANIMCURVEFILTERUNROLL_H

#include "orvsdk/host/OrvHostExport.h"
#include "orvsdk/host/filter/OrvAnimCurveFilter.h"
#include "orvsdk/host/math/OrvEuler.h"

namespace orvsdk {

/// Makes Euler rotation curves continuous without changing the rotations they describe.
/// Applied to three curves holding the X, Y and Z angles (degrees) of one rotation, whose keys
/// share their times, it goes key by key and replaces each key's angles by the equivalent
/// triple (in the filter's rotation order) closest to the previous key's: among the triples
/// with multiples of 360 degrees added and the alternative triple (a0 + 180, 180 - a1, a2 + 180)
/// of the angles taken in the order's own sequence. The first key stays. Costs the number of
/// keys.
class ORVHOST_API OrvAnimCurveFilterUnroll : public OrvAnimCurveFilter
{
public:
    ///@{
    /// The order in which the curves' angles apply; eOrderXYZ by default. Orders outside 0 to 5
    /// make Apply fail.
    void SetRotationOrder(OrvEuler::EOrder pOrder) { mOrder = pOrder; }
    OrvEuler::EOrder GetRotationOrder() const { return mOrder; }
    ///@}

    /// pCount must be 3 (X, Y, Z curves, none null, same key count and key times).
    bool Apply(OrvAnimCurve** pCurves, int pCount, OrvStatus* pStatus = nullptr) override;

private:
    OrvEuler::EOrder mOrder = OrvEuler::eOrderXYZ;
};

} // namespace orvsdk

#endif
