#include "orvsdk/host/OrvAnimLayer.h"

#include "orvsdk/host/OrvScene.h"

namespace orvsdk {

const OrvClassId OrvAnimLayer::ClassId = {"OrvAnimLayer", &OrvObject::ClassId};

OrvAnimLayer* OrvAnimLayer::Create(OrvObject* pContainer, const char* pName)
{
    return OrvScene::CreateObject<OrvAnimLayer>(pContainer, pName);
}

} // namespace orvsdk
