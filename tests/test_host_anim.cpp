// Animation: curve nodes found or created through stacks and layers, curves on channels, keys
// and curve evaluation.

#include "orvsdk/host/core/OrvMemory.h"
#include "support/HostSceneSupport.h"

#include <gtest/gtest.h>

using namespace orvsdk;
using hosttest::AddKey;
using hosttest::KeyValues;

namespace {

class HostAnimation : public ::testing::Test
{
protected:
    HostAnimation() : mScene(OrvScene::Create("Scene")), mNode(OrvNode::Create(mScene.get(), "Hips"))
    {
        const double lTranslation[3] = {1.0, 2.0, 3.0};
        mNode->LclTranslation.Set(lTranslation, eOrvDouble3);
    }

    OrvAnimCurve* MakeCurve(const char* pName) { return OrvAnimCurve::Create(mScene.get(), pName); }

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
    OrvAnimCurveNode* lCurveNode = mNode->LclTranslation.GetCurveNode(lStack, true);
    ASSERT_NE(nullptr, lCurveNode);
    EXPECT_EQ(lCurveNode, mNode->LclTranslation.GetCurveNode(lStack->GetBaseLayer(), true));
    EXPECT_NE(lCurveNode, mNode->LclRotation.GetCurveNode(lStack, true));
    EXPECT_EQ(1, CountOf(OrvAnimLayer::ClassId));

    // Channels start at the property's value.
    double lY = 0.0;
    ASSERT_TRUE(lCurveNode->GetChannel(1).Get(&lY, eOrvDouble));
    EXPECT_EQ(2.0, lY);
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
    EXPECT_EQ(lCurveNode, mNode->LclRotation.GetCurveNode(static_cast<OrvAnimLayer*>(nullptr), false));

    // Another current stack takes over the null stack; destroying it leaves none current.
    OrvAnimStack* lWalk = OrvAnimStack::Create(mScene.get(), "Walk");
    OrvAnimCurveNode* lWalkNode = mNode->LclRotation.GetCurveNode(lWalk, true);
    mScene->SetCurrentAnimationStack(lWalk);
    EXPECT_EQ(lWalkNode, mNode->LclRotation.GetCurveNode(nullptr, false));
    lWalk->Destroy();
    EXPECT_EQ(nullptr, mScene->GetCurrentAnimationStack());
}

// --- Channels ----------------------------------------------------------------------------------------

// Replacing a channel's curve as the import does: ImportPath.HandOverReplacesTheChannelsCurves...
TEST_F(HostAnimation, ChannelsRefuseRepeatedAndOutOfRangeConnections)
{
    OrvAnimCurveNode* lCurveNode = mNode->LclTranslation.GetCurveNode(nullptr, true);
    OrvAnimCurve* lOld = MakeCurve("old");
    OrvAnimCurve* lNew = MakeCurve("new");
    ASSERT_TRUE(lCurveNode->ConnectToChannel(lOld, 0));
    EXPECT_FALSE(lCurveNode->ConnectToChannel(lOld, 0));
    EXPECT_FALSE(lCurveNode->ConnectToChannel(lOld, 3));
    ASSERT_TRUE(lCurveNode->ConnectToChannel(lNew, 0, true));
    EXPECT_EQ(lOld, lCurveNode->GetCurve(0, 1));
    EXPECT_EQ(lOld, lCurveNode->GetCurve(0, 0, "old"));
    EXPECT_EQ(nullptr, lCurveNode->GetCurve(0, 1, "old"));
    ASSERT_TRUE(lCurveNode->DisconnectFromChannel(lNew, 0));
    EXPECT_FALSE(lCurveNode->DisconnectFromChannel(lNew, 0));

    // A channel past the last is an invalid property of the curve node.
    const double lValue = 1.0;
    EXPECT_FALSE(lCurveNode->GetChannel(3).Set(&lValue, eOrvDouble));
    EXPECT_EQ(nullptr, lCurveNode->GetChannel(3).GetCurveNode(nullptr, true));
}

TEST_F(HostAnimation, DestroyingACurveOrTheAnimatedNodeDisconnectsIt)
{
    OrvAnimCurveNode* lTranslation = mNode->LclTranslation.GetCurveNode(nullptr, true);
    OrvAnimCurveNode* lRotation = mNode->LclRotation.GetCurveNode(nullptr, true);
    OrvAnimCurve* lShared = MakeCurve("shared");
    lTranslation->ConnectToChannel(lShared, 2);
    lRotation->ConnectToChannel(lShared, 0);
    lShared->Destroy();
    EXPECT_EQ(nullptr, lTranslation->GetCurve(2));
    EXPECT_EQ(nullptr, lRotation->GetCurve(0));

    mNode->Destroy();
    EXPECT_EQ(nullptr, lTranslation->GetAnimatedProperty());
}

// --- Keys and evaluation -------------------------------------------------------------------------------

TEST_F(HostAnimation, KeysStaySortedAndAKeyAtAnExistingTimeReplacesItsValue)
{
    OrvAnimCurve* lCurve = MakeCurve("tx");
    lCurve->KeyReserve(-5);  // reserving room is a hint that refuses nothing
    OrvAnimCurveKey lKey;
    int lLast = -1;
    const struct
    {
        int64_t mTime;
        float mValue;
        int mIndex;
    } lAdds[] = {{30, 3.0f, 0}, {10, 1.0f, 0}, {20, 2.0f, 1}, {20, 9.0f, 1}, {40, 4.0f, 3}};
    for (const auto& lAdd : lAdds)
    {
        lKey.Set(OrvTime(lAdd.mTime), lAdd.mValue);
        EXPECT_EQ(lAdd.mIndex, lCurve->KeyAdd(OrvTime(lAdd.mTime), lKey, &lLast)) << lAdd.mTime;
        EXPECT_EQ(lAdd.mIndex, lLast) << lAdd.mTime;
    }
    EXPECT_EQ(KeyValues(lCurve), (std::vector<float>{1.0f, 9.0f, 3.0f, 4.0f}));
    EXPECT_EQ(20, lCurve->KeyGetTime(1).Get());
    EXPECT_TRUE(lCurve->KeyRemove(1));
    EXPECT_FALSE(lCurve->KeyRemove(3));
    EXPECT_EQ(KeyValues(lCurve), (std::vector<float>{1.0f, 3.0f, 4.0f}));
    EXPECT_EQ(0.0f, lCurve->KeyGetValue(3));
}

TEST_F(HostAnimation, EvaluateInterpolatesLinearlyAndHoldsTheEndValues)
{
    OrvAnimCurve* lCurve = MakeCurve("ry");
    EXPECT_EQ(0.0f, lCurve->Evaluate(OrvTime(5)));
    AddKey(lCurve, 100, -2.0f);
    AddKey(lCurve, 200, 6.0f);
    AddKey(lCurve, 300, 6.0f);

    EXPECT_EQ(-2.0f, lCurve->Evaluate(OrvTime(-1000)));
    EXPECT_EQ(-2.0f, lCurve->Evaluate(OrvTime(100)));
    EXPECT_EQ(0.0f, lCurve->Evaluate(OrvTime(125)));
    EXPECT_EQ(6.0f, lCurve->Evaluate(OrvTime(250)));
    EXPECT_EQ(6.0f, lCurve->Evaluate(OrvTime(1000)));
}

// Whatever the guess (stale, out of range, ahead of or behind the time) the hinted evaluation
// gives Evaluate's value, and its updated hint is right for the next time in order.
TEST_F(HostAnimation, EvaluationFromAnyHintMatchesTheSearch)
{
    OrvAnimCurve* lCurve = MakeCurve("rz");
    for (int lKey = 0; lKey < 10; ++lKey) AddKey(lCurve, 100 * lKey, static_cast<float>(lKey * lKey) - 7.5f);
    const int64_t lTimes[] = {-50, 0, 1, 99, 100, 150, 420, 899, 900, 901, 5000};
    for (const int lGuess : {-3, 0, 1, 4, 9, 10, 11, 1000})
        for (const int64_t lTime : lTimes)
        {
            int lHint = lGuess;
            EXPECT_EQ(lCurve->Evaluate(OrvTime(lTime)), lCurve->EvaluateFromHint(OrvTime(lTime), lHint))
                << "guess " << lGuess << ", time " << lTime;
            int lNextHint = lHint;
            EXPECT_EQ(lCurve->Evaluate(OrvTime(lTime + 50)), lCurve->EvaluateFromHint(OrvTime(lTime + 50), lNextHint));
        }
}

TEST_F(HostAnimation, KeyRecordWithoutMemoryIsRefusedButOnCallerStorageNeedsNone)
{
    OrvAnimCurve* lCurve = MakeCurve("tx");
    OrvAnimCurveKeyImpl lStorage;
    lStorage.Set(OrvTime(99), 99.0f);
    {
        OrvAllocFailureScope lNoMemory(2);  // one for each record
        OrvAnimCurveKey lRefused;
        EXPECT_FALSE(lRefused.IsValid());
        lRefused.Set(OrvTime(7), 3.0f);
        EXPECT_EQ(-1, lCurve->KeyAdd(OrvTime(7), lRefused));
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
