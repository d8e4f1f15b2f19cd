// The import path on a small skeleton: curve creation and hand-over, motion samples, the flush
// with its filters, host node building with rotation settings, limits and end nodes, and the
// merge onto existing host hierarchies.

#include "tests/AsfTestSupport.h"
#include "support/HostSceneSupport.h"

#include "orvsdk/host/filter/OrvAnimCurveFilterGimbleKiller.h"
#include "orvsdk/host/filter/OrvAnimCurveFilterUnroll.h"
#include "orvsdk/host/anim/OrvAnimCurveNode.h"

#include <gtest/gtest.h>

#include <limits>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

using namespace orvsdk;
using namespace orvsdk::asftest;
using namespace orvsdk::hosttest;

namespace {

// Lengths are in centimetres (the length unit 2.54 cancels the inch conversion).
//
//   root   tx ty tz rx ry rz, position (1, 2, 3)
//   +-- spine  rx ry rz, along Y, length 10, axis turned 30 degrees about Z
//       +-- arm    rz ry rx, along X, length 5, axis turned 90 degrees about Z
//       +-- tip    ry rz rx, length 0
//       +-- hip    no DOF, along Z, length 2
//           +-- slide  tx, along X, length 1
const char* const kSkeleton =
    ":version 1.10\n:name fixture\n:units\n  mass 1.0\n  length 2.54\n  angle deg\n"
    ":root\n  order TX TY TZ RX RY RZ\n  axis XYZ\n  position 1 2 3\n  orientation 0 0 0\n"
    ":bonedata\n"
    "  begin\n    id 1\n    name spine\n    direction 0 1 0\n    length 10\n    axis 0 0 30 XYZ\n    dof rx ry rz\n  end\n"
    "  begin\n    id 2\n    name arm\n    direction 1 0 0\n    length 5\n    axis 0 0 90 XYZ\n    dof rz ry rx\n  end\n"
    "  begin\n    id 3\n    name tip\n    direction 1 0 0\n    length 0\n    axis 0 0 0 XYZ\n    dof ry rz rx\n  end\n"
    "  begin\n    id 4\n    name hip\n    direction 0 0 1\n    length 2\n    axis 0 0 0 XYZ\n  end\n"
    "  begin\n    id 5\n    name slide\n    direction 1 0 0\n    length 1\n    axis 0 0 0 XYZ\n    dof tx\n  end\n"
    ":hierarchy\n  begin\n    root spine\n    spine arm tip hip\n    hip slide\n  end\n";

const char* const kTake = "Take";

class ImportPath : public ::testing::Test
{
protected:
    // Reads the skeleton with the two set-up flags and, when asked, creates its curves.
    void Read(bool pUseRotationOffset, bool pUsePreRotation, bool pCreateCurves = true)
    {
        mUseRotationOffset = pUseRotationOffset;
        mUsePreRotation = pUsePreRotation;
        mRead = ReadAsfText(kSkeleton, false, {pUseRotationOffset, pUsePreRotation});
        ASSERT_TRUE(mRead->mRead);
        if (pCreateCurves) mRead->mScene.mRoot->CreateDataFromDOF(mScene.get());
    }

    OrvAsfNode* Bone(const char* pName) { return mRead->mScene.mRoot->Find(pName); }

    // One frame of pBone's values (in its DOF list order), factors 1.
    void Sample(const char* pBone, int pFrame, std::vector<double> pValues)
    {
        OrvTime lTime = OrvTime::FromFrame(pFrame, 120.0);
        Bone(pBone)->AddSampleFromDOF(pValues.data(), lTime, 1.0, 1.0, mUseRotationOffset, mUsePreRotation);
    }

    // Builds the host nodes with the flags of the read and hangs them under the scene's root.
    void Build(bool pUseLimits = false)
    {
        mScene->GetRootNode()->AddChild(
            mRead->mScene.ASFToORV(mScene.get(), kTake, pUseLimits, mUseRotationOffset, mUsePreRotation));
    }

    OrvNode* Node(const char* pName) { return mScene->GetRootNode()->FindChild(pName, true, false); }
    OrvAnimStack* Stack() { return mScene->GetCurrentAnimationStack(); }
    OrvObject* SceneCurve(const char* pName)
    {
        return mScene->RootProperty.FindSrcObject(OrvCriteria::ObjectType(OrvAnimCurve::ClassId), pName, 0);
    }

    // Declared before the skeleton: bones still owning curves must die while the scene lives.
    OrvScenePtr mScene = CreateHostScene(kTake);
    std::unique_ptr<AsfRead> mRead;
    bool mUseRotationOffset = false;
    bool mUsePreRotation = false;
};

double ChannelValue(OrvAnimCurveNode* pCurveNode, unsigned pChannel)
{
    double lValue = 0.0;
    pCurveNode->GetChannel(pChannel).Get(&lValue, eOrvDouble);
    return lValue;
}

} // namespace

// --- Curve creation and hand-over ---------------------------------------------------------------

TEST_F(ImportPath, HandOverReplacesTheChannelsCurvesAndWritesTheRestValues)
{
    Read(false, false);
    OrvAsfNode* lRoot = mRead->mScene.mRoot;
    OrvAnimCurve* lTranslation[3] = {lRoot->mTranslationCurve[0], lRoot->mTranslationCurve[1], lRoot->mTranslationCurve[2]};
    OrvNode* lNode = AddNode(mScene->GetRootNode(), "target");
    OrvAnimCurveNode* lCurveNode = lNode->LclTranslation.GetCurveNode(Stack(), true);
    lCurveNode->ConnectToChannel(OrvAnimCurve::Create(mScene.get(), "old"), 1);

    lRoot->SetCurves(lNode, kTake);

    for (unsigned j = 0; j < 3; ++j)
    {
        EXPECT_EQ(lCurveNode->GetCurve(j), lTranslation[j]);
        EXPECT_EQ(ChannelValue(lCurveNode, j), 1.0 + j);
        EXPECT_TRUE(!lRoot->mTranslationCurve[j] && !lRoot->mRotationCurve[j]);
    }
    EXPECT_EQ(SceneCurve("old"), nullptr);
    EXPECT_NE(lNode->LclRotation.GetCurveNode(Stack(), false)->GetCurve(2), nullptr);

    // After the hand-over the bone only writes rest values.
    OrvNode* lSecond = AddNode(mScene->GetRootNode(), "second");
    lRoot->SetCurves(lSecond, kTake);
    EXPECT_TRUE(!lSecond->LclTranslation.GetCurveNode(Stack(), false) && !lSecond->LclRotation.GetCurveNode(Stack(), false));
    ExpectVectorNear(PropertyValue(lSecond->LclTranslation), 1, 2, 3, 0.0);
}

TEST_F(ImportPath, CurvesGoToTheTakesStackAndAKindWithoutOwnedCurvesLeavesItsChannelsAlone)
{
    Read(false, false);
    OrvAnimStack* lTake = Stack();
    OrvAnimStack* lOther = OrvAnimStack::Create(mScene.get(), "Other");
    OrvAnimLayer::Create(lOther, "Base");
    mScene->SetCurrentAnimationStack(lOther);
    OrvNode* lNode = AddNode(mScene->GetRootNode(), "target");
    OrvAnimCurveNode* lRotation = lNode->LclRotation.GetCurveNode(lTake, true);
    OrvAnimCurve* lKept = OrvAnimCurve::Create(mScene.get(), "kept");
    lRotation->ConnectToChannel(lKept, 0);

    Bone("slide")->SetCurves(lNode, kTake);

    EXPECT_EQ(lRotation->GetCurve(0), lKept);
    EXPECT_NE(lNode->LclTranslation.GetCurveNode(lTake, false)->GetCurve(0), nullptr);
    EXPECT_EQ(lNode->LclTranslation.GetCurveNode(lOther, false), nullptr);
}

// --- Samples -------------------------------------------------------------------------------------

TEST_F(ImportPath, SamplesKeyOnlyTheCurvesOfTheBonesOwnKinds)
{
    Read(false, false);
    mRead->mScene.mRoot->StartSamplingData();
    Sample("spine", 0, {1, 2, 3});
    Sample("slide", 0, {4});
    Sample("hip", 0, {});

    for (int j = 0; j < 3; ++j)
    {
        EXPECT_EQ(Bone("spine")->mRotationCurve[j]->KeyGetCount(), 1);
        EXPECT_EQ(Bone("slide")->mTranslationCurve[j]->KeyGetCount(), 1);
        EXPECT_EQ(Bone("arm")->mRotationCurve[j]->KeyGetCount(), 0);
        EXPECT_TRUE(!Bone("spine")->mTranslationCurve[j] && !Bone("slide")->mRotationCurve[j]);
        EXPECT_TRUE(!Bone("hip")->mTranslationCurve[j] && !Bone("hip")->mRotationCurve[j]);
    }
    EXPECT_STREQ(Bone("slide")->mTranslationCurve[2]->GetName(), "slide_tz");
}

TEST_F(ImportPath, RepeatedDofCodesAddUp)
{
    Read(true, true, false);
    OrvAsfNode* lSlide = Bone("slide");
    lSlide->mDof[1] = 0;  // tx tx
    lSlide->mDofCount = 2;
    OrvAsfNode* lTip = Bone("tip");
    lTip->mDof[0] = lTip->mDof[1] = 5;  // rx rx
    lTip->mDofCount = 2;
    mRead->mScene.mRoot->CreateDataFromDOF(mScene.get());

    Sample("slide", 0, {1.5, 2.0});
    Sample("tip", 0, {10, 20});

    EXPECT_EQ(KeyValues(lSlide->mTranslationCurve[0]), std::vector<float>{3.5f});
    EXPECT_EQ(KeyValues(lTip->mRotationCurve[0]), std::vector<float>{30.0f});
}

// --- Flush ---------------------------------------------------------------------------------------

TEST_F(ImportPath, ASingleFrameRunDropsTheCurvesAndKeepsTheRestValues)
{
    Read(false, false);
    mRead->mScene.mRoot->StartSamplingData();
    Sample("root", 0, {7, 8, 9, 10, 20, 30});
    Sample("slide", 0, {4});  // below the DOF-less hip: the flush must reach it
    mRead->mScene.mRoot->StopSamplingData();

    EXPECT_TRUE(!mRead->mScene.mRoot->mTranslationCurve[0] && !mRead->mScene.mRoot->mRotationCurve[0]);
    EXPECT_EQ(Bone("slide")->mTranslationCurve[0], nullptr);
    EXPECT_EQ(SceneCurve("root_tx"), nullptr);
    EXPECT_EQ(SceneCurve("slide_tx"), nullptr);
    ExpectVectorNear(mRead->mScene.mRoot->mLocalTranslation, 1, 2, 3, 0.0);
    ExpectVectorNear(mRead->mScene.mRoot->mLocalRotation, 0, 0, 0, 0.0);
}

TEST_F(ImportPath, TwoFramesKeepTheCurvesAsSampled)
{
    Read(true, true);
    mRead->mScene.mRoot->StartSamplingData();
    Sample("root", 0, {0.1, 2, 3, 10, 20, 30});
    Sample("root", 1, {0.1, 5, 6, -10, 20, 170});
    mRead->mScene.mRoot->StopSamplingData();

    EXPECT_EQ(KeyValues(mRead->mScene.mRoot->mTranslationCurve[0]), (std::vector<float>{0.1f, 0.1f}));
    EXPECT_EQ(KeyValues(mRead->mScene.mRoot->mRotationCurve[2]), (std::vector<float>{30.0f, 170.0f}));
    EXPECT_EQ(mRead->mScene.mRoot->mRotationCurve[0]->KeyGetTime(1), OrvTime::FromFrame(1, 120.0));
}

class ImportRotationFilter : public ImportPath, public ::testing::WithParamInterface<int>
{
};

// A left thumb of a real CMU skeleton, whose missing Y rotation decomposes to a half-turn that
// rounding puts a hair to either side of -180/180, frame by frame:
//
//   root
//   +-- wrist  ry, axis (-9.31221e-15, 90, 90)
//       +-- thumb  rx rz, axis (-90, 45, -4.80359e-14)
//
// The key is 180 every time, so that the curve does not jump a full turn between frames.
TEST(ImportPathHalfTurn, ADecomposedHalfTurnIsAlwaysKeyed180)
{
    const std::string lSkeleton =
        ":version 1.10\n:name thumb\n:units\n  mass 1.0\n  length 2.54\n  angle deg\n"
        ":root\n  order TX TY TZ RX RY RZ\n  axis XYZ\n  position 0 0 0\n  orientation 0 0 0\n:bonedata\n"
        "  begin\n    id 1\n    name wrist\n    direction 1 0 0\n    length 1\n    axis -9.31221e-015 90 90 XYZ\n"
        "    dof ry\n  end\n"
        "  begin\n    id 2\n    name thumb\n    direction 0.707107 0 0.707107\n    length 1\n"
        "    axis -90 45 -4.80359e-014 XYZ\n    dof rx rz\n  end\n"
        ":hierarchy\n  begin\n    root wrist\n    wrist thumb\n  end\n";
    const double lFrames[][2] = {{-168.473, 80.5226}, {-188.884, -154.645}, {-188.023, -153.87}, {-170.0, 10.0}};
    OrvScenePtr lScene = CreateHostScene();
    const std::unique_ptr<AsfRead> lRead = ReadAsfText(lSkeleton);
    ASSERT_TRUE(lRead->mRead);
    lRead->mScene.mRoot->CreateDataFromDOF(lScene.get());
    OrvAsfNode* lThumb = lRead->mScene.mRoot->Find("thumb");
    for (int lFrame = 0; lFrame < 4; ++lFrame)
    {
        double lValues[2] = {lFrames[lFrame][0], lFrames[lFrame][1]};
        OrvTime lTime = OrvTime::FromFrame(lFrame, 120.0);
        lThumb->AddSampleFromDOF(lValues, lTime, 1.0, 1.0, false, false);
    }
    const OrvAnimCurve& lY = *lThumb->mRotationCurve[1];
    ASSERT_EQ(lY.KeyGetCount(), 4);
    for (int lKey = 0; lKey < 4; ++lKey) EXPECT_EQ(lY.KeyGetValue(lKey), 180.0f) << "frame " << lKey;
}

// Keys chosen so that no filter, the gimbal killer, and the unroll in order X, Y, Z or in tip's
// order (ry rz rx, Y then Z then X) all give different curves.
TEST_P(ImportRotationFilter, TheSettingChoosesTheFilterAndUnrollTakesTheBonesOrder)
{
    const int lSetting = GetParam();
    mScene->GetGlobalSettings().SetRotationFilterToApply(lSetting);
    Read(false, true);
    const double kAngles[3][3] = {{0, 0, 0}, {170, 170, 20}, {30, 90, 40}};  // X, Y, Z
    mRead->mScene.mRoot->StartSamplingData();
    for (int f = 0; f < 3; ++f) Sample("tip", f, {kAngles[f][1], kAngles[f][2], kAngles[f][0]});
    mRead->mScene.mRoot->StopSamplingData();

    OrvAnimCurve* lExpected[3];
    for (int j = 0; j < 3; ++j)
    {
        lExpected[j] = OrvAnimCurve::Create(mScene.get(), "expected");
        for (int f = 0; f < 3; ++f) AddKey(lExpected[j], f, static_cast<float>(kAngles[f][j]));
    }
    OrvAnimCurveFilterUnroll lUnroll;
    lUnroll.SetRotationOrder(OrvEuler::eOrderYZX);
    if (lSetting == 1) OrvAnimCurveFilterGimbleKiller().Apply(lExpected, 3);
    if (lSetting == 2) lUnroll.Apply(lExpected, 3);
    for (int j = 0; j < 3; ++j) EXPECT_EQ(KeyValues(Bone("tip")->mRotationCurve[j]), KeyValues(lExpected[j])) << j;
}

INSTANTIATE_TEST_SUITE_P(Settings, ImportRotationFilter, ::testing::Values(0, 1, 2, 3));

// --- Node building -------------------------------------------------------------------------------

TEST_F(ImportPath, EndNodeNeedsALengthAboveZero)
{
    Read(false, false, false);
    for (double lLength : {-1.0, 0.0, std::numeric_limits<double>::denorm_min()})
    {
        Bone("tip")->mLength = lLength;
        OrvNode* lTip = Bone("tip")->ASFToORV(mScene.get(), kTake, false, false, false);
        EXPECT_EQ(lTip->GetChildCount(false), lLength > 0.0 ? 1 : 0) << lLength;
    }
}

// --- Rotation settings and limits ----------------------------------------------------------------

TEST_F(ImportPath, RotationOrderFollowsTheDofListAndRotationIsAlwaysActive)
{
    Read(false, false);
    Build();
    const std::pair<const char*, OrvEuler::EOrder> kOrders[] = {
        {"root", OrvEuler::eOrderXYZ}, {"spine", OrvEuler::eOrderXYZ}, {"arm", OrvEuler::eOrderZYX},
        {"tip", OrvEuler::eOrderYZX},  {"hip", OrvEuler::eOrderXYZ},   {"slide", OrvEuler::eOrderXYZ}};
    for (const auto& lEntry : kOrders)
    {
        OrvEuler::EOrder lOrder = OrvEuler::eOrderSphericXYZ;
        Node(lEntry.first)->GetRotationOrder(OrvNode::eSourcePivot, lOrder);
        EXPECT_EQ(lOrder, lEntry.second) << lEntry.first;
        EXPECT_TRUE(Node(lEntry.first)->GetRotationActive()) << lEntry.first;
    }
}

namespace {

// spine: rx within (-10, 10), ry above -20, rz below 30; slide: tx above -1, tz below 3. The
// stale values behind clear flags must not reach the host.
void SetFixtureLimits(OrvAsfNode* pRoot)
{
    OrvAsfNode* lSpine = pRoot->Find("spine");
    SetLimit(lSpine, 5, true, -10, true, 10);
    SetLimit(lSpine, 4, true, -20, false, 99);
    SetLimit(lSpine, 3, false, 99, true, 30);
    OrvAsfNode* lSlide = pRoot->Find("slide");
    SetLimit(lSlide, 0, true, -1, false, 99);
    SetLimit(lSlide, 2, false, 99, true, 3);
}

// The limits as "on|off" and per axis: min and max active, then (min max).
std::string LimitsText(const OrvLimits& pLimits)
{
    bool lMin[3], lMax[3];
    pLimits.GetMinActive(lMin[0], lMin[1], lMin[2]);
    pLimits.GetMaxActive(lMax[0], lMax[1], lMax[2]);
    std::ostringstream lText;
    lText << (pLimits.GetActive() ? "on" : "off");
    for (int a = 0; a < 3; ++a) lText << ' ' << lMin[a] << lMax[a] << '(' << pLimits.GetMin()[a] << ' ' << pLimits.GetMax()[a] << ')';
    return lText.str();
}

} // namespace

TEST_F(ImportPath, LimitsMapDofCodesToTheHostsXYZSlots)
{
    Read(true, true);
    SetFixtureLimits(mRead->mScene.mRoot);
    Build(true);

    EXPECT_EQ(LimitsText(Node("spine")->GetRotationLimits()), "on 11(-10 10) 10(-20 0) 01(0 30)");
    EXPECT_EQ(LimitsText(Node("slide")->GetTranslationLimits()), "on 10(-1 0) 00(0 0) 01(0 3)");
    EXPECT_FALSE(Node("spine")->GetTranslationLimits().GetActive());
    EXPECT_FALSE(Node("slide")->GetRotationLimits().GetActive());
}

TEST_F(ImportPath, LimitsNeedTheLimitsFlagAndTheSetupFlagOfTheirKind)
{
    const bool kCases[][3] = {{false, true, true}, {true, false, false}};  // use limits, offset, pre-rotation
    for (const auto& lCase : kCases)
    {
        const auto lRead = ReadAsfText(kSkeleton, false, {lCase[1], lCase[2]});
        ASSERT_TRUE(lRead->mRead);
        SetFixtureLimits(lRead->mScene.mRoot);
        OrvNode* lRoot = lRead->mScene.ASFToORV(mScene.get(), kTake, lCase[0], lCase[1], lCase[2]);
        EXPECT_FALSE(lRoot->FindChild("spine")->GetRotationLimits().GetActive());
        EXPECT_FALSE(lRoot->FindChild("slide")->GetTranslationLimits().GetActive());
    }
}

// --- Merge ---------------------------------------------------------------------------------------

namespace {

// A host copy of the fixture's joints below pParent: root(spine(arm tip hip(slide))).
OrvNode* AddFixtureJoints(OrvNode* pParent)
{
    OrvNode* lRoot = AddNode(pParent, "root");
    OrvNode* lSpine = AddNode(lRoot, "spine");
    AddNode(lSpine, "arm");
    AddNode(lSpine, "tip");
    AddNode(AddNode(lSpine, "hip"), "slide");
    return lRoot;
}

} // namespace

TEST_F(ImportPath, MergeOntoAFullMatchOnlyHandsOverCurvesAndRestValues)
{
    OrvNode* lHostRoot = AddFixtureJoints(mScene->GetRootNode());
    lHostRoot->SetRotationOrder(OrvNode::eSourcePivot, OrvEuler::eOrderZXY);
    const int lObjects = mScene->GetObjectCount();
    Read(false, false);
    mRead->mScene.mRoot->StartSamplingData();
    Sample("root", 0, {1, 2, 3, 0, 0, 0});
    Sample("root", 1, {4, 5, 6, 0, 0, 0});
    mRead->mScene.mRoot->StopSamplingData();
    OrvAnimCurve* lTx = mRead->mScene.mRoot->mTranslationCurve[0];

    mRead->mScene.MergeASFToORV(mScene.get(), mScene->GetRootNode(), kTake, true, false, false);

    EXPECT_EQ(NodeTree(mScene->GetRootNode()), "RootNode(root(spine(arm tip hip(slide))))");
    EXPECT_EQ(lHostRoot->LclTranslation.GetCurveNode(Stack(), false)->GetCurve(0), lTx);
    ExpectVectorNear(PropertyValue(mScene->GetRootNode()->FindChild("arm")->LclRotation),
                     Bone("arm")->mLocalRotation[0], Bone("arm")->mLocalRotation[1], Bone("arm")->mLocalRotation[2], 0.0);
    OrvEuler::EOrder lOrder = OrvEuler::eOrderXYZ;
    lHostRoot->GetRotationOrder(OrvNode::eSourcePivot, lOrder);
    EXPECT_EQ(lOrder, OrvEuler::eOrderZXY);
    EXPECT_FALSE(lHostRoot->GetRotationActive());
    // No node or attribute was made: only root's six surviving curves and its two curve nodes
    // are new.
    EXPECT_EQ(mScene->GetObjectCount(), lObjects + 6 + 2);
    EXPECT_EQ(mRead->mScene.mRoot->mTranslationCurve[0], nullptr);
}

// Each host hierarchy matches the skeleton partly or not at all; the merge builds what has no match.
TEST_F(ImportPath, MergeBuildsTheBonesThatHaveNoMatchBelowTheirMatchedParent)
{
    const std::string kBuilt = "root(spine(arm(arm_End) tip hip(slide(slide_End))))";
    struct Case
    {
        const char* mHost;
        OrvNode* (*mMake)(OrvNode* pSceneRoot);  // the host nodes; returns the node to merge under
        std::string mTree;                        // the tree below the scene's root afterwards
    };
    const Case kCases[] = {
        {"root and spine", [](OrvNode* r) { AddNode(AddNode(r, "root"), "spine"); return r; },
         "RootNode(" + kBuilt + ")"},
        {"spine without a skeleton", [](OrvNode* r) { AddNode(AddNode(r, "root"), "spine", false); return r; },
         "RootNode(root(spine spine(arm(arm_End) tip hip(slide(slide_End)))))"},
        {"no match", [](OrvNode* r) { return AddNode(AddNode(r, "group", false), "mesh", false)->GetParent(); },
         "RootNode(group(mesh " + kBuilt + "))"},
        {"root deep down", [](OrvNode* r) {
             AddNode(AddNode(AddNode(r, "outer", false), "group", false), "root");
             return r;
         },
         "RootNode(outer(group(" + kBuilt + ")))"},
    };
    for (const Case& lCase : kCases)
    {
        SCOPED_TRACE(lCase.mHost);
        OrvScenePtr lScene = CreateHostScene(kTake);
        OrvNode* lUnder = lCase.mMake(lScene->GetRootNode());
        const auto lRead = ReadAsfText(kSkeleton);
        ASSERT_TRUE(lRead->mRead);
        lRead->mScene.mRoot->CreateDataFromDOF(lScene.get());
        lRead->mScene.MergeASFToORV(lScene.get(), lUnder, kTake, false, false, false);
        EXPECT_EQ(NodeTree(lScene->GetRootNode()), lCase.mTree);
    }
}
