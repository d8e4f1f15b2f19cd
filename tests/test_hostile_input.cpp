// Hostile input to the ASF reader and the bone tree: skeletons deeper than the reader's limit,
// trees of a hundred thousand bones, huge lines, names and value lists, numbers out of range,
// and the cases the fuzz targets found. Every input is generated in memory.

#include "AsfTestSupport.h"
#include "support/HostSceneSupport.h"
#include "support/ScratchFiles.h"

#include "driver/OrvImportDriver.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <limits>
#include <string>
#include <vector>

using namespace orvsdk;
using namespace orvsdk::asftest;
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

namespace {

const int kLimit = OrvFileAcclaimAsf::kMaxBoneDepth;
const int kHugeBoneCount = 100000;

const std::string kRoot = ":root\n  order TX TY TZ RX RY RZ\n  axis XYZ\n";

std::string BoneName(int pIndex)
{
    return "b" + std::to_string(pIndex);
}

std::string BoneBlock(const std::string& pName, const std::string& pExtra = "    dof rx\n")
{
    return "  begin\n    name " + pName + "\n    direction 0 1 0\n    length 1\n" + pExtra + "  end\n";
}

// Bones b1 .. bN, then one hierarchy line per link of the chain b1 - b2 - ... - bN, from the top
// down or from the bottom up.
std::string ChainSkeleton(int pBones, bool pBottomUp = false)
{
    std::string lText = kRoot + ":bonedata\n";
    for (int i = 1; i <= pBones; ++i) lText += BoneBlock(BoneName(i));
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

class HostileSkeleton : public ::testing::Test
{
protected:
    bool Read(const std::string& pText, bool pRemoveDummy = false)
    {
        return ReadText(mFile, mScene, pText, pRemoveDummy);
    }
    std::string LastMessage() const { return Messages(mFile).empty() ? "" : Messages(mFile).back(); }

    OrvFileAcclaimAsf mFile{false};
    OrvAsfScene mScene;
};

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
    OrvFileAcclaimAsf lFile(false);
    OrvAsfScene lScene;
    const bool lRead = ReadText(lFile, lScene, ChainSkeleton(lCase.mBones, lCase.mBottomUp));
    // Whatever was refused, the tree stays whole: every bone under the root or its chain.
    EXPECT_EQ(CountSoundBones(lScene.mRoot), static_cast<size_t>(lCase.mBones + 1));
    if (lCase.mBones <= kLimit)
    {
        ASSERT_TRUE(lRead);
        EXPECT_EQ(DepthOf(lScene.mRoot->Find(BoneName(lCase.mBones).c_str())), lCase.mBones);
        EXPECT_EQ(lFile.GetErrorCount(), 0);
        return;
    }
    // From the top down the first bone too deep is b1001, at its own hierarchy line; from the
    // bottom up each line hangs the whole chain below a new top, so the last bone is too deep.
    EXPECT_FALSE(lRead);
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

TEST_F(HostileSkeleton, HundredThousandBonesInShortChainsReadWithTheirTreeIntact)
{
    // 1000 chains of 100 bones each, c<chain>_0 - c<chain>_1 - ... - c<chain>_99. Every move
    // takes a bone out of the root's children, which hold all 100000 bones at first.
    const int lChains = 1000;
    const int lLength = 100;
    auto lName = [](int pChain, int pIndex) { return "c" + std::to_string(pChain) + "_" + std::to_string(pIndex); };
    std::string lText = kRoot + ":bonedata\n";
    for (int c = 0; c < lChains; ++c)
        for (int i = 0; i < lLength; ++i) lText += BoneBlock(lName(c, i));
    lText += ":hierarchy\n  begin\n";
    for (int c = 0; c < lChains; ++c)
        for (int i = 1; i < lLength; ++i) lText += "    " + lName(c, i - 1) + " " + lName(c, i) + "\n";
    lText += "  end\n";

    ASSERT_TRUE(Read(lText));
    ASSERT_EQ(mScene.mRoot->mChildren.GetCount(), lChains);
    for (int c = 0; c < lChains; c += 111) EXPECT_STREQ(mScene.mRoot->mChildren[c]->mName, lName(c, 0).c_str());
    const OrvAsfNode* lLast = mScene.mRoot->Find(lName(lChains - 1, lLength - 1).c_str());
    ASSERT_NE(lLast, nullptr);
    EXPECT_EQ(DepthOf(lLast), lLength);
    EXPECT_EQ(CountSoundBones(mScene.mRoot), static_cast<size_t>(lChains * lLength + 1));
}

TEST_F(HostileSkeleton, SharedNamesStillMeanTheFirstBoneInPreOrderWhenTheLineIsRead)
{
    // Bones a (rx), a (ry), c, y, z under the root. "a y" finds the first a; "c a" moves that a
    // below c, after which the first a in pre-order is the second one, so "a z" fills it:
    //   root
    //   +-- a (ry) -- z
    //   +-- c -- a (rx) -- y
    ASSERT_TRUE(Read(kRoot + ":bonedata\n" + BoneBlock("a") + BoneBlock("a", "    dof ry\n") + BoneBlock("c") +
                     BoneBlock("y") + BoneBlock("z") + ":hierarchy\n  begin\n    a y\n    c a\n    a z\n  end\n"));
    EXPECT_EQ(TreeText(mScene.mRoot), "root(a(z) c(a(y)))");
    EXPECT_EQ(mScene.mRoot->mChildren[0]->mDof[0], 4);
    EXPECT_EQ(mScene.mRoot->mChildren[1]->mChildren[0]->mDof[0], 5);
}

TEST(HostileImport, ChainAtTheDepthLimitImportsIntoHostNodes)
{
    // The import path walks the tree recursively; the depth limit keeps it well within the stack.
    const std::string lAsf = testfiles::ScratchPath("chain.asf");
    const std::string lAmc = testfiles::ScratchPath("chain.amc");
    std::ofstream(lAsf) << ChainSkeleton(kLimit);
    std::ofstream(lAmc) << "1\nb1 10\nb1000 20\n2\nb1 30\nb1000 40\n";
    orvasf::OrvImportSettings lSettings;
    lSettings.mUseLimits = true;
    const orvasf::OrvImportResult lImport = orvasf::OrvImportAsf(lAsf, lAmc, lSettings);
    std::remove(lAsf.c_str());
    std::remove(lAmc.c_str());
    ASSERT_TRUE(lImport.mSucceeded);
    const OrvNode* lEnd = lImport.mRoot->FindChild("b1000_End");
    ASSERT_NE(lEnd, nullptr);
    int lDepth = 0;
    for (const OrvNode* lNode = lEnd; lNode != lImport.mRoot; lNode = lNode->GetParent()) ++lDepth;
    EXPECT_EQ(lDepth, kLimit + 1);
}

namespace {

// One frame of values for every bone of pRoot's tree that has a DOF, at frame pFrame: the root
// moves to (pFrame + 1, 0, 0), every rx DOF turns to 10 * (pFrame + 1) degrees.
void SampleFrame(OrvAsfNode* pRoot, int pFrame)
{
    OrvTime lTime = OrvTime::FromFrame(pFrame, 120.0);
    pRoot->VisitPreOrder([&](OrvAsfNode* pBone) {
        if (pBone->mDofCount == 0) return false;
        double lValues[OrvAsfNode::kMaxDofs] = {};
        for (int i = 0; i < pBone->mDofCount; ++i) lValues[i] = pBone->mDof[i] == 5 ? 10.0 * (pFrame + 1) : 0.0;
        if (pBone == pRoot) lValues[0] = pFrame + 1;
        pBone->AddSampleFromDOF(lValues, lTime, 1.0, 1.0, false, false);
        return false;
    });
}

// The node reached from pTop by taking the first child until there is none; pDepth receives
// the number of steps.
OrvNode* FirstChildDescent(OrvNode* pTop, int& pDepth)
{
    pDepth = 0;
    for (; pTop->GetChildCount() > 0; pTop = pTop->GetChild(0)) ++pDepth;
    return pTop;
}

} // namespace

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
    EXPECT_EQ(lScene.mRoot->Find("missing"), nullptr);

    lScene.mRoot->SetupPosition(false, false);
    EXPECT_DOUBLE_EQ(lBone->mLocalTranslation[1], 1.0);

    // Through a host scene and back: curves, a sampling run of two frames, the node hierarchy, a
    // merge onto it, the skeleton taken from it and bound to it again, the scene's teardown.
    {
        OrvScenePtr lHost = hosttest::CreateHostScene("Take");
        lScene.mRoot->CreateDataFromDOF(lHost.get());
        lScene.mRoot->StartSamplingData();
        SampleFrame(lScene.mRoot, 0);
        SampleFrame(lScene.mRoot, 1);
        lScene.mRoot->StopSamplingData();

        OrvNode* lTop = lScene.ASFToORV(lHost.get(), "Take", true, false, false);
        ASSERT_TRUE(lHost->GetRootNode()->AddChild(lTop));
        // No end node: the last bone has length 0.
        int lDepth = 0;
        OrvNode* lLast = FirstChildDescent(lTop, lDepth);
        EXPECT_EQ(lDepth, kHugeBoneCount);
        EXPECT_STREQ(lLast->GetName(), BoneName(kHugeBoneCount).c_str());
        OrvAnimCurveNode* lLastRotation = lLast->LclRotation.GetCurveNode(nullptr, false);
        ASSERT_NE(lLastRotation, nullptr);
        EXPECT_THAT(hosttest::KeyValues(lLastRotation->GetCurve(0)), ElementsAre(10.0f, 20.0f));

        // The merge finds every bone's node and builds only the new bone below the last one.
        OrvAsfNode* lTail = MakeBone("tail", {}, lBone);
        lTail->mPosition = OrvVector4(0, 1, 0);
        lTail->mLength = 1.0;
        lScene.MergeASFToORV(lHost.get(), lHost->GetRootNode(), "Take", true, false, false);
        EXPECT_EQ(lTop->GetChildCount(true), kHugeBoneCount + 2);
        ASSERT_EQ(lLast->GetChildCount(), 1);
        EXPECT_STREQ(lLast->GetChild(0)->GetName(), "tail");
        EXPECT_STREQ(lLast->GetChild(0)->GetChild(0)->GetName(), "tail_End");
        lBone->RemoveChild(lTail);
        OrvAsfNode::Destroy(lTail);

        // An offset of the root's node puts a dummy bone above it, whose name the merge then
        // looks for through the whole hierarchy in vain.
        lTop->SetRotationOffset(OrvNode::eSourcePivot, OrvVector4(1, 0, 0));
        OrvAsfScene lExported;
        EXPECT_TRUE(lExported.ORVToASF(lHost->GetRootNode(), false, OrvVector4(1, 1, 1), false));
        OrvAsfNode* lExportedLast = lExported.mRoot->Find(BoneName(kHugeBoneCount).c_str());
        ASSERT_NE(lExportedLast, nullptr);
        EXPECT_EQ(DepthOf(lExportedLast), kHugeBoneCount + 2);
        ASSERT_EQ(lExportedLast->mChildren.GetCount(), 1);
        EXPECT_STREQ(lExportedLast->mChildren[0]->mName, "tail");
        lExportedLast->mRotationCurveNode = nullptr;
        EXPECT_TRUE(lExported.MergeORVToASF(lHost->GetRootNode()));
        EXPECT_EQ(lExportedLast->mRotationCurveNode, lLastRotation);
        lHost.reset();
    }

    // The writer walks the whole chain; reading it back stops at the depth limit.
    const std::string lPath = testfiles::ScratchPath("chain.asf");
    ASSERT_TRUE(WriteSkeleton(lScene, lPath));
    OrvFileAcclaimAsf lIn(false);
    OrvAsfScene lAgain;
    ASSERT_TRUE(lIn.Open(lPath.c_str()));
    EXPECT_FALSE(lIn.Read(&lAgain, false, false, false));
    EXPECT_EQ(Messages(lIn).back(), "E: Bone b1001 lies deeper than 1000 bones below the root");
    std::remove(lPath.c_str());

    // Removing the dummies halves the chain; then the end site goes.
    lScene.mRoot->RemoveDummy(false, false);
    EXPECT_EQ(CountSoundBones(lScene.mRoot), static_cast<size_t>(kHugeBoneCount / 2 + 1));
    EXPECT_EQ(lScene.mRoot->Find(BoneName(kHugeBoneCount).c_str()), lBone);
    EXPECT_EQ(lBone->mParent->mParent, lScene.mRoot->Find(BoneName(kHugeBoneCount - 4).c_str()));
    lScene.mRoot->RemoveEndSite();
    EXPECT_EQ(CountSoundBones(lScene.mRoot), static_cast<size_t>(kHugeBoneCount / 2));
    EXPECT_EQ(lScene.mRoot->Find(BoneName(kHugeBoneCount).c_str()), nullptr);
    // The scene's destructor takes the remaining 50000-bone chain apart.
}

TEST(HostileTree, HostNodeChainOfAHundredThousandLevelsIsSearchedCountedAndDestroyed)
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
    int lDepth = 0;
    const OrvNode* lDeepest = FirstChildDescent(lTop, lDepth);
    EXPECT_EQ(lDepth, kHugeBoneCount - 1);
    EXPECT_EQ(lHost->GetRootNode()->FindChild(BoneName(kHugeBoneCount).c_str()), lDeepest);
    EXPECT_EQ(lTop->FindChild("missing"), nullptr);

    lTop->Destroy(true);
    EXPECT_EQ(lHost->GetObjectCount(), lObjectsBefore);
    EXPECT_EQ(lHost->GetRootNode()->GetChildCount(), 0);
}

// --- Size -------------------------------------------------------------------------------------

TEST_F(HostileSkeleton, HundredMegabyteLineIsReadThrough)
{
    const std::string lText = ":documentation\n" + std::string(100u << 20, 'x') + "\n" + kRoot + ":bonedata\n" +
                              BoneBlock("a") + ":hierarchy\n";
    ASSERT_TRUE(Read(lText));
    EXPECT_EQ(TreeText(mScene.mRoot), "root(a)");
}

TEST_F(HostileSkeleton, MegabyteNameIsCutToTheNameLimitWhereverItIsRead)
{
    const std::string lLong(1u << 20, 'n');
    ASSERT_TRUE(Read(kRoot + ":bonedata\n" + BoneBlock(lLong) + BoneBlock("a") + ":hierarchy\n  begin\n    " + lLong +
                     " a\n  end\n"));
    const std::string lKept(49, 'n');
    EXPECT_EQ(TreeText(mScene.mRoot), "root(" + lKept + "(a))");
    const std::string lWarning = "W: Name too long, truncated to 49 bytes (" + std::string(256, 'n') + "...)";
    EXPECT_THAT(Messages(mFile), ElementsAre(lWarning, lWarning));
}

TEST_F(HostileSkeleton, MillionsOfValuesOnOneLineAreReadOnlyAsFarAsNeeded)
{
    std::string lOrder = "  order";
    std::string lDofs = "    dof";
    std::string lLimits = "    limits";
    std::string lChildren = "    a";
    for (int i = 0; i < 2000000; ++i)
    {
        lOrder += " TX";
        lDofs += " rx";
        lLimits += " (-1 1)";
        lChildren += " b";
    }
    ASSERT_TRUE(Read(":root\n" + lOrder + "\n:bonedata\n" + BoneBlock("a", lDofs + "\n" + lLimits + "\n") +
                     BoneBlock("b") + ":hierarchy\n  begin\n" + lChildren + "\n  end\n"));
    EXPECT_THAT(Messages(mFile), ElementsAre("W: Too many degrees of freedom, ignoring (TX)",
                                             "W: Too many degrees of freedom, ignoring (rx)"));
    EXPECT_EQ(mScene.mRoot->mDofCount, OrvAsfNode::kMaxDofs);
    const OrvAsfNode* lBone = mScene.mRoot->Find("a");
    EXPECT_EQ(lBone->mDofCount, OrvAsfNode::kMaxDofs);
    EXPECT_TRUE(lBone->mLimitMinActive[5]);
    EXPECT_EQ(TreeText(mScene.mRoot), "root(a(b))");
}

TEST_F(HostileSkeleton, MillionsOfBadLinesKeepTheFirstWarningsAndTheError)
{
    // Two million unknown lines in a bone block, each worth a warning, then a forbidden name.
    std::string lJunk;
    for (int i = 0; i < 2000000; ++i) lJunk += "    x\n";
    EXPECT_FALSE(Read(kRoot + ":bonedata\n  begin\n" + lJunk + "    name root\n  end\n"));
    const std::vector<std::string> lTexts = Messages(mFile);
    const size_t lKept = OrvDiagnostics::kMaxKeptWarnings;
    ASSERT_EQ(lTexts.size(), lKept + 2);
    EXPECT_EQ(lTexts[lKept - 1], "W: Unknown bonedata token");
    EXPECT_EQ(lTexts[lKept], "W: Too many warnings, the others are not reported");
    EXPECT_EQ(lTexts.back(), "E: Forbidden bone name");
    EXPECT_EQ(mFile.GetWarningCount(), 2000000);
    EXPECT_EQ(mFile.GetErrorCount(), 1);
}

// --- Numbers ----------------------------------------------------------------------------------

TEST(HostileNumbers, OutOfRangeAndNotANumberAreRefusedWithTheReadersMessages)
{
    struct Case
    {
        std::string mBoneLine;
        bool mRead;
        std::string mMessage;
    };
    const Case lCases[] = {
        {"    length 1e400\n", false, "E: Can't read bone length"},
        {"    length nan\n", false, "E: Can't read bone length"},
        {"    direction 1 nan 0\n", false, "E: Can't read bone direction"},
        {"    direction 1 -1e400 0\n", false, "E: Can't read bone direction"},
        {"    axis 0 nan 0 XYZ\n", false, "E: Can't read bone local coordinate system"},
        {"    dof rx\n    limits (1e-400 0)\n", false, "E: Can't read dof limits"},
        {"    dof rx\n    limits (NaN 0)\n", false, "E: Can't read dof limits"},
        {"    id 1e400\n", true, "W: Can't read bone id value"},
        {"    bodymass nan\n", true, "W: Can't read bodymass value"},
    };
    for (const Case& lCase : lCases)
    {
        OrvFileAcclaimAsf lFile(false);
        OrvAsfScene lScene;
        const std::string lText = kRoot + ":bonedata\n  begin\n    name a\n    direction 0 1 0\n    length 1\n" +
                                  lCase.mBoneLine + "  end\n:hierarchy\n";
        EXPECT_EQ(ReadText(lFile, lScene, lText), lCase.mRead) << lCase.mBoneLine;
        EXPECT_THAT(Messages(lFile), ElementsAre(lCase.mMessage)) << lCase.mBoneLine;
    }
}

TEST(HostileNumbers, LimitBoundsBeyondTheFiniteRangeReadLikeInfiniteOnes)
{
    struct Case
    {
        std::string mPair;
        bool mMinActive;
        double mMin;
        bool mMaxActive;
        double mMax;
    };
    const double kLargest = std::numeric_limits<double>::max();
    const double kInf = std::numeric_limits<double>::infinity();
    const Case lCases[] = {
        {"(-inf inf)", false, 0.0, false, 0.0},
        {"(-1e309 1e999)", false, 0.0, false, 0.0},
        {"(-1e999 1.7977e+308)", false, 0.0, false, 0.0},
        {"(-1.7976931348623159e308 1.7976931348623159e308)", false, 0.0, false, 0.0},
        {"(-1.7976931348623157e308 1.7976931348623157e308)", true, -kLargest, true, kLargest},
        {"(-1.7976931348623158e308 1.7976931348623158e308)", true, -kLargest, true, kLargest},  // rounds to the largest
        // On the wrong side an infinity is a present bound, and so is an overflow.
        {"(inf -inf)", true, kInf, true, -kInf},
        {"(1e999 -1e309)", true, kInf, true, -kInf},
    };
    const int lRy = 4;  // the code of "ry"
    for (const Case& lCase : lCases)
    {
        OrvFileAcclaimAsf lFile(false);
        OrvAsfScene lScene;
        const std::string lBone = BoneBlock("a", "    dof ry\n    limits " + lCase.mPair + "\n");
        ASSERT_TRUE(ReadText(lFile, lScene, kRoot + ":bonedata\n" + lBone + ":hierarchy\n")) << lCase.mPair;
        EXPECT_THAT(Messages(lFile), IsEmpty()) << lCase.mPair;
        const OrvAsfNode* lRead = lScene.mRoot->Find("a");
        EXPECT_EQ(lRead->mLimitMinActive[lRy], lCase.mMinActive) << lCase.mPair;
        EXPECT_EQ(lRead->mLimitMin[lRy], lCase.mMin) << lCase.mPair;
        EXPECT_EQ(lRead->mLimitMaxActive[lRy], lCase.mMaxActive) << lCase.mPair;
        EXPECT_EQ(lRead->mLimitMax[lRy], lCase.mMax) << lCase.mPair;
    }
}

TEST(HostileNumbers, HeaderValuesOutOfRangeKeepTheirDefaults)
{
    // An infinite length unit would make every length 0, and an infinite length NaN.
    OrvFileAcclaimAsf lFile(false);
    OrvAsfScene lScene;
    ASSERT_TRUE(ReadText(lFile, lScene,
                         ":version 1e400\n:units\n  mass nan\n  length 1e-400\n  mass inf\n  length -inf\n:root\n"
                         "  position nan 0 0\n  orientation 1e400 0 0\n:hierarchy\n"));
    EXPECT_THAT(Messages(lFile), ElementsAre("W: Can't read file format version (1e400), trying version 1.10",
                                             "W: Can't read mass unit, using 1.000000",
                                             "W: Can't read length unit, using 1.000000",
                                             "W: Can't read mass unit, using 1.000000",
                                             "W: Can't read length unit, using 1.000000",
                                             "W: Can't read position, using 0.0 0.0 0.0",
                                             "W: Can't read orientation, using 0.0 0.0 0.0"));
    EXPECT_EQ(lScene.mMassUnit, 1.0);
    EXPECT_EQ(lScene.mLengthUnit, 1.0);
    EXPECT_EQ(lScene.mRoot->mPosition[0], 0.0);
}

TEST(HostileNumbers, ZeroLengthStaysZeroWhenATinyUnitOverflowsTheFactor)
{
    // 2.54 / 1e-308 is beyond the largest double: a length of 1 becomes infinite, one of 0 stays
    // 0 (not 0 times infinity), and the skeleton writes and reads back.
    OrvFileAcclaimAsf lFile(false);
    OrvAsfScene lScene;
    ASSERT_TRUE(ReadText(lFile, lScene,
                         ":name tiny\n  length 1e-308\n" + kRoot + ":bonedata\n" + BoneBlock("a") +
                             "  begin\n    name z\n    direction 0 1 0\n    length 0\n  end\n:hierarchy\n"));
    EXPECT_TRUE(std::isinf(lScene.mRoot->Find("a")->mLength));
    EXPECT_EQ(lScene.mRoot->Find("z")->mLength, 0.0);

    const std::string lPath = testfiles::ScratchPath("tiny_unit.asf");
    ASSERT_TRUE(WriteSkeleton(lScene, lPath));
    OrvFileAcclaimAsf lIn(false);
    OrvAsfScene lAgain;
    ASSERT_TRUE(lIn.Open(lPath.c_str()));
    EXPECT_TRUE(lIn.Read(&lAgain, false, false, false));
    EXPECT_EQ(lAgain.mRoot->Find("z")->mLength, 0.0);
    std::remove(lPath.c_str());
}
