// Hostile input to the ASF reader and the bone tree: skeletons deeper than the reader's limit,
// trees of a hundred thousand bones, numbers out of range, and the cases the fuzz targets found.
// Every input is generated in memory.

#include "AsfTestSupport.h"
#include "support/HostSceneSupport.h"
#include "support/ScratchFiles.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

using namespace orvsdk;
using namespace orvsdk::asftest;
using ::testing::ElementsAre;

namespace {

const int kLimit = OrvFileAcclaimAsf::kMaxBoneDepth;
const int kHugeBoneCount = 100000;

const std::string kRoot = ":root\n  order TX TY TZ RX RY RZ\n  axis XYZ\n";

std::string BoneName(int pIndex)
{
    return "b" + std::to_string(pIndex);
}

// Bones b1 .. bN, then one hierarchy line per link of the chain b1 - b2 - ... - bN, from the top
// down or from the bottom up.
std::string ChainSkeleton(int pBones, bool pBottomUp = false)
{
    std::string lText = kRoot + ":bonedata\n";
    for (int i = 1; i <= pBones; ++i) lText += BoneBlock(BoneName(i), "    dof rx\n");
    lText += ":hierarchy\n  begin\n";
    for (int k = 1; k < pBones; ++k)
    {
        const int i = pBottomUp ? pBones - k : k;
        lText += "    " + BoneName(i) + " " + BoneName(i + 1) + "\n";
    }
    return lText + "  end\n";
}

int DepthOf(const OrvAsfNode* pBone)
{
    int lDepth = 0;
    for (; pBone->mParent; pBone = pBone->mParent) ++lDepth;
    return lDepth;
}

// Bones of the subtree, counted without recursion; every child's parent link must point back.
size_t CountSoundBones(OrvAsfNode* pRoot)
{
    size_t lCount = 0;
    const OrvAsfNode* lBroken = pRoot->VisitPreOrder([&lCount](const OrvAsfNode* pBone) {
        ++lCount;
        for (int i = 0; i < pBone->mChildren.GetCount(); ++i)
            if (pBone->mChildren[i]->mParent != pBone) return true;
        return false;
    });
    EXPECT_EQ(lBroken, nullptr) << "a child of " << lBroken->mName << " does not point back";
    return lCount;
}

// Writes pScene to pPath; true when creating, writing and closing all succeeded.
bool WriteSkeleton(OrvAsfScene& pScene, const std::string& pPath)
{
    OrvFileAcclaimAsf lOut(false);
    return lOut.Create(pPath.c_str()) && lOut.Write(&pScene) && lOut.Close();
}

} // namespace

// --- Depth ------------------------------------------------------------------------------------

// A chain of pBones bones below the root, linked from the top down or from the bottom up.
struct ChainCase
{
    int mBones;
    bool mBottomUp;
};

class HostileChain : public ::testing::TestWithParam<ChainCase>
{
};

TEST_P(HostileChain, ReadsUpToTheDepthLimitAndRefusesTheDeepestBoneBeyondIt)
{
    const ChainCase lCase = GetParam();
    const auto lChain = ReadAsfText(ChainSkeleton(lCase.mBones, lCase.mBottomUp));
    const OrvFileAcclaimAsf& lFile = lChain->mFile;
    const OrvAsfScene& lScene = lChain->mScene;
    // Whatever was refused, the tree stays whole: every bone under the root or its chain.
    EXPECT_EQ(CountSoundBones(lScene.mRoot), static_cast<size_t>(lCase.mBones + 1));
    if (lCase.mBones <= kLimit)
    {
        ASSERT_TRUE(lChain->mRead);
        EXPECT_EQ(DepthOf(lScene.mRoot->Find(BoneName(lCase.mBones).c_str())), lCase.mBones);
        EXPECT_EQ(lFile.GetErrorCount(), 0);
        return;
    }
    // From the top down the first bone too deep is b1001, at its own hierarchy line; from the
    // bottom up each line hangs the whole chain below a new top, so the last bone is too deep.
    EXPECT_FALSE(lChain->mRead);
    const std::string lDeepest = lCase.mBottomUp ? BoneName(lCase.mBones) : BoneName(kLimit + 1);
    EXPECT_EQ(Messages(lFile).back(), "E: Bone " + lDeepest + " lies deeper than 1000 bones below the root");
    // Either way the 1000th hierarchy line is the one refused.
    EXPECT_EQ(lFile.GetMessages().back().mLine, 3 + 1 + 6 * lCase.mBones + 2 + kLimit);
    // The refused line moved nothing: its child still hangs under the root.
    const int lRefusedChild = lCase.mBottomUp ? lCase.mBones - kLimit + 1 : kLimit + 1;
    EXPECT_EQ(lScene.mRoot->Find(BoneName(lRefusedChild).c_str())->mParent, lScene.mRoot);
}

INSTANTIATE_TEST_SUITE_P(Depths, HostileChain,
                         ::testing::Values(ChainCase{kLimit, false}, ChainCase{kLimit + 1, false},
                                           ChainCase{kLimit + 1, true}, ChainCase{kHugeBoneCount, false},
                                           ChainCase{kHugeBoneCount, true}));

TEST(HostileSkeleton, SharedNamesStillMeanTheFirstBoneInPreOrderWhenTheLineIsRead)
{
    // Bones a (rx), a (ry), c, y, z under the root. "a y" finds the first a; "c a" moves that a
    // below c, after which the first a in pre-order is the second one, so "a z" fills it:
    //   root
    //   +-- a (ry) -- z
    //   +-- c -- a (rx) -- y
    const auto lRead = ReadAsfText(kRoot + ":bonedata\n" + BoneBlock("a", "    dof rx\n") + BoneBlock("a", "    dof ry\n") +
                                   BoneBlock("c") + BoneBlock("y") + BoneBlock("z") +
                                   ":hierarchy\n  begin\n    a y\n    c a\n    a z\n  end\n");
    ASSERT_TRUE(lRead->mRead);
    EXPECT_EQ(TreeText(lRead->mScene.mRoot), "root(a(z) c(a(y)))");
    EXPECT_EQ(lRead->mScene.mRoot->mChildren[0]->mDof[0], 4);
    EXPECT_EQ(lRead->mScene.mRoot->mChildren[1]->mChildren[0]->mDof[0], 5);
}

namespace {

// Samples two frames of every DOF of the tree: all values 10 at frame 0, 20 at frame 1.
void SampleTwoFrames(OrvAsfNode* pRoot)
{
    pRoot->StartSamplingData();
    for (int f = 0; f < 2; ++f)
        pRoot->VisitPreOrder([f](OrvAsfNode* pBone) {
            std::vector<double> lValues(OrvAsfNode::kMaxDofs, 10.0 * (f + 1));
            OrvTime lTime = OrvTime::FromFrame(f, 120.0);
            pBone->AddSampleFromDOF(lValues.data(), lTime, 1.0, 1.0, false, false);
            return false;
        });
    pRoot->StopSamplingData();
}

} // namespace

TEST(HostileTree, HostNodeChainOfAHundredThousandLevelsIsSearchedAndDestroyed)
{
    // RootNode - b1 - b2 - ... - b100000, made from the bottom up: each new node takes the chain
    // made so far as its child.
    OrvScenePtr lHost = hosttest::CreateHostScene("Take");
    const int lObjectsBefore = lHost->GetObjectCount();
    OrvNode* lTop = OrvNode::Create(lHost.get(), BoneName(kHugeBoneCount).c_str());
    for (int i = kHugeBoneCount - 1; i >= 1; --i)
    {
        OrvNode* lNode = OrvNode::Create(lHost.get(), BoneName(i).c_str());
        lNode->AddChild(lTop);
        lTop = lNode;
    }
    ASSERT_TRUE(lHost->GetRootNode()->AddChild(lTop));
    EXPECT_EQ(lTop->GetChildCount(true), kHugeBoneCount - 1);
    EXPECT_NE(lHost->GetRootNode()->FindChild(BoneName(kHugeBoneCount).c_str()), nullptr);
    lTop->Destroy(true);
    EXPECT_EQ(lHost->GetObjectCount(), lObjectsBefore);
    EXPECT_EQ(lHost->GetRootNode()->GetChildCount(), 0);
}

TEST(HostileTree, WalksSurviveAHundredThousandBoneChain)
{
    // root - b1 - b2 - ... - b100000, built in code, past the reader's depth limit. Odd bones
    // have no DOF (dummies); the last bone has length 0 (an end site).
    OrvAsfScene lScene;
    std::strcpy(lScene.mName, "chain");
    lScene.mRoot = MakeBone("root", {0, 1, 2, 5, 4, 3});
    OrvAsfNode* lBone = lScene.mRoot;
    for (int i = 1; i <= kHugeBoneCount; ++i)
    {
        lBone = MakeBone(BoneName(i).c_str(), i % 2 == 0 ? std::vector<int>{5} : std::vector<int>{}, lBone);
        lBone->mDirection = OrvVector4(0, 1, 0);
        lBone->mLength = i == kHugeBoneCount ? 0.0 : 1.0;
    }
    EXPECT_EQ(lScene.mRoot->Find(BoneName(kHugeBoneCount).c_str()), lBone);
    lScene.mRoot->SetupPosition(false, false);

    // Through a host scene and back: curves, a sampling run of two frames, the node hierarchy, a
    // merge onto it, the skeleton taken from it and bound to it again, the nodes' teardown.
    {
        OrvScenePtr lHost = hosttest::CreateHostScene("Take");
        lScene.mRoot->CreateDataFromDOF(lHost.get());
        SampleTwoFrames(lScene.mRoot);
        OrvNode* lTop = lScene.ASFToORV(lHost.get(), "Take", true, false, false);
        ASSERT_TRUE(lHost->GetRootNode()->AddChild(lTop));
        int lDepth = 0;
        OrvNode* lLast = lTop;
        for (; lLast->GetChildCount() > 0; lLast = lLast->GetChild(0)) ++lDepth;
        EXPECT_EQ(lDepth, kHugeBoneCount);  // no end node: the last bone has length 0
        OrvAnimCurveNode* lLastRotation = lLast->LclRotation.GetCurveNode(nullptr, false);
        ASSERT_NE(lLastRotation, nullptr);
        EXPECT_THAT(hosttest::KeyValues(lLastRotation->GetCurve(0)), ElementsAre(10.0f, 20.0f));

        // The merge finds every bone's node and builds only a new bone and its end below the last one.
        MakeBone("tail", {}, lBone)->mLength = 1.0;
        lScene.MergeASFToORV(lHost.get(), lHost->GetRootNode(), "Take", true, false, false);
        EXPECT_EQ(lTop->GetChildCount(true), kHugeBoneCount + 2);

        // An offset of the root's node puts a dummy bone above it, whose name the merge then
        // looks for through the whole hierarchy in vain.
        lTop->SetRotationOffset(OrvNode::eSourcePivot, OrvVector4(1, 0, 0));
        OrvAsfScene lExported;
        EXPECT_TRUE(lExported.ORVToASF(lHost->GetRootNode(), false, OrvVector4(1, 1, 1), false));
        OrvAsfNode* lExportedLast = lExported.mRoot->Find(BoneName(kHugeBoneCount).c_str());
        ASSERT_NE(lExportedLast, nullptr);
        EXPECT_EQ(DepthOf(lExportedLast), kHugeBoneCount + 2);
        lExportedLast->mRotationCurveNode = nullptr;
        EXPECT_TRUE(lExported.MergeORVToASF(lHost->GetRootNode()));
        EXPECT_EQ(lExportedLast->mRotationCurveNode, lLastRotation);
    }

    // The writer walks the whole chain; reading it back stops at the depth limit.
    const std::string lPath = testfiles::ScratchPath("chain.asf");
    ASSERT_TRUE(WriteSkeleton(lScene, lPath));
    EXPECT_EQ(Messages(ReadAsfFile(lPath)->mFile).back(), "E: Bone b1001 lies deeper than 1000 bones below the root");
    std::remove(lPath.c_str());

    // Removing the dummies (the tail among them) halves the chain; then the end site goes. The
    // scene's destructor takes the rest apart.
    lScene.mRoot->RemoveDummy(false, false);
    EXPECT_EQ(CountSoundBones(lScene.mRoot), static_cast<size_t>(kHugeBoneCount / 2 + 1));
    lScene.mRoot->RemoveEndSite();
    EXPECT_EQ(CountSoundBones(lScene.mRoot), static_cast<size_t>(kHugeBoneCount / 2));
}

// --- Numbers ----------------------------------------------------------------------------------

TEST(HostileNumbers, ZeroLengthStaysZeroWhenATinyUnitOverflowsTheFactor)
{
    // 2.54 / 1e-308 is beyond the largest double: a length of 1 becomes infinite, one of 0 stays
    // 0 (not 0 times infinity), and the skeleton writes and reads back.
    const auto lRead = ReadAsfText(":name tiny\n  length 1e-308\n" + kRoot + ":bonedata\n" + BoneBlock("a") +
                                   "  begin\n    name z\n    direction 0 1 0\n    length 0\n  end\n:hierarchy\n");
    ASSERT_TRUE(lRead->mRead);
    EXPECT_TRUE(std::isinf(lRead->mScene.mRoot->Find("a")->mLength));
    EXPECT_EQ(lRead->mScene.mRoot->Find("z")->mLength, 0.0);

    const std::string lPath = testfiles::ScratchPath("tiny_unit.asf");
    ASSERT_TRUE(WriteSkeleton(lRead->mScene, lPath));
    const auto lAgain = ReadAsfFile(lPath);
    EXPECT_TRUE(lAgain->mRead);
    EXPECT_EQ(lAgain->mScene.mRoot->Find("z")->mLength, 0.0);
    std::remove(lPath.c_str());
}
