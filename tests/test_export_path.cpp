// The export path: skeletons extracted from host hierarchies (intermediate bones, DOFs, limits,
// rest rotations, scales, end-site pruning), the merge of an existing skeleton onto a host
// hierarchy, and round trips of the real skeletons through the host and an ASF file.

#include "tests/AsfTestSupport.h"
#include "support/HostSceneSupport.h"
#include "support/ReferenceKinematics.h"
#include "support/ScratchFiles.h"

#include "orvsdk/host/anim/OrvAnimCurveNode.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <string>
#include <utility>
#include <vector>

using namespace orvsdk;
using namespace orvsdk::asftest;
using namespace orvsdk::hosttest;

namespace {

const OrvVector4 kUnitScale(1, 1, 1);

// A host joint at (pX, pY, pZ) from its parent's joint, by local translation.
OrvNode* AddJoint(OrvNode* pParent, const char* pName, double pX, double pY, double pZ)
{
    OrvNode* lNode = AddNode(pParent, pName);
    SetProperty(lNode->LclTranslation, OrvVector4(pX, pY, pZ));
    return lNode;
}

class ExportPath : public ::testing::Test
{
protected:
    OrvScenePtr mScene = CreateHostScene();
    OrvNode* mHostRoot = AddNode(mScene->GetRootNode(), "R", false);  // no skeleton attribute
    OrvAsfScene mAsf;
};

} // namespace

// --- Extraction ----------------------------------------------------------------------------------

// Host (local translations):
//        R -> Hips (0, 89, 0) plus a rotation offset (0, 1, 0)
//               +-- Spine (0, 10, 0) -> Head (0, 30, 0)
//               +-- LeftUpLeg (8, -5, 0)
//               +-- RightUpLeg (-8, -5, 0)
//               +-- Mesh (no skeleton) -> Hidden (skeleton)
TEST_F(ExportPath, WholeExportInsertsIntermediateBonesAndPrunesEndSites)
{
    OrvNode* lHips = AddJoint(mHostRoot, "Hips", 0, 89, 0);
    lHips->SetRotationOffset(OrvNode::eSourcePivot, OrvVector4(0, 1, 0));
    AddJoint(AddJoint(lHips, "Spine", 0, 10, 0), "Head", 0, 30, 0);
    AddJoint(lHips, "LeftUpLeg", 8, -5, 0);
    AddJoint(lHips, "RightUpLeg", -8, -5, 0);
    AddNode(AddNode(lHips, "Mesh", false), "Hidden");
    mAsf.mLengthUnit = 0.45;

    EXPECT_TRUE(mAsf.ORVToASF(mHostRoot, false, kUnitScale, true));

    EXPECT_STREQ(mAsf.mName, "ASF");
    EXPECT_EQ(mAsf.mLengthUnit, 1.0);
    EXPECT_EQ(TreeText(mAsf.mRoot), "root(HipsDummy(Hips(SpineDummy(Spine) LeftUpLegDummy RightUpLegDummy)))");
    EXPECT_EQ(Dofs(*mAsf.mRoot), (std::vector<int>{0, 1, 2, 5, 4, 3}));
    EXPECT_EQ(Dofs(*mAsf.mRoot->Find("Spine")), (std::vector<int>{5, 4, 3}));
    EXPECT_EQ(mAsf.mRoot->Find("HipsDummy")->mDofCount, 0);
    EXPECT_NEAR(mAsf.mRoot->Find("HipsDummy")->mLength, 90 / 2.54, 1e-12);  // translation plus offset
    EXPECT_EQ(mAsf.mRoot->Find("Hips")->mLength, 0.0);
    EXPECT_NEAR(mAsf.mRoot->Find("Spine")->mLength, 30 / 2.54, 1e-12);  // Head's offset, Head gone

    // Without the local transforms only the rotation offsets count.
    EXPECT_TRUE(mAsf.ORVToASF(mHostRoot, false, kUnitScale, false));
    EXPECT_NEAR(mAsf.mRoot->Find("HipsDummy")->mLength, 1 / 2.54, 1e-12);
    EXPECT_EQ(TreeText(mAsf.mRoot), "root(HipsDummy(Hips(Spine)))");
}

TEST_F(ExportPath, OnlyAnimatedZeroLengthLeavesSurviveThePruning)
{
    OrvNode* lArm = AddJoint(mHostRoot, "Arm", 0, 5, 0);
    OrvNode* lMoving = AddJoint(lArm, "Moving", 1, 0, 0);
    AddJoint(lArm, "Still", -1, 0, 0);
    OrvNode* lFlat = AddJoint(lArm, "Flat", 0, 0, 1);
    OrvAnimCurve* lCurve = OrvAnimCurve::Create(mScene.get(), "curve");
    AddKey(lCurve, 0, 1.0f);
    lMoving->LclRotation.GetCurveNode(mScene->GetCurrentAnimationStack(), true)->ConnectToChannel(lCurve, 0);
    // A curve node whose curve has no key does not animate.
    lFlat->LclTranslation.GetCurveNode(mScene->GetCurrentAnimationStack(), true)
        ->ConnectToChannel(OrvAnimCurve::Create(mScene.get(), "empty"), 0);

    mAsf.ORVToASF(mHostRoot, false, kUnitScale, true);

    EXPECT_EQ(TreeText(mAsf.mRoot), "root(ArmDummy(Arm(MovingDummy(Moving) StillDummy FlatDummy)))");
    EXPECT_EQ(mAsf.mRoot->Find("Moving")->mRotationCurveNode, lMoving->LclRotation.GetCurveNode(nullptr));
}

TEST_F(ExportPath, DofsAndLimitsComeFromTheHostJoint)
{
    OrvNode* lJoint = AddJoint(mHostRoot, "Joint", 0, 0, 0);
    AddJoint(lJoint, "Child", 0, 1, 0);
    lJoint->SetRotationOrder(OrvNode::eSourcePivot, OrvEuler::eOrderZYX);
    OrvLimits& lRotation = lJoint->GetRotationLimits();
    lRotation.SetMinActive(true, false, false);
    lRotation.SetMin(OrvVectorTemplate3<double>(-30, -40, -50));
    lRotation.SetMax(OrvVectorTemplate3<double>(30, 40, 50));
    OrvLimits& lTranslation = lJoint->GetTranslationLimits();
    lTranslation.SetMaxActive(false, true, false);
    lTranslation.SetMax(OrvVectorTemplate3<double>(6, 7, 8));

    for (bool lTranslationDofs : {true, false})
    {
        SCOPED_TRACE(lTranslationDofs);
        mAsf.ORVToASF(mHostRoot, lTranslationDofs, kUnitScale, true);
        const OrvAsfNode* lBone = mAsf.mRoot->Find("Joint");
        ASSERT_NE(lBone, nullptr);
        EXPECT_EQ(Dofs(*lBone), lTranslationDofs ? (std::vector<int>{0, 1, 2, 3, 4, 5}) : (std::vector<int>{3, 4, 5}));
        EXPECT_TRUE(lBone->mLimitMinActive[5]);
        EXPECT_FALSE(lBone->mLimitMinActive[4] || lBone->mLimitMinActive[3] || lBone->mLimitMaxActive[5]);
        EXPECT_TRUE(lBone->mLimitMin[5] == -30 && lBone->mLimitMin[4] == -40 && lBone->mLimitMax[3] == 50);
        EXPECT_EQ(lBone->mLimitMaxActive[1], lTranslationDofs);
        EXPECT_EQ(std::vector<double>(lBone->mLimitMax, lBone->mLimitMax + 2),
                  (lTranslationDofs ? std::vector<double>{6, 7} : std::vector<double>{0, 0}));
    }
}

TEST_F(ExportPath, RootRotationCodesFollowTheHostRootsOrder)
{
    const std::pair<int, std::vector<int>> kCases[] = {
        {OrvEuler::eOrderXYZ, {0, 1, 2, 5, 4, 3}},
        {OrvEuler::eOrderZYX, {0, 1, 2, 3, 4, 5}},
        {OrvEuler::eOrderYZX, {0, 1, 2, 4, 3, 5}},
        {OrvEuler::eOrderSphericXYZ, {0, 1, 2, 5, 4, 3}},  // no Euler sequence: like other bones
    };
    for (const auto& lCase : kCases)
    {
        mHostRoot->SetRotationOrder(OrvNode::eSourcePivot, static_cast<OrvEuler::EOrder>(lCase.first));
        mAsf.ORVToASF(mHostRoot, false, kUnitScale, true);
        EXPECT_EQ(Dofs(*mAsf.mRoot), lCase.second) << lCase.first;
        EXPECT_EQ(TreeText(mAsf.mRoot), "root");
    }
}

// Host: R -> Parent -> Joint (pre-rotation, rotation, post-rotation, order ZYX) -> Child
TEST_F(ExportPath, RestRotationCombinesPreRotationLocalRotationAndPostRotation)
{
    OrvNode* lJoint = AddJoint(AddJoint(mHostRoot, "Parent", 0, 0, 0), "Joint", 0, 2, 0);
    AddNode(lJoint, "Child")->SetRotationOffset(OrvNode::eSourcePivot, OrvVector4(0, 3, 0));
    lJoint->SetRotationOrder(OrvNode::eSourcePivot, OrvEuler::eOrderZYX);
    lJoint->SetPreRotation(OrvNode::eSourcePivot, OrvVector4(10, 0, 0));
    lJoint->SetPostRotation(OrvNode::eSourcePivot, OrvVector4(0, 0, 5));
    SetProperty(lJoint->LclRotation, OrvVector4(15, 20, 25));

    using namespace orvsdk::reference;
    const Mat3 lPre = AxisRotation(0, 10);
    const Mat3 lFull = Multiply(Multiply(lPre, EulerRotation(OrvVector4(15, 20, 25), OrvEuler::eOrderZYX)),
                                Transpose(AxisRotation(2, 5)));
    for (bool lUseLocalTransform : {true, false})
    {
        mAsf.ORVToASF(mHostRoot, false, kUnitScale, lUseLocalTransform);
        const OrvAsfNode* lBone = mAsf.mRoot->Find("Joint");
        EXPECT_LT(math3::LargestDifference(RotationOf(lBone->mAxisMatrix), lUseLocalTransform ? lFull : lPre), 1e-12);
        // The child's offset is given in the joint's frame and comes out in world axes.
        const Vec3 lVector = Apply(lUseLocalTransform ? lFull : lPre, Vec3{0, 3, 0});
        ExpectVectorNear(lBone->mDirection * lBone->mLength * 2.54, lVector[0], lVector[1], lVector[2], 1e-12);
    }
}

// Host: R -> A (1, 1, 0), scaled by 2 -> B (0, 3, 0) -> C (0, 0, 4), exported at scale (2, 1, 1)
TEST_F(ExportPath, ScalesAccumulateDownTheHierarchy)
{
    OrvNode* lA = AddJoint(mHostRoot, "A", 1, 1, 0);
    SetProperty(lA->LclScaling, OrvVector4(2, 2, 2));
    AddJoint(AddJoint(lA, "B", 0, 3, 0), "C", 0, 0, 4);

    mAsf.ORVToASF(mHostRoot, false, OrvVector4(2, 1, 1), true);

    EXPECT_EQ(TreeText(mAsf.mRoot), "root(ADummy(A(B)))");
    ExpectVectorNear(mAsf.mRoot->Find("ADummy")->mPosition, 2, 1, 0);
    ExpectVectorNear(mAsf.mRoot->Find("A")->mPosition, 0, 6, 0);
    ExpectVectorNear(mAsf.mRoot->Find("B")->mPosition, 0, 0, 8);
}

TEST_F(ExportPath, LongNamesAreCutWithoutSplittingACharacter)
{
    const std::string lExact(255, 'a');
    const std::string lSplit = std::string(254, 'b') + "\xC3\xA9";  // 256 bytes, ends in a 2-byte é
    OrvNode* lFirst = AddJoint(mHostRoot, lExact.c_str(), 1, 0, 0);
    AddJoint(lFirst, "x", 1, 0, 0);
    AddJoint(AddJoint(lFirst, lSplit.c_str(), 0, 1, 0), "y", 1, 0, 0);

    mAsf.ORVToASF(mHostRoot, false, kUnitScale, true);

    OrvAsfNode* lDummy = mAsf.mRoot->GetChild(0);
    EXPECT_EQ(std::string(lDummy->mName), lExact);  // "Dummy" does not fit behind 255 bytes
    EXPECT_EQ(std::string(lDummy->GetChild(0)->mName), lExact);
    OrvAsfNode* lSplitDummy = lDummy->GetChild(0)->GetChild(1);
    EXPECT_EQ(std::string(lSplitDummy->mName), std::string(254, 'b') + "D");
    EXPECT_EQ(std::string(lSplitDummy->GetChild(0)->mName), std::string(254, 'b'));
}

// --- Merge ---------------------------------------------------------------------------------------

// The skeleton root -> HipsDummy -> Hips -> Spine, merged onto the host R2 -> Extra -> Hips ->
// Spine, where no HipsDummy exists and Hips sits one level deeper than its bone.
TEST_F(ExportPath, MergeBindsBonesByNameAndTakesTheNearestBoundAncestorsFrame)
{
    AddJoint(AddJoint(AddJoint(mHostRoot, "Hips", 0, 90, 0), "Spine", 0, 10, 0), "Head", 0, 30, 0);
    mAsf.ORVToASF(mHostRoot, false, kUnitScale, true);
    ASSERT_EQ(TreeText(mAsf.mRoot), "root(HipsDummy(Hips(Spine)))");
    OrvAsfNode* lRoot = mAsf.mRoot;
    OrvAsfNode* lHipsDummy = lRoot->Find("HipsDummy");
    OrvAsfNode* lHips = lRoot->Find("Hips");
    OrvAsfNode* lSpine = lRoot->Find("Spine");
    // Distinct frames, so that the copy shows whose frame it is.
    lRoot->mAxisMatrix.SetR(OrvVector4(0, 0, 10));
    lHipsDummy->mAxisMatrix.SetR(OrvVector4(0, 0, 20));
    lHips->mAxisMatrix.SetR(OrvVector4(0, 0, 30));
    const OrvAMatrix lDummyParentFrame = lHipsDummy->mParentAxisMatrix;

    OrvNode* lOther = AddNode(mScene->GetRootNode(), "R2", false);
    lOther->SetRotationOffset(OrvNode::eSourcePivot, OrvVector4(4, 5, 6));
    OrvNode* lHostHips = AddNode(AddNode(lOther, "Extra"), "Hips");
    AddNode(lHostHips, "Spine");
    OrvAnimCurveNode* lHipsRotation = lHostHips->LclRotation.GetCurveNode(nullptr, true);

    EXPECT_TRUE(mAsf.MergeORVToASF(lOther));

    ExpectVectorNear(lRoot->mRotationOffset, 4, 5, 6, 0.0);
    EXPECT_EQ(lHipsDummy->mParentAxisMatrix, lDummyParentFrame);
    EXPECT_EQ(lHips->mParentAxisMatrix, lRoot->mAxisMatrix);
    EXPECT_EQ(lHips->mRotationCurveNode, lHipsRotation);
    EXPECT_EQ(lSpine->mParentAxisMatrix, lHips->mAxisMatrix);
    EXPECT_EQ(lSpine->mTranslationCurveNode, nullptr);
    EXPECT_EQ(TreeText(lRoot), "root(HipsDummy(Hips(Spine)))");
}

// --- Real skeletons through the host and back ----------------------------------------------------

namespace {

reference::Skeleton DescribeFile(const std::string& pPath)
{
    const auto lRead = ReadAsfFile(pPath);
    EXPECT_TRUE(lRead->mRead) << pPath;
    return lRead->mScene.mRoot ? reference::DescribeSkeleton(lRead->mScene) : reference::Skeleton();
}

// Imports the file, exports the host nodes and writes the result to pOutput. The rest pose
// reaches the exporter in local transforms, or with pPivots in rotation offsets and pre-rotations.
void ExportThroughHost(const std::string& pInput, bool pPivots, const std::string& pOutput)
{
    OrvScenePtr lHost = CreateHostScene();
    const auto lImported = ReadAsfFile(pInput, false, {pPivots, pPivots});
    ASSERT_TRUE(lImported->mRead);
    OrvNode* lRoot = lImported->mScene.ASFToORV(lHost.get(), "Take", true, pPivots, pPivots);
    lHost->GetRootNode()->AddChild(lRoot);

    OrvAsfScene lExported;
    lExported.ORVToASF(lRoot, false, kUnitScale, !pPivots);
    OrvFileAcclaimAsf lWriter(false);
    ASSERT_TRUE(lWriter.Create(pOutput.c_str()));
    EXPECT_TRUE(lWriter.Write(&lExported));
    ASSERT_TRUE(lWriter.Close());
}

// The largest distance between the joints and bone ends of pOriginal and those of the bones of
// the same names in pCopy. Bones the copy lacks must be zero-length leaves (end sites).
double LargestRestPoseDifference(const reference::Skeleton& pOriginal, const reference::Skeleton& pCopy)
{
    const std::vector<reference::BonePose> lOriginal = reference::Pose(pOriginal, nullptr);
    const std::vector<reference::BonePose> lCopy = reference::Pose(pCopy, nullptr);
    double lLargest = 0.0;
    for (size_t b = 0; b < pOriginal.mBones.size(); ++b)
    {
        const reference::Bone& lBone = pOriginal.mBones[b];
        const auto lFound = pCopy.mIndex.find(lBone.mName);
        if (lFound == pCopy.mIndex.end())
        {
            EXPECT_EQ(reference::Distance(lBone.mVector, reference::Vec3{}), 0.0) << lBone.mName << " is missing";
            continue;
        }
        lLargest = std::max(lLargest, reference::Distance(lOriginal[b].mStart, lCopy[lFound->second].mStart));
        lLargest = std::max(lLargest, reference::Distance(lOriginal[b].mEnd, lCopy[lFound->second].mEnd));
    }
    return lLargest;
}

} // namespace

TEST(ExportRealSkeletons, RoundTripThroughTheHostKeepsEveryJoint)
{
    const auto lFiles = RealAsfFiles();
    if (lFiles.empty()) GTEST_SKIP() << "no shared data folder";
    const std::string lOutput = testfiles::ScratchPath("export.asf");
    for (const auto& lPath : lFiles)
    {
        const reference::Skeleton lOriginal = DescribeFile(lPath.string());
        for (bool lPivots : {false, true})
        {
            SCOPED_TRACE(lPath.filename().string() + (lPivots ? " pivots" : " local"));
            ExportThroughHost(lPath.string(), lPivots, lOutput);
            if (HasFatalFailure()) return;
            const reference::Skeleton lCopy = DescribeFile(lOutput);
            ASSERT_FALSE(lCopy.mBones.empty());
            EXPECT_LT(LargestRestPoseDifference(lOriginal, lCopy), 1e-3);
        }
    }
    std::remove(lOutput.c_str());
}
