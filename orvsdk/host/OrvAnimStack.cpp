#include "orvsdk/host/OrvAnimStack.h"

#include "orvsdk/host/OrvAnimLayer.h"
#include "orvsdk/host/OrvScene.h"

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
