#include "orvsdk/host/anim/OrvAnimLayer.h"

#include "orvsdk/host/scene/OrvScene.h"

namespace orvsdk {

const OrvClassId OrvAnimLayer::ClassId = {"OrvAnimLayer", &OrvObject::ClassId};

OrvAnimLayer* OrvAnimLayer::Create(OrvObject* pContainer, const char* pName)
{
    return OrvScene::CreateObject<OrvAnimLayer>(pContainer, pName);
}

} // namespace orvsdk
