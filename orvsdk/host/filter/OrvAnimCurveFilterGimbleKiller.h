#ifndef ORVSDK_HOST_FILTER_ORVANIMCURVEFILTERGIMBLEKILLER_H
#define ORVSDK_HOST_FILTER_ORVANIMCURVEFILTERGIMBLEKILLER_H

#include "orvsdk/host/OrvHostExport.h"
#include "orvsdk/host/filter/OrvAnimCurveFilter.h"

namespace orvsdk {

/// Removes Euler flips from rotation curves in order X, Y, Z. Applied to three curves holding
/// the X, Y and Z angles (degrees) of one rotation, whose keys share their times, it goes key by
/// key, rebuilds the key's rotation and replaces its angles by the X, Y, Z triple of that
/// rotation closest to the previous key's; at gimbal lock (middle angle +/-90 degrees), where
/// the first and last angles only count through their sum or difference, it splits them to stay
/// closest to the previous key. The first key stays. Costs the number of keys.
class ORVHOST_API OrvAnimCurveFilterGimbleKiller : public OrvAnimCurveFilter
{
public:
    /// pCount must be 3 (X, Y, Z curves, none null, same key count and key times).
    bool Apply(OrvAnimCurve** pCurves, int pCount, OrvStatus* pStatus = nullptr) override;
};

} // namespace orvsdk

#endif
