// Rest pose set-up and skeleton simplification, with an independent check: composing the rest
// values from the root down must give back every bone's global frame and joint position.

#include "AsfTestSupport.h"
#include "support/ReferenceKinematics.h"

#include "orvsdk/host/core/OrvMemory.h"
#include "orvsdk/skeleton/OrvRotationOrder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <map>

using namespace orvsdk;
using namespace orvsdk::asftest;
using math3::Mat3;

namespace {

// --- The independent composition ---------------------------------------------------------------

// Global joint position of every bone: the root's position plus the offsets along the path.
void JointsFromOffsets(const OrvAsfNode& pBone, const OrvVector4& pParentJoint, std::map<std::string, OrvVector4>& pJoints)
{
    const OrvVector4 lJoint = pBone.mParent ? pParentJoint + pBone.mParentOffset : pBone.mPosition;
    pJoints[pBone.mName] = lJoint;
    for (int i = 0; i < pBone.mChildren.GetCount(); ++i) JointsFromOffsets(*pBone.mChildren[i], lJoint, pJoints);
}

// Composes the rest values that pFlags compute from the root down and returns the largest
// difference to each bone's frame mAxisMatrix and to its joint in pJoints; a rest value that a
// flag moves elsewhere must be zero.
double ComposeSubtree(const OrvAsfNode& pBone, const Mat3& pParentFrame, const OrvVector4& pParentJoint, SetupFlags pFlags,
                      const std::map<std::string, OrvVector4>& pJoints)
{
    double lWorst = 0.0;
    Mat3 lFrame = reference::RotationOf(pBone.mAxisMatrix);
    if (!pFlags.mUsePreRotation)
    {
        // The rest rotation: its X, Y, Z angles applied in the bone's rotation order.
        const Mat3 lComposed = math3::Multiply(
            pParentFrame, reference::EulerRotation(pBone.mLocalRotation, EulerOrderFromOrderBuf(pBone.mDof, pBone.mDofCount)));
        lWorst = std::max(lWorst, math3::LargestDifference(lComposed, lFrame));
        lFrame = lComposed;
    }
    else
    {
        lWorst = std::max(lWorst, pBone.mLocalRotation.Length());
    }
    OrvVector4 lJoint = pJoints.at(pBone.mName);
    if (!pFlags.mUseRotationOffset)
    {
        const OrvVector4 lLocal = pBone.mLocalTranslation;
        const math3::Vec3 lTurned = math3::Apply(pParentFrame, reference::ToVec3(lLocal));
        const OrvVector4 lComposed = pBone.mParent ? pParentJoint + OrvVector4(lTurned[0], lTurned[1], lTurned[2]) : lLocal;
        lWorst = std::max(lWorst, (lComposed - lJoint).Length());
        lJoint = lComposed;
    }
    else
    {
        lWorst = std::max(lWorst, pBone.mLocalTranslation.Length());
    }
    for (int i = 0; i < pBone.mChildren.GetCount(); ++i)
        lWorst = std::max(lWorst, ComposeSubtree(*pBone.mChildren[i], lFrame, lJoint, pFlags, pJoints));
    return lWorst;
}

double ComposeFromRoot(const OrvAsfNode& pRoot, SetupFlags pFlags)
{
    std::map<std::string, OrvVector4> lJoints;
    JointsFromOffsets(pRoot, OrvVector4(), lJoints);
    return ComposeSubtree(pRoot, math3::Identity(), OrvVector4(), pFlags, lJoints);
}

// With both flags set every position is the bone vector and each offset the parent's bone vector.
void ExpectNoRestValues(OrvAsfNode* pRoot)
{
    for (const OrvAsfNode* lBone : AllBones(pRoot))
    {
        SCOPED_TRACE(lBone->mName);
        EXPECT_EQ((lBone->mPosition - lBone->mDirection * lBone->mLength).Length(), 0.0);
        EXPECT_EQ((lBone->mParentOffset - (lBone->mParent ? lBone->mParent->mPosition : OrvVector4())).Length(), 0.0);
    }
}

// A skeleton with unusual rotation orders, axes in every axis order and a dummy bone.
//   root (order 5) -> a (rz rx ry) -> b (ry)
//                                  -> c (dummy) -> d (rx rz) -> e (tx rz ry rx)
const char* const kMixedSkeleton =
    ":units\n  length 0.45\n"
    ":root\n  order TX TY TZ RZ RY RX\n  axis XYZ\n  position 1 2 3\n  orientation 10 -20 30\n"
    ":bonedata\n"
    "  begin\n    name a\n    direction 1 1 0\n    length 2\n    axis 10 20 30 ZYX\n    dof rz rx ry\n  end\n"
    "  begin\n    name b\n    direction 0 1 0\n    length 3\n    axis -40 5 60 XYZ\n    dof ry\n  end\n"
    "  begin\n    name c\n    direction 0 0 1\n    length 1\n    axis 0 0 0 YZX\n  end\n"
    "  begin\n    name d\n    direction 1 0 0\n    length 1\n    axis 15 25 35 XZY\n    dof rx rz\n  end\n"
    "  begin\n    name e\n    direction 1 2 3\n    length 4\n    axis 170 -80 95 ZXY\n    dof tx rz ry rx\n  end\n"
    ":hierarchy\n  begin\n    root a\n    a b c\n    c d\n    d e\n  end\n";

} // namespace

// --- SetupPosition --------------------------------------------------------------------------------

TEST(AsfBindPose, ComposedRestValuesGiveBackEveryFrameAndJoint)
{
    for (const SetupFlags& lFlags : kAllSetupFlags)
        for (bool lRemoveDummy : {false, true})
        {
            SCOPED_TRACE(FlagsText(lFlags) + (lRemoveDummy ? ", without dummies" : ""));
            const auto lRead = ReadAsfText(kMixedSkeleton, lRemoveDummy, lFlags);
            ASSERT_TRUE(lRead->mRead);
            EXPECT_EQ(TreeText(lRead->mScene.mRoot), lRemoveDummy ? "root(a(b d(e)))" : "root(a(b c(d(e))))");
            EXPECT_LT(ComposeFromRoot(*lRead->mScene.mRoot, lFlags), 1e-9);
        }
}

// --- RemoveDummy --------------------------------------------------------------------------------

namespace {

// A tree whose bones point along X with unit length and carry distinct axis frames, set up with
// both flags clear. pLayout lists "parent child dofs" triples; "-" means no dof.
class AsfSimplifyTree : public ::testing::Test
{
protected:
    void Build(std::vector<std::vector<std::string>> pLayout)
    {
        OrvAsfNode::Destroy(mScene.mRoot);
        mJointsBefore.clear();
        mScene.mRoot = MakeBone("root", {0, 1, 2, 5, 4, 3});
        double lAngle = 10.0;
        for (const auto& lLine : pLayout)
        {
            std::vector<int> lDofs;
            if (lLine[2] != "-") lDofs = {5, 4, 3};
            OrvAsfNode* lBone = MakeBone(lLine[1].c_str(), lDofs, mScene.mRoot->Find(lLine[0].c_str()));
            lBone->mDirection = OrvVector4(1, 0, 0);
            lBone->mLength = 1.0 + lAngle / 100.0;
            lBone->mAxisMatrix.SetR(OrvVector4(lAngle, -lAngle / 2, lAngle * 1.5));
            lBone->mAxisMatrixInverse = lBone->mAxisMatrix.Inverse();
            lAngle += 10.0;
        }
        mScene.mRoot->SetupPosition(false, false);
        JointsFromOffsets(*mScene.mRoot, OrvVector4(), mJointsBefore);
    }

    void RemoveDummies() { mScene.mRoot->RemoveDummy(false, false); }

    // Every remaining bone keeps its joint and its frame is still reached by composition.
    void ExpectPoseKept()
    {
        std::map<std::string, OrvVector4> lJoints;
        JointsFromOffsets(*mScene.mRoot, OrvVector4(), lJoints);
        for (const auto& lJoint : lJoints) EXPECT_LT((lJoint.second - mJointsBefore.at(lJoint.first)).Length(), 1e-12) << lJoint.first;
        EXPECT_LT(ComposeFromRoot(*mScene.mRoot, {false, false}), 1e-9);
    }

    OrvAsfNode* Find(const char* pName) { return mScene.mRoot->Find(pName); }

    OrvAsfScene mScene;
    std::map<std::string, OrvVector4> mJointsBefore;
};

} // namespace

TEST_F(AsfSimplifyTree, DummiesHandTheirChildrenUpInReverseOrderAfterTheRemainingSiblings)
{
    const std::pair<std::vector<std::vector<std::string>>, std::string> lCases[] = {
        {{{"root", "d", "-"}, {"d", "a", "dof"}, {"d", "b", "dof"}}, "root(b a)"},
        {{{"root", "x", "dof"}, {"root", "d", "-"}, {"root", "y", "dof"}, {"d", "p", "dof"}, {"d", "q", "dof"}},
         "root(x y q p)"},
        {{{"root", "d1", "-"}, {"d1", "d2", "-"}, {"d2", "g", "dof"}, {"g", "h", "dof"}}, "root(g(h))"},
        {{{"root", "leaf", "-"}, {"root", "one", "dof"}}, "root(one)"},
    };
    for (const auto& [lLayout, lTree] : lCases)
    {
        SCOPED_TRACE(lTree);
        Build(lLayout);
        mScene.mRoot->mDofCount = 0;  // a root stays, with or without DOFs
        RemoveDummies();
        EXPECT_EQ(TreeText(mScene.mRoot), lTree);
        ExpectPoseKept();
    }
}

TEST_F(AsfSimplifyTree, DummyStaysWhenItsParentCannotTakeItsChildren)
{
    // The root holds x, d, y (capacity 4): p fits, q does not.
    Build({{"root", "x", "dof"}, {"root", "d", "-"}, {"root", "y", "dof"}, {"d", "p", "dof"}, {"d", "q", "dof"}});
    {
        OrvAllocFailureScope lFailure(1);
        RemoveDummies();
    }
    EXPECT_EQ(TreeText(mScene.mRoot), "root(x d(p q) y)");
    ExpectPoseKept();
}

// --- RemoveEndSite --------------------------------------------------------------------------------

TEST_F(AsfSimplifyTree, EndSiteRemovalDoesNotCascadeInOneCall)
{
    Build({{"root", "a", "dof"}, {"a", "b", "dof"}});
    Find("a")->mLength = 0.0;
    Find("b")->mLength = 0.0;
    mScene.mRoot->RemoveEndSite();
    EXPECT_EQ(TreeText(mScene.mRoot), "root(a)");
    mScene.mRoot->RemoveEndSite();
    EXPECT_EQ(TreeText(mScene.mRoot), "root");
}

// --- Real skeletons -----------------------------------------------------------------------------

TEST(AsfBindPoseRealFiles, ComposedRestValuesGiveBackEveryFrameAndJointWithAndWithoutDummies)
{
    const auto lFiles = RealAsfFiles();
    if (lFiles.empty()) GTEST_SKIP() << "no shared data folder";
    for (const auto& lPath : lFiles)
    {
        for (const SetupFlags& lFlags : kAllSetupFlags)
        {
            SCOPED_TRACE(lPath.string() + ", " + FlagsText(lFlags));
            const std::unique_ptr<AsfRead> lReads[2] = {ReadAsfFile(lPath, false, lFlags), ReadAsfFile(lPath, true, lFlags)};
            ASSERT_TRUE(lReads[0]->mRead && lReads[1]->mRead);
            OrvAsfNode* lRoots[2] = {lReads[0]->mScene.mRoot, lReads[1]->mScene.mRoot};  // as read, without dummies
            std::map<std::string, OrvVector4> lJoints[2];
            for (int i = 0; i < 2; ++i)
            {
                JointsFromOffsets(*lRoots[i], OrvVector4(), lJoints[i]);
                EXPECT_LT(ComposeFromRoot(*lRoots[i], lFlags), 1e-9);
            }
            if (lFlags.mUseRotationOffset && lFlags.mUsePreRotation) ExpectNoRestValues(lRoots[0]);

            // The dummies (lhipjoint and rhipjoint) are gone; every other bone keeps its joint and frame.
            EXPECT_EQ(lJoints[1].size() + 2, lJoints[0].size());
            for (const OrvAsfNode* lBone : AllBones(lRoots[1]))
            {
                EXPECT_TRUE(lBone->mDofCount > 0 || !lBone->mParent) << lBone->mName;
                EXPECT_LT((lJoints[1].at(lBone->mName) - lJoints[0].at(lBone->mName)).Length(), 1e-9) << lBone->mName;
                EXPECT_EQ(lBone->mAxisMatrix, lRoots[0]->Find(lBone->mName)->mAxisMatrix);
            }
        }
    }
}
