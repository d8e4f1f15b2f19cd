#include "orvsdk/host/scene/OrvScene.h"

#include "orvsdk/host/anim/OrvAnimStack.h"
#include "orvsdk/host/scene/OrvNode.h"

#include <utility>

namespace orvsdk {

const OrvClassId OrvScene::ClassId = {"OrvScene", &OrvObject::ClassId};

OrvScene::OrvScene(const char* pName) : OrvObject(*this, pName)
{
    mRootNode = CreateObject<OrvNode>(this, "RootNode");
}

OrvScene::~OrvScene() = default;

OrvScene* OrvScene::Create(const char* pName)
{
    return new OrvScene(pName);
}

void OrvScene::Destroy(bool /*pRecursive*/)
{
    // Every object is of this scene and connected only within it, so nothing needs to be
    // disconnected before all of them go.
    mObjects.clear();
    delete this;
}

void OrvScene::SetCurrentAnimationStack(OrvAnimStack* pStack)
{
    if (pStack && pStack->GetScene() != this) return;
    mCurrentStack = pStack;
}

void OrvScene::DeleteObject(OrvObject* pObject)
{
    delete pObject;
}

void OrvScene::Adopt(OwnedObject pObject, OrvObject& pContainer)
{
    OrvObject& lObject = *pObject;
    lObject.mSceneSlot = mObjects.size();
    mObjects.push_back(std::move(pObject));
    Connect(lObject, RootProperty);
    if (&pContainer != this) Connect(lObject, pContainer.RootProperty);
}

void OrvScene::Release(OrvObject& pObject)
{
    if (&pObject == mCurrentStack) mCurrentStack = nullptr;
    const size_t lSlot = pObject.mSceneSlot;
    std::swap(mObjects[lSlot], mObjects.back());
    mObjects[lSlot]->mSceneSlot = lSlot;
    mObjects.pop_back();
}

} // namespace orvsdk
