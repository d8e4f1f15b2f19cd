#include "orvsdk/host/scene/OrvNodeAttribute.h"

#include "orvsdk/host/scene/OrvScene.h"

namespace orvsdk {

const OrvClassId OrvNodeAttribute::ClassId = {"OrvNodeAttribute", &OrvObject::ClassId};

OrvNodeAttribute* OrvNodeAttribute::Create(OrvObject* pContainer, const char* pName)
{
    return OrvScene::CreateObject<OrvNodeAttribute>(pContainer, pName);
}

} // namespace orvsdk
