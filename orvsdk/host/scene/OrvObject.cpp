#include "orvsdk/host/scene/OrvObject.h"

#include "orvsdk/host/scene/OrvNode.h"
#include "orvsdk/host/scene/OrvScene.h"

#include <algorithm>
#include <cstring>
#include <iterator>

namespace orvsdk {

const OrvClassId OrvObject::ClassId = {"OrvObject", nullptr};

OrvObject::OrvObject(OrvScene& pScene, const char* pName)
    : mScene(&pScene), mName(pName), RootProperty(this, "", eOrvUndefined)
{
}

OrvObject::~OrvObject() = default;

OrvString OrvObject::GetNameWithoutNameSpacePrefix() const
{
    const char* lName = GetName();
    const char* lLastColon = std::strrchr(lName, ':');
    return OrvString(lLastColon ? lLastColon + 1 : lName);
}

OrvProperty* OrvObject::GetDstProperty(int pIndex) const
{
    if (pIndex < 0 || pIndex >= GetDstPropertyCount()) return nullptr;
    return mDstProperties[static_cast<size_t>(pIndex)];
}

void OrvObject::Destroy(bool pRecursive)
{
    OrvScene& lScene = *mScene;
    if (this == lScene.GetRootNode()) return;
    // Cut the links towards destinations first: a recursive walk through the sources can then
    // never come back to this object.
    DisconnectFromDestinations();
    if (pRecursive)
        DestroySources();
    else
        DisconnectSources();
    lScene.Release(*this);
}

bool OrvObject::Connect(OrvObject& pSource, OrvProperty& pDestination, bool pInFront)
{
    if (pSource.mScene != pDestination.mOwner->mScene) return false;
    // An existing connection is looked for among the source's destinations, which are few: the
    // destination's sources may be every object of the scene.
    std::vector<OrvProperty*>& lDestinations = pSource.mDstProperties;
    if (std::find(lDestinations.begin(), lDestinations.end(), &pDestination) != lDestinations.end()) return false;
    std::vector<OrvObject*>& lSources = pDestination.mSrcObjects;
    lSources.insert(pInFront ? lSources.begin() : lSources.end(), &pSource);
    lDestinations.push_back(&pDestination);
    return true;
}

bool OrvObject::Disconnect(OrvObject& pSource, OrvProperty& pDestination)
{
    std::vector<OrvObject*>& lSources = pDestination.mSrcObjects;
    const auto lSource = std::find(lSources.begin(), lSources.end(), &pSource);
    if (lSource == lSources.end()) return false;
    lSources.erase(lSource);
    std::vector<OrvProperty*>& lDestinations = pSource.mDstProperties;
    lDestinations.erase(std::find(lDestinations.begin(), lDestinations.end(), &pDestination));
    return true;
}

void OrvObject::DisconnectFromDestinations()
{
    // Searched from the end: the scene's list holds every object, and the objects destroyed are
    // most often among the latest created.
    for (OrvProperty* lDestination : mDstProperties)
    {
        std::vector<OrvObject*>& lSources = lDestination->mSrcObjects;
        lSources.erase(std::next(std::find(lSources.rbegin(), lSources.rend(), this)).base());
    }
    mDstProperties.clear();
}

void OrvObject::DisconnectSources()
{
    for (OrvProperty* lProperty : mProperties)
    {
        for (OrvObject* lSource : lProperty->mSrcObjects)
        {
            std::vector<OrvProperty*>& lDestinations = lSource->mDstProperties;
            lDestinations.erase(std::find(lDestinations.begin(), lDestinations.end(), lProperty));
        }
        lProperty->mSrcObjects.clear();
    }
}

void OrvObject::DestroySources()
{
    // Each source is disconnected, then destroyed with its own sources before the next one, as
    // recursive Destroy calls would do it, but with an explicit stack of the objects being taken
    // apart, so that a chain of any depth goes. Every object on the stack is already cut from
    // its destinations, so none can be reached twice. The source lists are read again after
    // every step: destroying one source may destroy others connected to it as well. Only the
    // scene overrides Destroy, and a scene is never a source; the root node is left in place.
    struct Dismantling
    {
        OrvObject* mObject;
        size_t mProperty;  // index of the property whose sources go next
    };
    std::vector<Dismantling> lPending{{this, 0}};
    while (!lPending.empty())
    {
        Dismantling& lTop = lPending.back();
        OrvObject& lObject = *lTop.mObject;
        if (lTop.mProperty == lObject.mProperties.size())
        {
            lPending.pop_back();
            if (&lObject != this) lObject.mScene->Release(lObject);
            continue;
        }
        OrvProperty& lProperty = *lObject.mProperties[lTop.mProperty];
        if (lProperty.mSrcObjects.empty())
        {
            ++lTop.mProperty;
            continue;
        }
        OrvObject* lSource = lProperty.mSrcObjects.front();
        Disconnect(*lSource, lProperty);
        if (lSource == lSource->mScene->GetRootNode()) continue;
        lSource->DisconnectFromDestinations();
        lPending.push_back({lSource, 0});
    }
}

} // namespace orvsdk
