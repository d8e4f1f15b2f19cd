#ifndef ORVSDK_TESTS_SUPPORT_HOSTSCENESUPPORT_H
#define ORVSDK_TESTS_SUPPORT_HOSTSCENESUPPORT_H

// Helpers shared by the tests that build or read host scenes: scenes with an animation stack,
// joints with rotation settings and keyed curves, and paths into the shared data folder.

#include "orvsdk/host/anim/OrvAnimCurve.h"
#include "orvsdk/host/anim/OrvAnimCurveKey.h"
#include "orvsdk/host/anim/OrvAnimCurveNode.h"
#include "orvsdk/host/anim/OrvAnimLayer.h"
#include "orvsdk/host/anim/OrvAnimStack.h"
#include "orvsdk/host/math/OrvAMatrix.h"
#include "orvsdk/host/scene/OrvNode.h"
#include "orvsdk/host/scene/OrvScene.h"
#include "orvsdk/host/scene/OrvSkeleton.h"

#include "Math3.h"

#include <gtest/gtest.h>

#include <cmath>
#include <filesystem>
#include <functional>
#include <string>
#include <unordered_map>
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

// The rotation of the X, Y, Z angles pAngles in the host's order pOrder.
inline OrvAMatrix RotationMatrix(const OrvVector4& pAngles, int pOrder)
{
    OrvAMatrix lMatrix;
    lMatrix.SetR(pAngles, pOrder);
    return lMatrix;
}

// Every element within pTolerance of the expected one, or NaN in both.
inline ::testing::AssertionResult MatricesNear(const OrvAMatrix& pExpected, const OrvAMatrix& pActual,
                                               double pTolerance = 0.0)
{
    for (int r = 0; r < 4; ++r)
        for (int c = 0; c < 4; ++c)
        {
            const bool lBothNaN = std::isnan(pExpected(r, c)) && std::isnan(pActual(r, c));
            const bool lNear = pExpected(r, c) == pActual(r, c) || std::fabs(pExpected(r, c) - pActual(r, c)) <= pTolerance;
            if (!lBothNaN && !lNear)
                return ::testing::AssertionFailure() << "element (" << r << "," << c << ") expected " << pExpected(r, c)
                                                     << " got " << pActual(r, c);
        }
    return ::testing::AssertionSuccess();
}

using PositionMap = std::unordered_map<std::string, math3::Vec3>;

// Adds the world position at pTime of pNode and of every node below it, by node name (a later
// node of the same name replaces an earlier one).
inline void AddWorldPositions(OrvNode* pNode, OrvTime pTime, PositionMap& pPositions)
{
    const OrvVector4 lPosition = pNode->EvaluateGlobalTransform(pTime).GetT();
    pPositions[pNode->GetName()] = math3::Vec3{lPosition[0], lPosition[1], lPosition[2]};
    for (int i = 0; i < pNode->GetChildCount(false); ++i) AddWorldPositions(pNode->GetChild(i), pTime, pPositions);
}

inline PositionMap WorldPositions(OrvNode* pNode, OrvTime pTime)
{
    PositionMap lPositions;
    AddWorldPositions(pNode, pTime, lPositions);
    return lPositions;
}

// The largest distance at pTime between each node below pExpected and the node below pActual
// named pRename(its name), or its own name without pRename; NaN when a distance is NaN; a
// failure and infinity when pActual has no such node.
inline double LargestDistance(OrvNode* pExpected, OrvNode* pActual, OrvTime pTime,
                              const std::function<std::string(const std::string&)>& pRename = nullptr)
{
    const PositionMap lActual = WorldPositions(pActual, pTime);
    double lLargest = 0.0;
    for (const auto& [lName, lPosition] : WorldPositions(pExpected, pTime))
    {
        const auto lFound = lActual.find(pRename ? pRename(lName) : lName);
        if (lFound == lActual.end())
        {
            ADD_FAILURE() << "no node for " << lName;
            return HUGE_VAL;
        }
        const double lDistance = math3::Distance(lFound->second, lPosition);
        if (!(lDistance <= lLargest)) lLargest = lDistance;
    }
    return lLargest;
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
