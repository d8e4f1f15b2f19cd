// Skeleton records: tree operations, ownership and the rotation order codes.

#include "AsfTestSupport.h"

#include "orvsdk/host/anim/OrvAnimCurve.h"
#include "orvsdk/host/core/OrvMemory.h"
#include "orvsdk/host/scene/OrvScene.h"
#include "orvsdk/skeleton/OrvRotationOrder.h"

#include <gtest/gtest.h>

#include <new>

using namespace orvsdk;
using namespace orvsdk::asftest;

namespace {

// root
// +-- dup
// |   +-- dup
// +-- b
//     +-- c
class AsfSkeletonTree : public ::testing::Test
{
protected:
    void SetUp() override
    {
        mScene.mRoot = MakeBone("root");
        mOuterDup = MakeBone("dup", {}, mScene.mRoot);
        MakeBone("dup", {}, mOuterDup);
        mB = MakeBone("b", {}, mScene.mRoot);
        mC = MakeBone("c", {}, mB);
    }

    OrvAsfScene mScene;
    OrvAsfNode* mOuterDup = nullptr;
    OrvAsfNode* mB = nullptr;
    OrvAsfNode* mC = nullptr;
};

} // namespace

TEST_F(AsfSkeletonTree, FindSearchesPreOrderWithExactNames)
{
    EXPECT_EQ(mScene.mRoot->Find("dup"), mOuterDup);
    EXPECT_EQ(mOuterDup->Find("dup"), mOuterDup);  // the bone itself before its descendant
    EXPECT_EQ(mScene.mRoot->Find("c"), mC);
    EXPECT_EQ(mC->Find("b"), nullptr);
    EXPECT_EQ(mScene.mRoot->GetChild(1), mB);
    EXPECT_EQ(mScene.mRoot->GetChild(2), nullptr);  // stops at the child count
    mB->RemoveChild(mC);  // storage kept, count 0
    EXPECT_EQ(mB->Find("c"), nullptr);
    OrvAsfNode::Destroy(mC);
}

TEST_F(AsfSkeletonTree, RemoveChildKeepsTheOrderOfTheOthers)
{
    MakeBone("d", {}, mScene.mRoot);
    mScene.mRoot->RemoveChild(mC);  // not a child: only its parent link goes
    EXPECT_EQ(mC->mParent, nullptr);
    mC->mParent = mB;
    mScene.mRoot->RemoveChild(mB);
    EXPECT_EQ(TreeText(mScene.mRoot), "root(dup(dup) d)");
    OrvAsfNode::Destroy(mB);
}

TEST_F(AsfSkeletonTree, AddChildKeepsTheChildrenWhenTheArrayCannotGrow)
{
    ASSERT_EQ(mScene.mRoot->mChildren.GetCapacity(), 2);  // full: the next append must grow
    OrvAsfNode* lExtra = MakeBone("extra");
    {
        OrvAllocFailureScope lFailure(1);
        EXPECT_FALSE(mScene.mRoot->AddChild(lExtra));
    }
    EXPECT_EQ(TreeText(mScene.mRoot), "root(dup(dup) b(c))");
    EXPECT_EQ(lExtra->mParent, nullptr);
    OrvAsfNode::Destroy(lExtra);
}

TEST(AsfSkeleton, SceneInHostMemoryDestroysItsWholeTree)
{
    for (bool lWithTree : {false, true})
    {
        OrvAsfScene* lScene = new (OrvMalloc(sizeof(OrvAsfScene))) OrvAsfScene;
        if (lWithTree) MakeBone("b", {}, MakeBone("a", {}, lScene->mRoot = MakeBone("root")));
        lScene->Destroy();  // the sanitizer run reports anything left behind
    }
}

TEST(AsfSkeleton, BoneDestroysOnlyTheCurvesItStillOwns)
{
    OrvScene* lHost = OrvScene::Create("host");
    const int lBefore = lHost->GetObjectCount();
    OrvAsfNode* lBone = MakeBone("arm");
    MakeBone("hand", {}, lBone)->mTranslationCurve[2] = OrvAnimCurve::Create(lHost, "child's");
    for (int k = 0; k < 3; ++k) lBone->mRotationCurve[k] = OrvAnimCurve::Create(lHost, "owned");
    OrvAnimCurve* lHandedOver = OrvAnimCurve::Create(lHost, "handed over");
    OrvAsfNode::Destroy(lBone);
    EXPECT_EQ(lHost->GetObjectCount(), lBefore + 1);  // only the curve no bone held any more
    lHandedOver->Destroy(false);
    lHost->Destroy();
}

// --- Rotation order codes --------------------------------------------------------------------

namespace {

const int TX = 0, TY = 1, TZ = 2, RZ = 3, RY = 4, RX = 5;

int OrderOf(std::vector<int> pCodes)
{
    return EulerOrderFromOrderBuf(pCodes.data(), static_cast<int>(pCodes.size()));
}

} // namespace

TEST(AsfRotationOrder, TheLastTwoRotationsDecideAndFewerEndWithTheLastListedAxis)
{
    const std::pair<std::vector<int>, int> lCases[] = {
        {{TX, TY, TZ, RX, RY, RZ}, 0}, {{RX, RZ, RY}, 1}, {{RY, RZ, RX}, 2}, {{RY, RX, RZ}, 3}, {{RZ, RX, RY}, 4},
        {{RZ, RY, RX}, 5}, {{RZ, RX, RY, RZ}, 0}, {{RX, TY, RZ}, 3},  // translations between rotations are skipped
        {{}, 0}, {{TX, TY, TZ}, 0}, {{RX}, 5}, {{RY, TX}, 4}, {{RZ}, 0}, {{RX, RX}, 5}, {{RY, RY}, 4}, {{RZ, RZ}, 0}};
    for (const auto& [lCodes, lOrder] : lCases) EXPECT_EQ(OrderOf(lCodes), lOrder) << ::testing::PrintToString(lCodes);
}
