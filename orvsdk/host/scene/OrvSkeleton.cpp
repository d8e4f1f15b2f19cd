#include "orvsdk/host/scene/OrvSkeleton.h"

#include "orvsdk/host/scene/OrvScene.h"

namespace orvsdk {

const OrvClassId OrvSkeleton::ClassId = {"OrvSkeleton", &OrvNodeAttribute::ClassId};

OrvSkeleton* OrvSkeleton::Create(OrvObject* pContainer, const char* pName)
{
    return OrvScene::CreateObject<OrvSkeleton>(pContainer, pName);
}

} // namespace orvsdk
