#include "orvsdk/host/scene/OrvProperty.h"

#include "orvsdk/host/anim/OrvAnimCurveNode.h"
#include "orvsdk/host/anim/OrvAnimLayer.h"
#include "orvsdk/host/anim/OrvAnimStack.h"
#include "orvsdk/host/scene/OrvObject.h"
#include "orvsdk/host/scene/OrvScene.h"

#include <algorithm>
#include <cstring>

namespace orvsdk {

namespace {

const char* const sDefaultStackName = "Take 001";
const char* const sBaseLayerName = "BaseLayer";

// Number of doubles a value of pType holds; 0 for types without a value.
int ValueCount(EOrvType pType)
{
    switch (pType)
    {
    case eOrvDouble: return 1;
    case eOrvDouble3: return 3;
    default: return 0;
    }
}

} // namespace

OrvProperty::OrvProperty(OrvObject* pOwner, const char* pName, EOrvType pType, const double* pDefault, bool pValid)
    : mOwner(pOwner), mName(pName), mType(pType), mValid(pValid)
{
    if (pDefault) std::copy(pDefault, pDefault + ValueCount(pType), mValue);
    mOwner->mProperties.push_back(this);
}

bool OrvProperty::IsRoot() const
{
    return this == &mOwner->RootProperty;
}

bool OrvProperty::Set(const void* pValue, const EOrvType& pType, bool /*pCheckValueEquality*/)
{
    const int lCount = ValueCount(pType);
    if (!mValid || !pValue || pType != mType || lCount == 0) return false;
    std::memcpy(mValue, pValue, sizeof(double) * static_cast<size_t>(lCount));
    return true;
}

bool OrvProperty::Get(void* pValue, const EOrvType& pType) const
{
    const int lCount = ValueCount(pType);
    if (!mValid || !pValue || pType != mType || lCount == 0) return false;
    std::memcpy(pValue, mValue, sizeof(double) * static_cast<size_t>(lCount));
    return true;
}

OrvAnimCurveNode* OrvProperty::GetCurveNode(OrvAnimStack* pStack, bool pCreate)
{
    if (!mValid || ValueCount(mType) == 0) return nullptr;
    OrvScene& lScene = *mOwner->GetScene();
    if (!pStack)
    {
        pStack = lScene.GetCurrentAnimationStack();
        if (!pStack)
        {
            if (!pCreate) return nullptr;
            pStack = OrvAnimStack::Create(&lScene, sDefaultStackName);
            lScene.SetCurrentAnimationStack(pStack);
        }
    }
    if (pStack->GetScene() != &lScene) return nullptr;
    OrvAnimLayer* lLayer = pStack->GetBaseLayer();
    if (!lLayer)
    {
        if (!pCreate) return nullptr;
        lLayer = OrvAnimLayer::Create(pStack, sBaseLayerName);
    }
    return GetCurveNode(lLayer, pCreate);
}

OrvAnimCurveNode* OrvProperty::GetCurveNode(OrvAnimLayer* pLayer, bool pCreate)
{
    if (!pLayer) return GetCurveNode(static_cast<OrvAnimStack*>(nullptr), pCreate);
    if (!mValid || ValueCount(mType) == 0 || pLayer->GetScene() != mOwner->GetScene()) return nullptr;
    OrvAnimCurveNode* lCurveNode = FindCurveNode(*pLayer);
    if (!lCurveNode && pCreate) lCurveNode = CreateCurveNode(*pLayer);
    return lCurveNode;
}

OrvAnimCurveNode* OrvProperty::GetCurveNode(std::nullptr_t, bool pCreate)
{
    return GetCurveNode(static_cast<OrvAnimStack*>(nullptr), pCreate);
}

OrvAnimCurveNode* OrvProperty::FindCurveNode(const OrvAnimLayer& pLayer) const
{
    for (OrvObject* lSource : mSrcObjects)
    {
        if (!lSource->Is(OrvAnimCurveNode::ClassId)) continue;
        const std::vector<OrvProperty*>& lDestinations = lSource->mDstProperties;
        if (std::find(lDestinations.begin(), lDestinations.end(), &pLayer.RootProperty) != lDestinations.end())
            return static_cast<OrvAnimCurveNode*>(lSource);
    }
    return nullptr;
}

OrvAnimCurveNode* OrvProperty::CreateCurveNode(OrvAnimLayer& pLayer)
{
    OrvAnimCurveNode* lCurveNode = OrvAnimCurveNode::Create(mOwner->GetScene(), mName);
    for (int lChannel = 0; lChannel < ValueCount(mType); ++lChannel)
        lCurveNode->GetChannel(static_cast<unsigned>(lChannel)).Set(&mValue[lChannel], eOrvDouble);
    OrvObject::Connect(*lCurveNode, *this);
    OrvObject::Connect(*lCurveNode, pLayer.RootProperty);
    return lCurveNode;
}

int OrvProperty::GetSrcObjectCount(const OrvCriteria& pCriteria) const
{
    return static_cast<int>(std::count_if(mSrcObjects.begin(), mSrcObjects.end(),
                                          [&](const OrvObject* pObject) { return pCriteria.IsSatisfiedBy(*pObject); }));
}

OrvObject* OrvProperty::GetSrcObject(const OrvCriteria& pCriteria, int pIndex) const
{
    if (pIndex < 0) return nullptr;
    for (OrvObject* lSource : mSrcObjects)
        if (pCriteria.IsSatisfiedBy(*lSource) && pIndex-- == 0) return lSource;
    return nullptr;
}

OrvObject* OrvProperty::FindSrcObject(const OrvCriteria& pCriteria, const char* pName, int pStartIndex) const
{
    if (!pName) return nullptr;
    int lMatchIndex = 0;
    for (OrvObject* lSource : mSrcObjects)
    {
        if (!pCriteria.IsSatisfiedBy(*lSource)) continue;
        if (lMatchIndex++ >= pStartIndex && std::strcmp(lSource->GetName(), pName) == 0) return lSource;
    }
    return nullptr;
}

int OrvProperty::GetDstObjectCount(const OrvCriteria& pCriteria) const
{
    if (!IsRoot()) return 0;
    int lCount = 0;
    for (const OrvProperty* lDestination : mOwner->mDstProperties)
        if (lDestination->IsRoot() && pCriteria.IsSatisfiedBy(*lDestination->mOwner)) ++lCount;
    return lCount;
}

OrvObject* OrvProperty::GetDstObject(const OrvCriteria& pCriteria, int pIndex) const
{
    if (!IsRoot() || pIndex < 0) return nullptr;
    for (const OrvProperty* lDestination : mOwner->mDstProperties)
        if (lDestination->IsRoot() && pCriteria.IsSatisfiedBy(*lDestination->mOwner) && pIndex-- == 0)
            return lDestination->mOwner;
    return nullptr;
}

} // namespace orvsdk
