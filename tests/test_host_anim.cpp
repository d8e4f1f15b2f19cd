// Animation: curve nodes found or created through stacks and layers, curves on channels, keys
// and curve evaluation.

#include "orvsdk/host/anim/OrvAnimCurve.h"
#include "orvsdk/host/anim/OrvAnimCurveKey.h"
#include "orvsdk/host/anim/OrvAnimCurveNode.h"
#include "orvsdk/host/anim/OrvAnimLayer.h"
#include "orvsdk/host/anim/OrvAnimStack.h"
#include "orvsdk/host/core/OrvMemory.h"
#include "orvsdk/host/scene/OrvNode.h"
#include "orvsdk/host/scene/OrvScene.h"
#include "support/HostSceneSupport.h"

#include <gtest/gtest.h>

using namespace orvsdk;
using hosttest::AddKey;

namespace {

class HostAnimation : public ::testing::Test
{
protected:
    HostAnimation() : mScene(OrvScene::Create("Scene")), mNode(OrvNode::Create(mScene.get(), "Hips"))
    {
        const double lTranslation[3] = {1.0, 2.0, 3.0};
        mNode->LclTranslation.Set(lTranslation, eOrvDouble3);
    }

    // A curve with the values keyed one tick apart from tick 0.
    OrvAnimCurve* MakeCurve(const char* pName, std::initializer_list<float> pValues)
    {
        OrvAnimCurve* lCurve = OrvAnimCurve::Create(mScene.get(), pName);
        int64_t lTicks = 0;
        for (float lValue : pValues) AddKey(lCurve, lTicks++, lValue);
        return lCurve;
    }

    int CountOf(const OrvClassId& pClass) const
    {
        return mScene->RootProperty.GetSrcObjectCount(OrvCriteria::ObjectType(pClass));
    }

    OrvScenePtr mScene;
    OrvNode* mNode;
};

} // namespace

// --- Curve node lookup -----------------------------------------------------------------------------

TEST_F(HostAnimation, NamedStackGetsABaseLayerAndOneCurveNodePerProperty)
{
    OrvAnimStack* lStack = OrvAnimStack::Create(mScene.get(), "Walk");
    EXPECT_EQ(nullptr, mNode->LclTranslation.GetCurveNode(lStack, false));
    EXPECT_EQ(0, CountOf(OrvAnimLayer::ClassId));

    OrvAnimCurveNode* lCurveNode = mNode->LclTranslation.GetCurveNode(lStack, true);
    ASSERT_NE(nullptr, lCurveNode);
    OrvAnimLayer* lBase = lStack->GetBaseLayer();
    ASSERT_NE(nullptr, lBase);
    EXPECT_EQ(lCurveNode, mNode->LclTranslation.GetCurveNode(lStack, false));
    EXPECT_EQ(lCurveNode, mNode->LclTranslation.GetCurveNode(lBase, true));
    EXPECT_EQ(&mNode->LclTranslation, lCurveNode->GetAnimatedProperty());
    EXPECT_NE(lCurveNode, mNode->LclRotation.GetCurveNode(lStack, true));
    EXPECT_EQ(1, CountOf(OrvAnimLayer::ClassId));
    EXPECT_EQ(nullptr, mScene->GetCurrentAnimationStack());

    // Channels start at the property's value.
    double lY = 0.0;
    ASSERT_TRUE(lCurveNode->GetChannel(1).Get(&lY, eOrvDouble));
    EXPECT_EQ(2.0, lY);
    EXPECT_EQ(3u, lCurveNode->GetChannelsCount());
}

TEST_F(HostAnimation, NullStackWithoutCurrentStackCreatesTake001OnlyWhenAsked)
{
    EXPECT_EQ(nullptr, mNode->LclRotation.GetCurveNode(nullptr, false));
    EXPECT_EQ(0, CountOf(OrvAnimStack::ClassId));

    OrvAnimCurveNode* lCurveNode = mNode->LclRotation.GetCurveNode(nullptr, true);
    ASSERT_NE(nullptr, lCurveNode);
    OrvAnimStack* lTake = mScene->GetCurrentAnimationStack();
    ASSERT_NE(nullptr, lTake);
    EXPECT_STREQ("Take 001", lTake->GetName());
    EXPECT_EQ(lTake, mScene->RootProperty.FindSrcObject(OrvCriteria::ObjectType(OrvAnimStack::ClassId), "Take 001", 0));
    EXPECT_EQ(lCurveNode, mNode->LclRotation.GetCurveNode(static_cast<OrvAnimLayer*>(nullptr), false));
    EXPECT_EQ(lCurveNode, mNode->LclRotation.GetCurveNode(lTake, false));
    EXPECT_EQ(lTake->GetBaseLayer(), lCurveNode->RootProperty.GetDstObject<OrvAnimLayer>(0));
}

TEST_F(HostAnimation, NullStackMeansTheCurrentStack)
{
    OrvAnimStack* lWalk = OrvAnimStack::Create(mScene.get(), "Walk");
    OrvAnimStack* lRun = OrvAnimStack::Create(mScene.get(), "Run");
    OrvAnimCurveNode* lWalkNode = mNode->LclTranslation.GetCurveNode(lWalk, true);
    OrvAnimCurveNode* lRunNode = mNode->LclTranslation.GetCurveNode(lRun, true);

    mScene->SetCurrentAnimationStack(lRun);
    EXPECT_EQ(lRunNode, mNode->LclTranslation.GetCurveNode(nullptr, false));
    mScene->SetCurrentAnimationStack(lWalk);
    EXPECT_EQ(lWalkNode, mNode->LclTranslation.GetCurveNode(nullptr, false));

    lWalk->Destroy();
    EXPECT_EQ(nullptr, mScene->GetCurrentAnimationStack());
}

TEST_F(HostAnimation, CurveNodesOfDifferentLayersAreDistinct)
{
    OrvAnimStack* lStack = OrvAnimStack::Create(mScene.get(), "Walk");
    OrvAnimLayer* lBase = OrvAnimLayer::Create(lStack, "Base");
    OrvAnimLayer* lOverlay = OrvAnimLayer::Create(lStack, "Overlay");
    OrvAnimCurveNode* lOverlayNode = mNode->LclTranslation.GetCurveNode(lOverlay, true);

    EXPECT_EQ(lBase, lStack->GetBaseLayer());
    EXPECT_EQ(nullptr, mNode->LclTranslation.GetCurveNode(lStack, false));
    EXPECT_EQ(lOverlayNode, mNode->LclTranslation.GetCurveNode(lOverlay, false));
}

// --- Channels ----------------------------------------------------------------------------------------

TEST_F(HostAnimation, CurvesAreConnectedDisconnectedAndReplacedOnChannels)
{
    OrvAnimCurveNode* lCurveNode = mNode->LclTranslation.GetCurveNode(nullptr, true);
    OrvAnimCurve* lOld = MakeCurve("old", {1.0f, 2.0f});
    OrvAnimCurve* lNew = MakeCurve("new", {5.0f, 6.0f});

    ASSERT_TRUE(lCurveNode->ConnectToChannel(lOld, 0));
    EXPECT_FALSE(lCurveNode->ConnectToChannel(lOld, 0));
    EXPECT_FALSE(lCurveNode->ConnectToChannel(lOld, 3));
    ASSERT_TRUE(lCurveNode->ConnectToChannel(lNew, 0, true));
    EXPECT_EQ(lNew, lCurveNode->GetCurve(0));
    EXPECT_EQ(lOld, lCurveNode->GetCurve(0, 1));
    EXPECT_EQ(lOld, lCurveNode->GetCurve(0, 0, "old"));
    EXPECT_EQ(nullptr, lCurveNode->GetCurve(0, 1, "old"));
    EXPECT_EQ(2, lCurveNode->GetCurveCount(0));
    EXPECT_EQ(0, lCurveNode->GetCurveCount(1));

    // Replacing as the importer does: take the first curve off and destroy it.
    OrvAnimCurve* lFirst = lCurveNode->GetCurve(0);
    ASSERT_TRUE(lCurveNode->DisconnectFromChannel(lFirst, 0));
    EXPECT_FALSE(lCurveNode->DisconnectFromChannel(lFirst, 0));
    lFirst->Destroy();
    EXPECT_EQ(lOld, lCurveNode->GetCurve(0));
    EXPECT_EQ(1, lCurveNode->GetCurveCount(0));
}

TEST_F(HostAnimation, DestroyingACurveTakesItOffEveryChannel)
{
    OrvAnimCurveNode* lTranslation = mNode->LclTranslation.GetCurveNode(nullptr, true);
    OrvAnimCurveNode* lRotation = mNode->LclRotation.GetCurveNode(nullptr, true);
    OrvAnimCurve* lShared = MakeCurve("shared", {1.0f});
    lTranslation->ConnectToChannel(lShared, 2);
    lRotation->ConnectToChannel(lShared, 0);

    lShared->Destroy();

    EXPECT_EQ(nullptr, lTranslation->GetCurve(2));
    EXPECT_EQ(nullptr, lRotation->GetCurve(0));
}

TEST_F(HostAnimation, DestroyingTheAnimatedNodeLeavesItsCurveNodeWithoutProperty)
{
    OrvAnimCurveNode* lCurveNode = mNode->LclTranslation.GetCurveNode(nullptr, true);
    mNode->Destroy();
    EXPECT_EQ(nullptr, lCurveNode->GetAnimatedProperty());
    EXPECT_FALSE(lCurveNode->IsAnimated(true));
}

TEST_F(HostAnimation, ChannelOutsideTheRangeIsAnInvalidPropertyOfTheCurveNode)
{
    OrvAnimCurveNode* lCurveNode = mNode->LclTranslation.GetCurveNode(nullptr, true);
    OrvProperty& lMissing = lCurveNode->GetChannel(3);
    const double lValue = 1.0;
    double lRead = 0.0;

    EXPECT_TRUE(lCurveNode->GetChannel(2).IsValid());
    EXPECT_FALSE(lMissing.IsValid());
    EXPECT_EQ(lCurveNode, lMissing.GetOwner());
    EXPECT_FALSE(lMissing.Set(&lValue, eOrvDouble));
    EXPECT_FALSE(lMissing.Get(&lRead, eOrvDouble));
    EXPECT_EQ(nullptr, lMissing.GetCurveNode(nullptr, true));
    EXPECT_EQ(nullptr, lCurveNode->GetCurve(3));
}

TEST_F(HostAnimation, IsAnimatedOnlyWhenAConnectedCurveHoldsAKey)
{
    OrvAnimCurveNode* lCurveNode = mNode->LclRotation.GetCurveNode(nullptr, true);
    EXPECT_FALSE(lCurveNode->IsAnimated(true));
    OrvAnimCurve* lCurve = MakeCurve("rz", {});
    lCurveNode->ConnectToChannel(lCurve, 2);
    EXPECT_FALSE(lCurveNode->IsAnimated(true));

    OrvAnimCurveKey lKey(OrvTime(0), 1.0f);
    lCurve->KeyAdd(OrvTime(0), lKey);
    EXPECT_TRUE(lCurveNode->IsAnimated(true));
    EXPECT_TRUE(lCurveNode->IsAnimated(false));
}

// --- Keys and evaluation -------------------------------------------------------------------------------

TEST_F(HostAnimation, KeysStaySortedAndAKeyAtAnExistingTimeReplacesItsValue)
{
    OrvAnimCurve* lCurve = OrvAnimCurve::Create(mScene.get(), "tx");
    OrvAnimCurveKey lKey;
    int lLast = -1;

    lKey.Set(OrvTime(30), 3.0f);
    EXPECT_EQ(0, lCurve->KeyAdd(OrvTime(30), lKey));
    lKey.Set(OrvTime(10), 1.0f);
    EXPECT_EQ(0, lCurve->KeyAdd(OrvTime(10), lKey, &lLast));
    EXPECT_EQ(0, lLast);
    lKey.Set(OrvTime(20), 2.0f);
    EXPECT_EQ(1, lCurve->KeyAdd(OrvTime(20), lKey));
    lKey.Set(OrvTime(20), 9.0f);
    EXPECT_EQ(1, lCurve->KeyAdd(OrvTime(20), lKey));
    lKey.Set(OrvTime(40), 4.0f);
    EXPECT_EQ(3, lCurve->KeyAdd(OrvTime(40), lKey, &lLast));
    EXPECT_EQ(3, lLast);

    ASSERT_EQ(4, lCurve->KeyGetCount());
    const int64_t lTimes[4] = {10, 20, 30, 40};
    const float lValues[4] = {1.0f, 9.0f, 3.0f, 4.0f};
    for (int i = 0; i < 4; ++i)
    {
        EXPECT_EQ(lTimes[i], lCurve->KeyGetTime(i).Get());
        EXPECT_EQ(lValues[i], lCurve->KeyGetValue(i));
    }
    EXPECT_TRUE(lCurve->KeyRemove(1));
    EXPECT_FALSE(lCurve->KeyRemove(3));
    EXPECT_EQ(3.0f, lCurve->KeyGetValue(1));
    EXPECT_EQ(0.0f, lCurve->KeyGetValue(3));
}

TEST_F(HostAnimation, AppendedKeysKeepEveryValue)
{
    // The sampling path: many keys in time order.
    OrvAnimCurve* lCurve = OrvAnimCurve::Create(mScene.get(), "rx");
    OrvAnimCurveKey lKey;
    const int lCount = 100000;
    for (int i = 0; i < lCount; ++i)
    {
        const OrvTime lTime = OrvTime::FromFrame(i, 120.0);
        lKey.Set(lTime, static_cast<float>(i));
        ASSERT_EQ(i, lCurve->KeyAdd(lTime, lKey));
    }
    EXPECT_EQ(lCount, lCurve->KeyGetCount());
    EXPECT_EQ(77777.0f, lCurve->KeyGetValue(77777));
    EXPECT_EQ(77777.5f, lCurve->Evaluate(OrvTime::FromFrame(77777.5, 120.0)));
}

TEST_F(HostAnimation, EvaluateInterpolatesLinearlyAndHoldsTheEndValues)
{
    OrvAnimCurve* lCurve = OrvAnimCurve::Create(mScene.get(), "ry");
    EXPECT_EQ(0.0f, lCurve->Evaluate(OrvTime(5)));
    AddKey(lCurve, 100, -2.0f);
    AddKey(lCurve, 200, 6.0f);
    AddKey(lCurve, 300, 6.0f);

    EXPECT_EQ(-2.0f, lCurve->Evaluate(OrvTime(-1000)));
    EXPECT_EQ(-2.0f, lCurve->Evaluate(OrvTime(100)));
    EXPECT_EQ(0.0f, lCurve->Evaluate(OrvTime(125)));
    EXPECT_EQ(6.0f, lCurve->Evaluate(OrvTime(200)));
    EXPECT_EQ(6.0f, lCurve->Evaluate(OrvTime(250)));
    EXPECT_EQ(6.0f, lCurve->Evaluate(OrvTime(1000)));
}

TEST_F(HostAnimation, KeyRecordWithoutMemoryIsRefusedByCurves)
{
    OrvAnimCurve* lCurve = OrvAnimCurve::Create(mScene.get(), "tz");
    {
        OrvAllocFailureScope lNoMemory(1);
        OrvAnimCurveKey lKey;
        EXPECT_FALSE(lKey.IsValid());
        lKey.Set(OrvTime(7), 3.0f);
        EXPECT_EQ(0.0f, lKey.GetValue());
        EXPECT_EQ(-1, lCurve->KeyAdd(OrvTime(7), lKey));
    }
    EXPECT_EQ(0, lCurve->KeyGetCount());
    OrvAnimCurveKey lKey(OrvTime(7), 3.0f);
    EXPECT_EQ(7, lKey.GetTime().Get());
    EXPECT_EQ(0, lCurve->KeyAdd(OrvTime(7), lKey));
}

TEST_F(HostAnimation, ReservedRoomChangesNoKey)
{
    OrvAnimCurve* lCurve = OrvAnimCurve::Create(mScene.get(), "rz");
    lCurve->KeyReserve(-5);
    lCurve->KeyReserve(0);
    EXPECT_EQ(0, lCurve->KeyGetCount());
    AddKey(lCurve, 10, 1.0f);
    AddKey(lCurve, 20, 2.0f);
    lCurve->KeyReserve(1000);
    lCurve->KeyReserve(1);
    AddKey(lCurve, 15, 1.5f);
    EXPECT_EQ(3, lCurve->KeyGetCount());
    EXPECT_EQ(1.5f, lCurve->KeyGetValue(1));
    EXPECT_EQ(20, lCurve->KeyGetTime(2).Get());
}

TEST_F(HostAnimation, KeyRecordOnCallerStorageNeedsNoMemory)
{
    OrvAnimCurve* lCurve = OrvAnimCurve::Create(mScene.get(), "tx");
    OrvAnimCurveKeyImpl lStorage;
    lStorage.Set(OrvTime(99), 99.0f);
    {
        OrvAllocFailureScope lNoMemory(1);
        OrvAnimCurveKey lKey(lStorage);
        EXPECT_TRUE(lKey.IsValid());
        EXPECT_EQ(0.0f, lKey.GetValue());  // a new record, whatever the storage held
        lKey.Set(OrvTime(7), 3.0f);
        EXPECT_EQ(0, lCurve->KeyAdd(OrvTime(7), lKey));
    }
    // The record left its storage to the caller, set as it was last.
    EXPECT_EQ(3.0f, lStorage.GetValue());
    EXPECT_EQ(3.0f, lCurve->KeyGetValue(0));
}
