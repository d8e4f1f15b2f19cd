#include "orvsdk/host/scene/OrvNode.h"

#include "orvsdk/host/anim/OrvAnimCurve.h"
#include "orvsdk/host/anim/OrvAnimCurveNode.h"
#include "orvsdk/host/scene/OrvNodeAttribute.h"
#include "orvsdk/host/scene/OrvScene.h"
#include "orvsdk/host/scene/OrvSkeleton.h"

#include <cstring>
#include <vector>

namespace orvsdk {

namespace {

const double sUnitScale[3] = {1.0, 1.0, 1.0};

OrvCriteria NodeCriteria()
{
    return OrvCriteria::ObjectType(OrvNode::ClassId);
}

// The rotation matrix of the X, Y, Z angles pAngles applied in the sequence of pOrder.
// The first direct child of pNode named exactly pName, null when none is.
OrvNode* ChildNamed(const OrvNode& pNode, const char* pName)
{
    const int lCount = pNode.GetChildCount();
    for (int i = 0; i < lCount; ++i)
        if (std::strcmp(pNode.GetChild(i)->GetName(), pName) == 0) return pNode.GetChild(i);
    return nullptr;
}

// Appends pNode's children to pStack, last child first, so that they come off it in child order.
void PushChildrenInReverse(const OrvNode& pNode, std::vector<const OrvNode*>& pStack)
{
    for (int i = pNode.GetChildCount() - 1; i >= 0; --i) pStack.push_back(pNode.GetChild(i));
}

} // namespace

const OrvClassId OrvNode::ClassId = {"OrvNode", &OrvObject::ClassId};

OrvNode::OrvNode(OrvScene& pScene, const char* pName)
    : OrvObject(pScene, pName),
      LclTranslation(this, "Lcl Translation", eOrvDouble3),
      LclRotation(this, "Lcl Rotation", eOrvDouble3),
      LclScaling(this, "Lcl Scaling", eOrvDouble3, sUnitScale)
{
}

OrvNode* OrvNode::Create(OrvObject* pContainer, const char* pName)
{
    return OrvScene::CreateObject<OrvNode>(pContainer, pName);
}

// --- Hierarchy -------------------------------------------------------------------------------

bool OrvNode::AddChild(OrvNode* pNode)
{
    if (!pNode || pNode->GetScene() != GetScene() || pNode == GetScene()->GetRootNode()) return false;
    if (pNode->IsSelfOrAncestorOf(*this)) return false;
    OrvNode* lParent = pNode->GetParent();
    if (lParent == this) return true;
    if (lParent) lParent->RemoveChild(pNode);
    return Connect(*pNode, RootProperty);
}

OrvNode* OrvNode::RemoveChild(OrvNode* pNode)
{
    return pNode && Disconnect(*pNode, RootProperty) ? pNode : nullptr;
}

OrvNode* OrvNode::GetChild(int pIndex) const
{
    return static_cast<OrvNode*>(RootProperty.GetSrcObject(NodeCriteria(), pIndex));
}

int OrvNode::GetChildCount(bool pRecursive) const
{
    const int lCount = RootProperty.GetSrcObjectCount(NodeCriteria());
    if (!pRecursive) return lCount;
    // Descendants are counted with an explicit stack, so the hierarchy's depth does not matter.
    int lTotal = 0;
    std::vector<const OrvNode*> lPending{this};
    while (!lPending.empty())
    {
        const OrvNode* lNode = lPending.back();
        lPending.pop_back();
        const int lChildren = lNode->GetChildCount(false);
        lTotal += lChildren;
        for (int i = 0; i < lChildren; ++i) lPending.push_back(lNode->GetChild(i));
    }
    return lTotal;
}

OrvNode* OrvNode::GetParent() const
{
    return static_cast<OrvNode*>(RootProperty.GetDstObject(NodeCriteria(), 0));
}

OrvNode* OrvNode::FindChild(const char* pName, bool pRecursive, bool /*pInitial*/) const
{
    if (!pName) return nullptr;
    if (OrvNode* lFound = ChildNamed(*this, pName)) return lFound;
    if (!pRecursive) return nullptr;
    // The nodes whose children are compared next, in the order of a depth-first walk (a node's
    // subtrees in child order), on an explicit stack so that the hierarchy's depth does not matter.
    std::vector<const OrvNode*> lPending;
    PushChildrenInReverse(*this, lPending);
    while (!lPending.empty())
    {
        const OrvNode* lNode = lPending.back();
        lPending.pop_back();
        if (OrvNode* lFound = ChildNamed(*lNode, pName)) return lFound;
        PushChildrenInReverse(*lNode, lPending);
    }
    return nullptr;
}

bool OrvNode::IsSelfOrAncestorOf(const OrvNode& pNode) const
{
    for (const OrvNode* lNode = &pNode; lNode; lNode = lNode->GetParent())
        if (lNode == this) return true;
    return false;
}

// --- Attribute -------------------------------------------------------------------------------

bool OrvNode::SetNodeAttribute(OrvNodeAttribute* pAttribute)
{
    if (pAttribute && pAttribute->GetScene() != GetScene()) return false;
    while (OrvNodeAttribute* lCurrent = GetNodeAttribute()) Disconnect(*lCurrent, RootProperty);
    if (pAttribute) Connect(*pAttribute, RootProperty);
    return true;
}

OrvNodeAttribute* OrvNode::GetNodeAttribute() const
{
    return RootProperty.GetSrcObject<OrvNodeAttribute>(0);
}

OrvSkeleton* OrvNode::GetSkeleton() const
{
    OrvNodeAttribute* lAttribute = GetNodeAttribute();
    return lAttribute && lAttribute->Is(OrvSkeleton::ClassId) ? static_cast<OrvSkeleton*>(lAttribute) : nullptr;
}

// --- Rotation settings -----------------------------------------------------------------------

OrvNode::PivotSettings& OrvNode::Pivot(EPivotSet pPivotSet)
{
    return mPivots[pPivotSet == eDestinationPivot ? 1 : 0];
}

const OrvNode::PivotSettings& OrvNode::Pivot(EPivotSet pPivotSet) const
{
    return mPivots[pPivotSet == eDestinationPivot ? 1 : 0];
}

void OrvNode::SetRotationOrder(EPivotSet pPivotSet, OrvEuler::EOrder pOrder)
{
    Pivot(pPivotSet).mRotationOrder = pOrder;
}

void OrvNode::GetRotationOrder(EPivotSet pPivotSet, OrvEuler::EOrder& pOrder) const
{
    pOrder = Pivot(pPivotSet).mRotationOrder;
}

void OrvNode::SetRotationOffset(EPivotSet pPivotSet, OrvVector4 pOffset)
{
    Pivot(pPivotSet).mRotationOffset = pOffset;
}

const OrvVector4& OrvNode::GetRotationOffset(EPivotSet pPivotSet) const
{
    return Pivot(pPivotSet).mRotationOffset;
}

void OrvNode::SetPreRotation(EPivotSet pPivotSet, OrvVector4 pRotation)
{
    Pivot(pPivotSet).mPreRotation = pRotation;
}

const OrvVector4& OrvNode::GetPreRotation(EPivotSet pPivotSet) const
{
    return Pivot(pPivotSet).mPreRotation;
}

void OrvNode::SetPostRotation(EPivotSet pPivotSet, OrvVector4 pRotation)
{
    Pivot(pPivotSet).mPostRotation = pRotation;
}

const OrvVector4& OrvNode::GetPostRotation(EPivotSet pPivotSet) const
{
    return Pivot(pPivotSet).mPostRotation;
}

// --- Transform -------------------------------------------------------------------------------

OrvVector4 OrvNode::EvaluateProperty(OrvProperty& pProperty, OrvTime pTime)
{
    double lValue[3];
    pProperty.Get(lValue, eOrvDouble3);
    if (OrvAnimCurveNode* lCurveNode = pProperty.GetCurveNode(nullptr, false))
    {
        for (unsigned lChannel = 0; lChannel < 3; ++lChannel)
        {
            const OrvAnimCurve* lCurve = lCurveNode->GetCurve(lChannel);
            if (lCurve && lCurve->KeyGetCount() > 0)
                lValue[lChannel] = lCurve->Evaluate(pTime);
            else
                lCurveNode->GetChannel(lChannel).Get(&lValue[lChannel], eOrvDouble);
        }
    }
    return OrvVector4(lValue[0], lValue[1], lValue[2]);
}

OrvVector4 OrvNode::EvaluateLocalTranslation(OrvTime pTime, EPivotSet /*pPivotSet*/, bool /*pApplyTarget*/,
                                             bool /*pForceEval*/)
{
    return EvaluateProperty(LclTranslation, pTime);
}

OrvVector4 OrvNode::EvaluateLocalRotation(OrvTime pTime, EPivotSet /*pPivotSet*/, bool /*pApplyTarget*/,
                                          bool /*pForceEval*/)
{
    return EvaluateProperty(LclRotation, pTime);
}

OrvVector4 OrvNode::EvaluateLocalScaling(OrvTime pTime, EPivotSet /*pPivotSet*/, bool /*pApplyTarget*/,
                                         bool /*pForceEval*/)
{
    return EvaluateProperty(LclScaling, pTime);
}

OrvAMatrix OrvNode::EvaluateLocalTransform(OrvTime pTime)
{
    const PivotSettings& lPivot = Pivot(eSourcePivot);
    OrvAMatrix lTranslation;
    lTranslation.SetT(EvaluateLocalTranslation(pTime) + lPivot.mRotationOffset);

    OrvAMatrix lPreRotation;
    OrvAMatrix lPostRotation;
    int lOrder = OrvEuler::eOrderXYZ;
    if (mRotationActive)
    {
        lPreRotation.SetR(lPivot.mPreRotation, OrvEuler::eOrderXYZ);
        lPostRotation.SetR(lPivot.mPostRotation, OrvEuler::eOrderXYZ);
        if (lPivot.mRotationOrder >= OrvEuler::eOrderXYZ && lPivot.mRotationOrder <= OrvEuler::eOrderZYX)
            lOrder = lPivot.mRotationOrder;
    }
    OrvAMatrix lRotation;
    lRotation.SetRInOrder(EvaluateLocalRotation(pTime), lOrder);

    OrvAMatrix lScaling;
    lScaling.SetS(EvaluateLocalScaling(pTime));
    return lTranslation * lPreRotation * lRotation * lPostRotation.Inverse() * lScaling;
}

OrvAMatrix OrvNode::EvaluateGlobalTransform(OrvTime pTime)
{
    OrvAMatrix lGlobal = EvaluateLocalTransform(pTime);
    for (OrvNode* lAncestor = GetParent(); lAncestor; lAncestor = lAncestor->GetParent())
        lGlobal = lAncestor->EvaluateLocalTransform(pTime) * lGlobal;
    return lGlobal;
}

} // namespace orvsdk
