#ifndef ORVSDK_HOST_SCENE_ORVCRITERIA_H
#define ORVSDK_HOST_SCENE_ORVCRITERIA_H

#include "orvsdk/host/OrvHostExport.h"
#include "orvsdk/host/scene/OrvClassId.h"

namespace orvsdk {

class OrvObject;

/// Filter for connection queries: which connected objects count. A criteria holds no object and
/// can be copied freely.
class ORVHOST_API OrvCriteria
{
public:
    /// Objects of class pClassId or of a class derived from it.
    static OrvCriteria ObjectType(const OrvClassId& pClassId) { return OrvCriteria(pClassId); }

    /// True when pObject passes the filter.
    bool IsSatisfiedBy(const OrvObject& pObject) const;

private:
    explicit OrvCriteria(const OrvClassId& pClassId) : mClassId(&pClassId) {}

    const OrvClassId* mClassId;
};

} // namespace orvsdk

#endif
