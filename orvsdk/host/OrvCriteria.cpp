#include "orvsdk/host/OrvCriteria.h"

#include "orvsdk/host/OrvObject.h"

namespace orvsdk {

bool OrvCriteria::IsSatisfiedBy(const OrvObject& pObject) const
{
    return pObject.Is(*mClassId);
}

} // namespace orvsdk
