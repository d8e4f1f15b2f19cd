#include "orvsdk/host/anim/OrvAnimStack.h"

#include "orvsdk/host/anim/OrvAnimLayer.h"
#include "orvsdk/host/scene/OrvScene.h"

namespace orvsdk {

const OrvClassId OrvAnimStack::ClassId = {"OrvAnimStack", &OrvObject::ClassId};

OrvAnimStack* OrvAnimStack::Create(OrvObject* pContainer, const char* pName)
{
    return OrvScene::CreateObject<OrvAnimStack>(pContainer, pName);
}

OrvAnimLayer* OrvAnimStack::GetBaseLayer() const
{
    return RootProperty.GetSrcObject<OrvAnimLayer>(0);
}

} // namespace orvsdk
