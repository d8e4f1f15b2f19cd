// Scene graph: ownership and connections, node hierarchy, properties, and the local transform
// evaluation checked against matrices built by hand. Global transforms and curve-driven values
// are checked against the reference kinematics by the import and export tests.

#include "orvsdk/host/math/OrvAMatrix.h"
#include "orvsdk/host/math/OrvEuler.h"

#include "support/HostSceneSupport.h"
#include "support/ReferenceKinematics.h"

#include <gtest/gtest.h>

using namespace orvsdk;
using namespace orvsdk::hosttest;

namespace {

OrvScenePtr MakeScene()
{
    return OrvCreateScene("Scene");
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

// The matrix that translates by pTranslation after scaling by pScale.
OrvAMatrix TranslationScaling(const OrvVector4& pTranslation, const OrvVector4& pScale = OrvVector4(1, 1, 1))
{
    OrvAMatrix lMatrix;
    for (int r = 0; r < 3; ++r)
    {
        lMatrix(r, 3) = pTranslation[r];
        lMatrix(r, r) = pScale[r];
    }
    return lMatrix;
}

const OrvVector4 kRotation(10.0, 20.0, 30.0);
const OrvVector4 kPre(5.0, -15.0, 25.0);
const OrvVector4 kPost(-7.0, 12.0, 3.0);
const OrvVector4 kScale(1.0, 2.0, 0.5);
// The local translation (1, -2, 3) plus the rotation offset (0.5, 0, -1).
const OrvVector4 kOffsetTranslation(1.5, -2.0, 2.0);

// A node with every transform setting away from its default.
OrvNode* MakeTransformedNode(OrvScene& pScene, OrvEuler::EOrder pOrder)
{
    OrvNode* lNode = OrvNode::Create(&pScene, "Joint");
    SetProperty(lNode->LclTranslation, OrvVector4(1.0, -2.0, 3.0));
    SetProperty(lNode->LclRotation, kRotation);
    SetProperty(lNode->LclScaling, kScale);
    SetRotation(lNode, pOrder, kPre, kPost);
    lNode->SetRotationOffset(OrvNode::eSourcePivot, OrvVector4(0.5, 0.0, -1.0));
    return lNode;
}

// Translation and offset, pre-rotation, the rotation in its order, inverse post-rotation, scaling.
OrvAMatrix ExpectedLocal(const OrvVector4& pTranslation, const OrvVector4& pRotation, int pOrder)
{
    return TranslationScaling(pTranslation) * RotationInSequence(kPre, 0) * RotationInSequence(pRotation, pOrder) *
           RotationInSequence(kPost, 0, true) * TranslationScaling(OrvVector4(), kScale);
}

} // namespace

// --- Transform evaluation ------------------------------------------------------------------------

TEST(HostNodeTransform, LocalTransformComposesOffsetPreRotationOrderPostRotationAndScalingForEveryOrder)
{
    for (int lOrder = 0; lOrder < 6; ++lOrder)
    {
        SCOPED_TRACE(lOrder);
        OrvScenePtr lScene = MakeScene();
        OrvNode* lNode = MakeTransformedNode(*lScene, static_cast<OrvEuler::EOrder>(lOrder));
        EXPECT_TRUE(MatricesNear(ExpectedLocal(kOffsetTranslation, kRotation, lOrder), lNode->EvaluateLocalTransform(), 1e-9));
    }
}

TEST(HostNodeTransform, InactiveRotationIgnoresOrderPreAndPostRotationButKeepsOffset)
{
    OrvScenePtr lScene = MakeScene();
    OrvNode* lNode = MakeTransformedNode(*lScene, OrvEuler::eOrderZYX);
    lNode->SetRotationActive(false);
    EXPECT_TRUE(MatricesNear(TranslationScaling(kOffsetTranslation) * RotationInSequence(kRotation, 0) *
                                 TranslationScaling(OrvVector4(), kScale),
                             lNode->EvaluateLocalTransform(), 1e-9));
}

TEST(HostNodeTransform, DestinationPivotSettingsDoNotTakePartInEvaluation)
{
    OrvScenePtr lScene = MakeScene();
    OrvNode* lNode = MakeTransformedNode(*lScene, OrvEuler::eOrderYZX);
    const OrvAMatrix lBefore = lNode->EvaluateLocalTransform();
    lNode->SetRotationOrder(OrvNode::eDestinationPivot, OrvEuler::eOrderXYZ);
    lNode->SetPreRotation(OrvNode::eDestinationPivot, OrvVector4(90.0, 0.0, 0.0));
    lNode->SetRotationOffset(OrvNode::eDestinationPivot, OrvVector4(9.0, 9.0, 9.0));
    EXPECT_TRUE(MatricesNear(lBefore, lNode->EvaluateLocalTransform()));
}

// --- Properties -----------------------------------------------------------------------------------

TEST(HostProperty, ValuesAreReadAndWrittenOnlyWithTheirOwnTypeCode)
{
    OrvScenePtr lScene = MakeScene();
    OrvNode* lNode = OrvNode::Create(lScene.get(), "Joint");
    double lScale[3] = {7.0, 7.0, 7.0};
    EXPECT_FALSE(lNode->LclTranslation.Set(lScale, eOrvDouble));
    EXPECT_FALSE(lNode->LclScaling.Get(lScale, static_cast<EOrvType>(15)));
    EXPECT_FALSE(lNode->RootProperty.Set(lScale, eOrvDouble3));
    EXPECT_EQ(OrvVector4(), lNode->EvaluateLocalTranslation());
    EXPECT_EQ(7.0, lScale[0]);
}

// --- Scene ownership and connections ---------------------------------------------------------------

TEST(HostScene, ObjectsAreConnectedToTheirSceneAndFoundByTypeAndName)
{
    OrvScenePtr lScene = MakeScene();
    OrvNode* lNode = OrvNode::Create(lScene.get(), "ns:Hips");
    OrvAnimStack::Create(lScene.get(), "Walk");
    OrvAnimStack* lRun = OrvAnimStack::Create(lScene.get(), "Run");
    const OrvCriteria lStacks = OrvCriteria::ObjectType(OrvAnimStack::ClassId);
    EXPECT_EQ(lRun, lScene->RootProperty.FindSrcObject(lStacks, "Run", 0));
    EXPECT_EQ(nullptr, lScene->RootProperty.FindSrcObject(lStacks, "run", 0));
    EXPECT_EQ(nullptr, lScene->RootProperty.FindSrcObject(lStacks, "Walk", 1));
    EXPECT_EQ(2, lScene->RootProperty.GetSrcObjectCount<OrvNode>());  // root node and Hips, not the stacks
    EXPECT_STREQ("Hips", lNode->GetNameWithoutNameSpacePrefix().Buffer());
}

TEST(HostScene, DestroyDisconnectsOrTakesTheObjectsBelowButNeverTheRootNode)
{
    // RootNode
    // └── Hips
    //     ├── Spine
    //     │   └── Head
    //     └── Leg (skeleton attribute)
    //         └── Foot
    OrvScenePtr lScene = MakeScene();
    OrvNode* lRoot = lScene->GetRootNode();
    OrvNode* lHips = OrvNode::Create(lRoot, "Hips");
    OrvNode* lSpine = OrvNode::Create(lHips, "Spine");
    OrvNode* lHead = OrvNode::Create(lSpine, "Head");
    OrvNode* lLeg = OrvNode::Create(lHips, "Leg");
    lLeg->SetNodeAttribute(OrvSkeleton::Create(lScene.get(), ""));
    OrvNode::Create(lLeg, "Foot");
    const int lObjects = lScene->GetObjectCount();

    lSpine->Destroy();  // alone: its child stays in the scene
    EXPECT_EQ(lObjects - 1, lScene->GetObjectCount());
    EXPECT_EQ(lLeg, lHips->GetChild(0));
    EXPECT_EQ(nullptr, lHead->GetParent());

    lHips->Destroy(true);  // with everything connected below: Leg, its attribute and Foot
    EXPECT_EQ(lObjects - 5, lScene->GetObjectCount());
    EXPECT_EQ(0, lRoot->GetChildCount());

    OrvNode::Create(lRoot, "Hips");
    lRoot->Destroy(true);
    EXPECT_EQ(lRoot, lScene->GetRootNode());
    EXPECT_EQ(1, lRoot->GetChildCount());
}

TEST(HostScene, ObjectsOfAnotherSceneCannotBeConnected)
{
    OrvScenePtr lFirst = MakeScene();
    OrvScenePtr lSecond = MakeScene();
    OrvNode* lNode = OrvNode::Create(lFirst.get(), "Hips");

    EXPECT_FALSE(lNode->AddChild(OrvNode::Create(lSecond.get(), "Hips")));
    EXPECT_FALSE(lNode->SetNodeAttribute(OrvSkeleton::Create(lSecond.get(), "")));
    EXPECT_EQ(nullptr, lNode->LclTranslation.GetCurveNode(OrvAnimStack::Create(lSecond.get(), "Take"), true));
    lFirst->SetCurrentAnimationStack(OrvAnimStack::Create(lSecond.get(), "Other"));
    EXPECT_EQ(nullptr, lFirst->GetCurrentAnimationStack());
}

// --- Hierarchy -------------------------------------------------------------------------------------

TEST(HostNodeHierarchy, AddChildReparentsAndRefusesCycles)
{
    // A -> B -> C, then C moved under A.
    OrvScenePtr lScene = MakeScene();
    OrvNode* lA = OrvNode::Create(lScene.get(), "A");
    OrvNode* lB = OrvNode::Create(lA, "B");
    OrvNode* lC = OrvNode::Create(lB, "C");

    EXPECT_FALSE(lC->AddChild(lA));
    EXPECT_FALSE(lB->AddChild(lB));
    EXPECT_FALSE(lC->AddChild(lScene->GetRootNode()));
    EXPECT_FALSE(lA->AddChild(nullptr));

    ASSERT_TRUE(lA->AddChild(lC));
    EXPECT_EQ(0, lB->GetChildCount());
    EXPECT_EQ(lC, lA->GetChild(1));
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
    OrvScenePtr lScene = MakeScene();
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
}
