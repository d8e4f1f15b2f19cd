#include "orvsdk/host/OrvObject.h"

#include "orvsdk/host/OrvNode.h"
#include "orvsdk/host/OrvScene.h"

#include <algorithm>
#include <cstring>

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
    std::vector<OrvObject*>& lSources = pDestination.mSrcObjects;
    if (std::find(lSources.begin(), lSources.end(), &pSource) != lSources.end()) return false;
    lSources.insert(pInFront ? lSources.begin() : lSources.end(), &pSource);
    pSource.mDstProperties.push_back(&pDestination);
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
    for (OrvProperty* lDestination : mDstProperties)
    {
        std::vector<OrvObject*>& lSources = lDestination->mSrcObjects;
        lSources.erase(std::find(lSources.begin(), lSources.end(), this));
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
    // The source lists are read again after every destruction: destroying one source may
    // destroy others that were connected to it as well.
    for (OrvProperty* lProperty : mProperties)
    {
        while (!lProperty->mSrcObjects.empty())
        {
            OrvObject* lSource = lProperty->mSrcObjects.front();
            Disconnect(*lSource, *lProperty);
            lSource->Destroy(true);
        }
    }
}

} // namespace orvsdk
