#ifndef ORVSDK_HOST_FILTER_ORVANIMCURVEFILTERCONSTANTKEYREDUCER_H
#define ORVSDK_HOST_FILTER_ORVANIMCURVEFILTERCONSTANTKEYREDUCER_H

#include "orvsdk/host/OrvHostExport.h"
#include "orvsdk/host/filter/OrvAnimCurveFilter.h"

namespace orvsdk {

class OrvAnimCurve;
class OrvAnimCurveKey;

/// Removes redundant keys from flat stretches of curves, each curve on its own. A curve whose
/// keys all equal its first key's value within the tolerance loses every key (its value then
/// has to live elsewhere, e.g. in the channel's value). Otherwise a key is removed when its
/// value equals, within the tolerance, both its neighbours' values, its left neighbour being
/// the last key kept before it; the first and last keys stay. A flat stretch therefore keeps
/// its two end keys, and a slow drift keeps a key whenever it has moved beyond the tolerance
/// from the last kept one, so removals never add up to a visible change. Costs the number of
/// keys.
class ORVHOST_API OrvAnimCurveFilterConstantKeyReducer : public OrvAnimCurveFilter
{
public:
    ///@{
    /// Values closer than this (inclusive) count as equal; 1e-4 by default. Negative values
    /// are taken as 0.
    void SetValueTolerance(double pTolerance) { mTolerance = pTolerance < 0.0 ? 0.0 : pTolerance; }
    double GetValueTolerance() const { return mTolerance; }
    ///@}

    /// Any count of curves (0 succeeds with nothing to do); none may be null.
    bool Apply(OrvAnimCurve** pCurves, int pCount, OrvStatus* pStatus = nullptr) override;

private:
    void Reduce(OrvAnimCurve& pCurve, OrvAnimCurveKey& pRecord) const;

    double mTolerance = 1e-4;
};

} // namespace orvsdk

#endif
