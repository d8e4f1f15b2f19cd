#ifndef ORVSDK_HOST_FILTER_ORVANIMCURVEFILTER_H
#define ORVSDK_HOST_FILTER_ORVANIMCURVEFILTER_H

#include "orvsdk/host/OrvHostExport.h"

namespace orvsdk {

class OrvAnimCurve;
class OrvStatus;

/// A treatment of animation curves applied in place. A filter object holds only its settings;
/// it can be applied any number of times.
class ORVHOST_API OrvAnimCurveFilter
{
public:
    virtual ~OrvAnimCurveFilter() = default;

    /// Filters the pCount curves of pCurves. True on success. On failure (a null array or curve,
    /// a count the filter does not accept, keys it cannot work on) the curves are left as they
    /// were, false is returned and, when pStatus is not null, it gets a message; on success a
    /// given pStatus is cleared.
    virtual bool Apply(OrvAnimCurve** pCurves, int pCount, OrvStatus* pStatus = nullptr) = 0;

protected:
    ///@{
    /// Made and copied as part of a concrete filter only.
    OrvAnimCurveFilter() = default;
    OrvAnimCurveFilter(const OrvAnimCurveFilter&) = default;
    OrvAnimCurveFilter& operator=(const OrvAnimCurveFilter&) = default;
    ///@}
};

} // namespace orvsdk

#endif
