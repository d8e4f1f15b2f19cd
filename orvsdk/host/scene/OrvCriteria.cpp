#include "orvsdk/host/scene/OrvCriteria.h"

#include "orvsdk/host/scene/OrvObject.h"

namespace orvsdk {

bool OrvCriteria::IsSatisfiedBy(const OrvObject& pObject) const
{
    return pObject.Is(*mClassId);
}

} // namespace orvsdk
