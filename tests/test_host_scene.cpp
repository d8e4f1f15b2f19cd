// Scene graph: ownership and connections, node hierarchy, attributes, properties, and the local
// and global transform evaluation checked against matrices built by hand.

#include "orvsdk/host/math/OrvAMatrix.h"
#include "orvsdk/host/anim/OrvAnimCurve.h"
#include "orvsdk/host/anim/OrvAnimCurveKey.h"
#include "orvsdk/host/anim/OrvAnimCurveNode.h"
#include "orvsdk/host/anim/OrvAnimStack.h"
#include "orvsdk/host/math/OrvEuler.h"
#include "orvsdk/host/scene/OrvNode.h"
#include "orvsdk/host/scene/OrvScene.h"
#include "orvsdk/host/scene/OrvSkeleton.h"

#include "support/HostSceneSupport.h"
#include "support/ReferenceKinematics.h"

#include <gtest/gtest.h>

using namespace orvsdk;
using hosttest::ScenePointer;

namespace {

ScenePointer MakeScene()
{
    return ScenePointer(OrvScene::Create("Scene"));
}

// The X, Y, Z angles pAngles applied one axis after the other in the sequence of pOrder, or the
// inverse of that rotation, computed by the independent maths of the tests.
OrvAMatrix RotationInSequence(const OrvVector4& pAngles, int pOrder, bool pInverse = false)
{
    const math3::Mat3 lRotation = reference::EulerRotation(pAngles, pOrder);
    OrvAMatrix lMatrix;
    for (int r = 0; r < 3; ++r)
        for (int c = 0; c < 3; ++c) lMatrix(r, c) = pInverse ? lRotation[c][r] : lRotation[r][c];
    return lMatrix;
}

OrvAMatrix Translation(const OrvVector4& pVector)
{
    OrvAMatrix lMatrix;
    for (int r = 0; r < 3; ++r) lMatrix(r, 3) = pVector[r];
    return lMatrix;
}

OrvAMatrix Scaling(const OrvVector4& pScale)
{
    OrvAMatrix lMatrix;
    for (int r = 0; r < 3; ++r) lMatrix(r, r) = pScale[r];
    return lMatrix;
}

void ExpectMatrixNear(const OrvAMatrix& pExpected, const OrvAMatrix& pActual, double pTolerance = 1e-9)
{
    for (int r = 0; r < 4; ++r)
        for (int c = 0; c < 4; ++c) EXPECT_NEAR(pExpected(r, c), pActual(r, c), pTolerance) << "element " << r << "," << c;
}

void SetVector(OrvProperty& pProperty, double pX, double pY, double pZ)
{
    const double lValue[3] = {pX, pY, pZ};
    ASSERT_TRUE(pProperty.Set(lValue, eOrvDouble3));
}

// A node with every transform setting away from its default.
OrvNode* MakeTransformedNode(OrvScene& pScene, OrvEuler::EOrder pOrder)
{
    OrvNode* lNode = OrvNode::Create(&pScene, "Joint");
    SetVector(lNode->LclTranslation, 1.0, -2.0, 3.0);
    SetVector(lNode->LclRotation, 10.0, 20.0, 30.0);
    SetVector(lNode->LclScaling, 1.0, 2.0, 0.5);
    lNode->SetRotationActive(true);
    lNode->SetRotationOrder(OrvNode::eSourcePivot, pOrder);
    lNode->SetRotationOffset(OrvNode::eSourcePivot, OrvVector4(0.5, 0.0, -1.0));
    lNode->SetPreRotation(OrvNode::eSourcePivot, OrvVector4(5.0, -15.0, 25.0));
    lNode->SetPostRotation(OrvNode::eSourcePivot, OrvVector4(-7.0, 12.0, 3.0));
    return lNode;
}

} // namespace

// --- Transform evaluation ------------------------------------------------------------------------

TEST(HostNodeTransform, LocalTransformComposesOffsetPreRotationOrderPostRotationAndScalingForEveryOrder)
{
    for (int lOrder = 0; lOrder < 6; ++lOrder)
    {
        SCOPED_TRACE(lOrder);
        ScenePointer lScene = MakeScene();
        OrvNode* lNode = MakeTransformedNode(*lScene, static_cast<OrvEuler::EOrder>(lOrder));

        const OrvAMatrix lExpected = Translation(OrvVector4(1.5, -2.0, 2.0)) *
                                     RotationInSequence(OrvVector4(5.0, -15.0, 25.0), 0) *
                                     RotationInSequence(OrvVector4(10.0, 20.0, 30.0), lOrder) *
                                     RotationInSequence(OrvVector4(-7.0, 12.0, 3.0), 0, true) *
                                     Scaling(OrvVector4(1.0, 2.0, 0.5));
        ExpectMatrixNear(lExpected, lNode->EvaluateLocalTransform());
    }
}

TEST(HostNodeTransform, InactiveRotationIgnoresOrderPreAndPostRotationButKeepsOffset)
{
    ScenePointer lScene = MakeScene();
    OrvNode* lNode = MakeTransformedNode(*lScene, OrvEuler::eOrderZYX);
    lNode->SetRotationActive(false);

    const OrvAMatrix lExpected = Translation(OrvVector4(1.5, -2.0, 2.0)) *
                                 RotationInSequence(OrvVector4(10.0, 20.0, 30.0), 0) *
                                 Scaling(OrvVector4(1.0, 2.0, 0.5));
    ExpectMatrixNear(lExpected, lNode->EvaluateLocalTransform());
}

TEST(HostNodeTransform, DestinationPivotSettingsDoNotTakePartInEvaluation)
{
    ScenePointer lScene = MakeScene();
    OrvNode* lNode = MakeTransformedNode(*lScene, OrvEuler::eOrderYZX);
    const OrvAMatrix lBefore = lNode->EvaluateLocalTransform();
    lNode->SetRotationOrder(OrvNode::eDestinationPivot, OrvEuler::eOrderXYZ);
    lNode->SetPreRotation(OrvNode::eDestinationPivot, OrvVector4(90.0, 0.0, 0.0));
    lNode->SetRotationOffset(OrvNode::eDestinationPivot, OrvVector4(9.0, 9.0, 9.0));

    ExpectMatrixNear(lBefore, lNode->EvaluateLocalTransform(), 0.0);
    EXPECT_EQ(OrvVector4(9.0, 9.0, 9.0), lNode->GetRotationOffset(OrvNode::eDestinationPivot));
    EXPECT_EQ(OrvVector4(0.5, 0.0, -1.0), lNode->GetRotationOffset(OrvNode::eSourcePivot));
}

TEST(HostNodeTransform, CurvesKeyedAtTwoTimesAreInterpolatedAtTheMiddle)
{
    ScenePointer lScene = MakeScene();
    OrvNode* lNode = MakeTransformedNode(*lScene, OrvEuler::eOrderZXY);
    const OrvTime lStart = OrvTime::FromSeconds(1.0);
    const OrvTime lEnd = OrvTime::FromSeconds(2.0);
    const OrvTime lMiddle = OrvTime::FromSeconds(1.5);

    // Translation Y and rotation Z animated; the other channels keep their values.
    OrvAnimCurveNode* lTranslationNode = lNode->LclTranslation.GetCurveNode(nullptr, true);
    OrvAnimCurveNode* lRotationNode = lNode->LclRotation.GetCurveNode(nullptr, true);
    OrvAnimCurve* lTranslationY = OrvAnimCurve::Create(lScene.get(), "ty");
    OrvAnimCurve* lRotationZ = OrvAnimCurve::Create(lScene.get(), "rz");
    OrvAnimCurveKey lKey;
    lTranslationY->KeyAdd(lStart, (lKey.Set(lStart, 4.0f), lKey));
    lTranslationY->KeyAdd(lEnd, (lKey.Set(lEnd, 8.0f), lKey));
    lRotationZ->KeyAdd(lStart, (lKey.Set(lStart, -40.0f), lKey));
    lRotationZ->KeyAdd(lEnd, (lKey.Set(lEnd, 80.0f), lKey));
    ASSERT_TRUE(lTranslationNode->ConnectToChannel(lTranslationY, 1));
    ASSERT_TRUE(lRotationNode->ConnectToChannel(lRotationZ, 2));

    EXPECT_EQ(OrvVector4(1.0, 6.0, 3.0), lNode->EvaluateLocalTranslation(lMiddle));
    EXPECT_EQ(OrvVector4(10.0, 20.0, 20.0), lNode->EvaluateLocalRotation(lMiddle));
    EXPECT_EQ(OrvVector4(1.0, 2.0, 0.5), lNode->EvaluateLocalScaling(lMiddle));

    const OrvAMatrix lExpected = Translation(OrvVector4(1.5, 6.0, 2.0)) *
                                 RotationInSequence(OrvVector4(5.0, -15.0, 25.0), 0) *
                                 RotationInSequence(OrvVector4(10.0, 20.0, 20.0), OrvEuler::eOrderZXY) *
                                 RotationInSequence(OrvVector4(-7.0, 12.0, 3.0), 0, true) *
                                 Scaling(OrvVector4(1.0, 2.0, 0.5));
    ExpectMatrixNear(lExpected, lNode->EvaluateLocalTransform(lMiddle));
}

TEST(HostNodeTransform, ChannelValueStandsInForACurveWithoutKeys)
{
    ScenePointer lScene = MakeScene();
    OrvNode* lNode = OrvNode::Create(lScene.get(), "Joint");
    SetVector(lNode->LclTranslation, 1.0, 2.0, 3.0);
    OrvAnimCurveNode* lCurveNode = lNode->LclTranslation.GetCurveNode(nullptr, true);
    const double lChannelValue = -5.0;
    ASSERT_TRUE(lCurveNode->GetChannel(0).Set(&lChannelValue, eOrvDouble));
    ASSERT_TRUE(lCurveNode->ConnectToChannel(OrvAnimCurve::Create(lScene.get(), "empty"), 0));

    EXPECT_EQ(OrvVector4(-5.0, 2.0, 3.0), lNode->EvaluateLocalTranslation());
}

TEST(HostNodeTransform, GlobalTransformIsTheProductOfLocalTransformsFromTheTopDown)
{
    // RootNode
    // └── Hips
    //     └── Spine
    //         └── Head
    ScenePointer lScene = MakeScene();
    OrvNode* lHips = MakeTransformedNode(*lScene, OrvEuler::eOrderXZY);
    OrvNode* lSpine = MakeTransformedNode(*lScene, OrvEuler::eOrderYXZ);
    OrvNode* lHead = OrvNode::Create(lScene.get(), "Head");
    SetVector(lHead->LclTranslation, 0.0, 4.0, 0.0);
    SetVector(lSpine->LclRotation, -30.0, 45.0, 60.0);
    ASSERT_TRUE(lScene->GetRootNode()->AddChild(lHips));
    ASSERT_TRUE(lHips->AddChild(lSpine));
    ASSERT_TRUE(lSpine->AddChild(lHead));

    const OrvAMatrix lExpected =
        lHips->EvaluateLocalTransform() * lSpine->EvaluateLocalTransform() * lHead->EvaluateLocalTransform();
    ExpectMatrixNear(lExpected, lHead->EvaluateGlobalTransform());
    ExpectMatrixNear(lHips->EvaluateLocalTransform(), lHips->EvaluateGlobalTransform());
}

// --- Properties -----------------------------------------------------------------------------------

TEST(HostProperty, ValuesAreReadAndWrittenOnlyWithTheirOwnTypeCode)
{
    ScenePointer lScene = MakeScene();
    OrvNode* lNode = OrvNode::Create(lScene.get(), "Joint");
    double lScale[3] = {0.0, 0.0, 0.0};
    ASSERT_TRUE(lNode->LclScaling.Get(lScale, eOrvDouble3));
    EXPECT_EQ(1.0, lScale[0]);
    EXPECT_EQ(1.0, lScale[2]);

    const double lOne = 7.0;
    EXPECT_FALSE(lNode->LclTranslation.Set(&lOne, eOrvDouble));
    EXPECT_FALSE(lNode->LclTranslation.Set(&lOne, static_cast<EOrvType>(13)));
    EXPECT_FALSE(lNode->LclTranslation.Get(lScale, static_cast<EOrvType>(15)));
    EXPECT_FALSE(lNode->RootProperty.Set(&lOne, eOrvDouble3));
    EXPECT_EQ(OrvVector4(), lNode->EvaluateLocalTranslation());
    EXPECT_EQ(1.0, lScale[0]);
}

// --- Scene ownership and connections ---------------------------------------------------------------

TEST(HostScene, ObjectsAreConnectedToTheirSceneAndFoundByTypeAndName)
{
    ScenePointer lScene = MakeScene();
    OrvNode* lNode = OrvNode::Create(lScene.get(), "ns:Hips");
    OrvAnimStack* lWalk = OrvAnimStack::Create(lScene.get(), "Walk");
    OrvAnimStack* lRun = OrvAnimStack::Create(lScene.get(), "Run");
    const OrvCriteria lStacks = OrvCriteria::ObjectType(OrvAnimStack::ClassId);

    EXPECT_EQ(lScene.get(), lNode->RootProperty.GetDstObject(OrvCriteria::ObjectType(OrvScene::ClassId), 0));
    EXPECT_EQ(lRun, lScene->RootProperty.FindSrcObject(lStacks, "Run", 0));
    EXPECT_EQ(nullptr, lScene->RootProperty.FindSrcObject(lStacks, "run", 0));
    EXPECT_EQ(nullptr, lScene->RootProperty.FindSrcObject(lStacks, "Walk", 1));
    EXPECT_EQ(lWalk, lScene->RootProperty.GetSrcObject<OrvAnimStack>(0));
    EXPECT_EQ(2, lScene->RootProperty.GetSrcObjectCount(lStacks));
    // Root node and Hips; a node is an object but not a stack.
    EXPECT_EQ(2, lScene->RootProperty.GetSrcObjectCount<OrvNode>());
    EXPECT_STREQ("Hips", lNode->GetNameWithoutNameSpacePrefix().Buffer());
    EXPECT_TRUE(lNode->Is(OrvObject::ClassId));
    EXPECT_FALSE(lNode->Is(OrvScene::ClassId));
}

TEST(HostScene, DestroyingANodeDisconnectsItFromParentChildrenAndScene)
{
    // RootNode
    // └── Hips
    //     └── Spine
    //         └── Head
    ScenePointer lScene = MakeScene();
    OrvNode* lHips = OrvNode::Create(lScene->GetRootNode(), "Hips");
    OrvNode* lSpine = OrvNode::Create(lHips, "Spine");
    OrvNode* lHead = OrvNode::Create(lSpine, "Head");
    const int lObjects = lScene->GetObjectCount();

    lSpine->Destroy();

    EXPECT_EQ(lObjects - 1, lScene->GetObjectCount());
    EXPECT_EQ(0, lHips->GetChildCount());
    EXPECT_EQ(nullptr, lHead->GetParent());
    EXPECT_EQ(lScene.get(), lHead->GetScene());
    EXPECT_EQ(nullptr, lScene->RootProperty.FindSrcObject(OrvCriteria::ObjectType(OrvNode::ClassId), "Spine"));
}

TEST(HostScene, RecursiveDestroyTakesTheObjectsConnectedBelow)
{
    ScenePointer lScene = MakeScene();
    OrvNode* lHips = OrvNode::Create(lScene->GetRootNode(), "Hips");
    OrvNode* lSpine = OrvNode::Create(lHips, "Spine");
    OrvNode::Create(lSpine, "Head");
    OrvSkeleton* lBone = OrvSkeleton::Create(lScene.get(), "");
    lSpine->SetNodeAttribute(lBone);
    const int lObjects = lScene->GetObjectCount();

    lHips->Destroy(true);

    EXPECT_EQ(lObjects - 4, lScene->GetObjectCount());
    EXPECT_EQ(0, lScene->GetRootNode()->GetChildCount());
}

TEST(HostScene, RootNodeSurvivesDestroy)
{
    ScenePointer lScene = MakeScene();
    OrvNode* lRoot = lScene->GetRootNode();
    OrvNode::Create(lRoot, "Hips");
    lRoot->Destroy(true);
    EXPECT_EQ(lRoot, lScene->GetRootNode());
    EXPECT_EQ(1, lRoot->GetChildCount());
}

TEST(HostScene, SceneDestroyFreesEverythingItOwns)
{
    // Checked by the sanitizer build: nothing may leak.
    OrvScene* lScene = OrvScene::Create("Scene");
    OrvNode* lNode = OrvNode::Create(lScene->GetRootNode(), "Hips");
    lNode->SetNodeAttribute(OrvSkeleton::Create(lScene, ""));
    OrvAnimCurveNode* lCurveNode = lNode->LclRotation.GetCurveNode(nullptr, true);
    OrvAnimCurve* lCurve = OrvAnimCurve::Create(lScene, "rx");
    OrvAnimCurveKey lKey;
    for (int i = 0; i < 100; ++i) lCurve->KeyAdd(OrvTime(i), lKey);
    lCurveNode->ConnectToChannel(lCurve, 0);
    EXPECT_EQ(7, lScene->GetObjectCount());  // root, node, skeleton, stack, layer, curve node, curve
    lScene->Destroy();
}

TEST(HostScene, ObjectsOfAnotherSceneCannotBeConnected)
{
    ScenePointer lFirst = MakeScene();
    ScenePointer lSecond = MakeScene();
    OrvNode* lNode = OrvNode::Create(lFirst.get(), "Hips");
    OrvNode* lStranger = OrvNode::Create(lSecond.get(), "Hips");

    EXPECT_FALSE(lNode->AddChild(lStranger));
    EXPECT_FALSE(lNode->SetNodeAttribute(OrvSkeleton::Create(lSecond.get(), "")));
    EXPECT_EQ(nullptr, lNode->LclTranslation.GetCurveNode(OrvAnimStack::Create(lSecond.get(), "Take"), true));
    lFirst->SetCurrentAnimationStack(OrvAnimStack::Create(lSecond.get(), "Other"));
    EXPECT_EQ(nullptr, lFirst->GetCurrentAnimationStack());
}

// --- Hierarchy -------------------------------------------------------------------------------------

TEST(HostNodeHierarchy, AddChildReparentsAndRefusesCycles)
{
    ScenePointer lScene = MakeScene();
    OrvNode* lA = OrvNode::Create(lScene.get(), "A");
    OrvNode* lB = OrvNode::Create(lScene.get(), "B");
    OrvNode* lC = OrvNode::Create(lScene.get(), "C");
    ASSERT_TRUE(lA->AddChild(lB));
    ASSERT_TRUE(lB->AddChild(lC));

    EXPECT_FALSE(lC->AddChild(lA));
    EXPECT_FALSE(lB->AddChild(lB));
    EXPECT_FALSE(lC->AddChild(lScene->GetRootNode()));
    EXPECT_FALSE(lA->AddChild(nullptr));

    ASSERT_TRUE(lA->AddChild(lC));
    EXPECT_EQ(lA, lC->GetParent());
    EXPECT_EQ(0, lB->GetChildCount());
    EXPECT_EQ(lC, lA->GetChild(1));
    EXPECT_EQ(nullptr, lA->GetChild(2));
    EXPECT_TRUE(lA->AddChild(lB));  // already a child: order unchanged
    EXPECT_EQ(lB, lA->GetChild(0));
    EXPECT_EQ(lB, lA->RemoveChild(lB));
    EXPECT_EQ(nullptr, lA->RemoveChild(lB));
}

TEST(HostNodeHierarchy, FindChildSearchesDirectChildrenBeforeSubtreesInChildOrder)
{
    // Top
    // ├── A
    // │   └── A1
    // │       └── Target   (depth 3, under the first child)
    // ├── B
    // │   └── Target       (depth 2, under the second child)
    // └── C
    ScenePointer lScene = MakeScene();
    OrvNode* lTop = OrvNode::Create(lScene.get(), "Top");
    OrvNode* lA = OrvNode::Create(lTop, "A");
    OrvNode* lB = OrvNode::Create(lTop, "B");
    OrvNode* lC = OrvNode::Create(lTop, "C");
    OrvNode* lDeep = OrvNode::Create(OrvNode::Create(lA, "A1"), "Target");
    OrvNode::Create(lB, "Target");

    EXPECT_EQ(lC, lTop->FindChild("C", false));
    EXPECT_EQ(nullptr, lTop->FindChild("Target", false));
    EXPECT_EQ(lDeep, lTop->FindChild("Target", true));
    EXPECT_EQ(nullptr, lTop->FindChild("target", true));
    EXPECT_EQ(nullptr, lTop->FindChild("Top", true));
    EXPECT_EQ(6, lTop->GetChildCount(true));
    EXPECT_EQ(3, lTop->GetChildCount(false));
}

TEST(HostNodeHierarchy, NodeAttributeIsReplacedAndSkeletonRecognised)
{
    ScenePointer lScene = MakeScene();
    OrvNode* lNode = OrvNode::Create(lScene.get(), "Hips");
    OrvSkeleton* lSkeleton = OrvSkeleton::Create(lScene.get(), "");
    lSkeleton->SetSkeletonType(OrvSkeleton::eLimbNode);
    OrvNodeAttribute* lPlain = OrvNodeAttribute::Create(lScene.get(), "plain");

    EXPECT_EQ(nullptr, lNode->GetSkeleton());
    ASSERT_TRUE(lNode->SetNodeAttribute(lSkeleton));
    EXPECT_EQ(lSkeleton, lNode->GetSkeleton());
    EXPECT_EQ(OrvSkeleton::eLimbNode, lNode->GetSkeleton()->GetSkeletonType());

    ASSERT_TRUE(lNode->SetNodeAttribute(lPlain));
    EXPECT_EQ(lPlain, lNode->GetNodeAttribute());
    EXPECT_EQ(nullptr, lNode->GetSkeleton());
    EXPECT_EQ(0, lNode->GetChildCount());

    ASSERT_TRUE(lNode->SetNodeAttribute(nullptr));
    EXPECT_EQ(nullptr, lNode->GetNodeAttribute());
}
