#ifndef ORVSDK_TESTS_SUPPORT_HOSTSCENESUPPORT_H
#define ORVSDK_TESTS_SUPPORT_HOSTSCENESUPPORT_H

// Helpers shared by the tests that build or read host scenes: scenes with an animation stack,
// joints with rotation settings and keyed curves, and paths into the shared data folder.

#include "orvsdk/host/anim/OrvAnimCurve.h"
#include "orvsdk/host/anim/OrvAnimCurveKey.h"
#include "orvsdk/host/anim/OrvAnimCurveNode.h"
#include "orvsdk/host/anim/OrvAnimLayer.h"
#include "orvsdk/host/anim/OrvAnimStack.h"
#include "orvsdk/host/scene/OrvNode.h"
#include "orvsdk/host/scene/OrvScene.h"
#include "orvsdk/host/scene/OrvSkeleton.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

namespace orvsdk {
namespace hosttest {

// A host scene holding a stack named pTake with one layer; the stack is the current one.
inline OrvScenePtr CreateHostScene(const char* pTake = "Take")
{
    OrvScenePtr lScene = OrvCreateScene("scene");
    OrvAnimStack* lStack = OrvAnimStack::Create(lScene.get(), pTake);
    OrvAnimLayer::Create(lStack, "Base");
    lScene->SetCurrentAnimationStack(lStack);
    return lScene;
}

// A node named pName carrying a skeleton attribute when pJoint is set, made the last child of
// pParent.
inline OrvNode* AddNode(OrvNode* pParent, const char* pName, bool pJoint = true)
{
    OrvNode* lNode = OrvNode::Create(pParent, pName);
    if (pJoint) lNode->SetNodeAttribute(OrvSkeleton::Create(pParent->GetScene(), ""));
    return lNode;
}

// Rotation settings of pivot set 0; the rotation becomes active.
inline void SetRotation(OrvNode* pNode, OrvEuler::EOrder pOrder, const OrvVector4& pPre = OrvVector4(),
                        const OrvVector4& pPost = OrvVector4())
{
    pNode->SetRotationActive(true);
    pNode->SetRotationOrder(OrvNode::eSourcePivot, pOrder);
    pNode->SetPreRotation(OrvNode::eSourcePivot, pPre);
    pNode->SetPostRotation(OrvNode::eSourcePivot, pPost);
}

// Sets X, Y, Z of a node's local transform property; false when the property refuses them.
inline bool SetProperty(OrvProperty& pProperty, const OrvVector4& pValue)
{
    return pProperty.Set(pValue.Buffer(), eOrvDouble3);
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

// The values of pCurve's keys, in time order.
inline std::vector<float> KeyValues(const OrvAnimCurve* pCurve)
{
    std::vector<float> lValues;
    for (int i = 0; i < pCurve->KeyGetCount(); ++i) lValues.push_back(pCurve->KeyGetValue(i));
    return lValues;
}

// Adds a key of value pValue at tick pTicks.
inline void AddKey(OrvAnimCurve* pCurve, int64_t pTicks, float pValue)
{
    OrvAnimCurveKey lKey;
    lKey.Set(OrvTime(pTicks), pValue);
    pCurve->KeyAdd(OrvTime(pTicks), lKey);
}

// The names of pNode's subtree: "name(child child(grandchild))", children in order.
inline std::string NodeTree(const OrvNode* pNode)
{
    std::string lText = pNode->GetName();
    if (pNode->GetChildCount(false) == 0) return lText;
    lText += "(";
    for (int i = 0; i < pNode->GetChildCount(false); ++i) lText += (i ? " " : "") + NodeTree(pNode->GetChild(i));
    return lText + ")";
}

// Expects X, Y, Z of pActual within pTolerance of (pX, pY, pZ).
inline void ExpectVectorNear(const OrvVector4& pActual, double pX, double pY, double pZ, double pTolerance = 1e-9)
{
    EXPECT_NEAR(pActual[0], pX, pTolerance);
    EXPECT_NEAR(pActual[1], pY, pTolerance);
    EXPECT_NEAR(pActual[2], pZ, pTolerance);
}

// The three doubles of a node's local transform property.
inline OrvVector4 PropertyValue(const OrvProperty& pProperty)
{
    double lValue[3] = {0.0, 0.0, 0.0};
    pProperty.Get(lValue, eOrvDouble3);
    return OrvVector4(lValue[0], lValue[1], lValue[2]);
}

// The file pName + pExtension in the folder pFolder of the shared data folder.
inline std::string SharedDataPath(const char* pFolder, const std::string& pName, const char* pExtension)
{
    return (std::filesystem::path(ORV_SHARED_DATA_DIR) / pFolder / (pName + pExtension)).string();
}

inline bool HasSharedData()
{
    return std::filesystem::is_directory(ORV_SHARED_DATA_DIR);
}

} // namespace hosttest
} // namespace orvsdk

#endif
