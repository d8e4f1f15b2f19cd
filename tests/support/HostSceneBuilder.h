#ifndef ORVASF_TESTS_SUPPORT_HOSTSCENEBUILDER_H
#define ORVASF_TESTS_SUPPORT_HOSTSCENEBUILDER_H

// Small host scenes for the interchange tests: joints with rotation settings and keyed curves.

#include "orvsdk/host/OrvAnimCurve.h"
#include "orvsdk/host/OrvAnimCurveKey.h"
#include "orvsdk/host/OrvAnimCurveNode.h"
#include "orvsdk/host/OrvAnimLayer.h"
#include "orvsdk/host/OrvAnimStack.h"
#include "orvsdk/host/OrvNode.h"
#include "orvsdk/host/OrvScene.h"
#include "orvsdk/host/OrvSkeleton.h"

#include <string>
#include <vector>

namespace hosttest {

using namespace orvsdk;

// A scene whose current stack "Take" has a base layer.
inline OrvScene* CreateScene()
{
    OrvScene* lScene = OrvScene::Create("test");
    OrvAnimStack* lStack = OrvAnimStack::Create(lScene, "Take");
    OrvAnimLayer::Create(lStack, "Base");
    lScene->SetCurrentAnimationStack(lStack);
    return lScene;
}

// A node named pName under pParent; a joint (skeleton attribute) unless pJoint is false.
inline OrvNode* AddNode(OrvNode* pParent, const char* pName, bool pJoint = true)
{
    OrvNode* lNode = OrvNode::Create(pParent->GetScene(), pName);
    if (pJoint)
    {
        OrvSkeleton* lSkeleton = OrvSkeleton::Create(pParent->GetScene(), "");
        lSkeleton->SetSkeletonType(OrvSkeleton::eLimbNode);
        lNode->SetNodeAttribute(lSkeleton);
    }
    pParent->AddChild(lNode);
    return lNode;
}

// Rotation settings of pivot set 0.
inline void SetRotation(OrvNode* pNode, OrvEuler::EOrder pOrder, const OrvVector4& pPre = OrvVector4(),
                        const OrvVector4& pPost = OrvVector4())
{
    pNode->SetRotationActive(true);
    pNode->SetRotationOrder(OrvNode::eSourcePivot, pOrder);
    pNode->SetPreRotation(OrvNode::eSourcePivot, pPre);
    pNode->SetPostRotation(OrvNode::eSourcePivot, pPost);
}

inline void SetProperty(OrvProperty& pProperty, const OrvVector4& pValue)
{
    pProperty.Set(pValue.Buffer(), eOrvDouble3);
}

// Keys pValues[i] (X, Y, Z) at frame i of pFramesPerSecond on the three channels of pProperty.
inline void Animate(OrvProperty& pProperty, const std::vector<OrvVector4>& pValues, double pFramesPerSecond)
{
    OrvAnimCurveNode* lCurveNode = pProperty.GetCurveNode(nullptr, true);
    OrvAnimCurveKey lKey;
    for (unsigned lChannel = 0; lChannel < 3; ++lChannel)
    {
        OrvAnimCurve* lCurve = OrvAnimCurve::Create(pProperty.GetOwner()->GetScene(), "curve");
        lCurveNode->ConnectToChannel(lCurve, lChannel);
        for (size_t i = 0; i < pValues.size(); ++i)
        {
            const OrvTime lTime = OrvTime::FromFrame(static_cast<double>(i), pFramesPerSecond);
            lKey.Set(lTime, static_cast<float>(pValues[i][static_cast<int>(lChannel)]));
            lCurve->KeyAdd(lTime, lKey);
        }
    }
}

} // namespace hosttest

#endif
