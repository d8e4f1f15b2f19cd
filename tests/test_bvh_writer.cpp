// The BVH writer: the hierarchy and channels it chooses, and that the written file posed with the
// BVH meaning (tests/support/BvhReference.h) puts every joint where the host does.

#include "support/BvhReference.h"
#include "support/HostSceneSupport.h"
#include "support/ScratchFiles.h"

#include "bvh/OrvBvhWriter.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>

using namespace orvsdk;
using namespace orvsdk::hosttest;

namespace {

const double kFramesPerSecond = 30.0;

// Root: rotation offset, pre- and post-rotation, order Z X Y, animated translation and rotation
// +-- Spine: rest translation in the property, rotation offset, order Y Z X, animated rotation
// |   `-- Spine_End: an end node
// +-- Mesh: no skeleton attribute
// |   `-- Hidden: a joint below a non-joint
// `-- Arm: animated translation, rotation not active (its order Z Y X is then not used)
class BvhWriter : public ::testing::Test
{
protected:
    void SetUp() override
    {
        mRoot = AddNode(mScene->GetRootNode(), "Root");
        mRoot->SetRotationOffset(OrvNode::eSourcePivot, OrvVector4(1, 2, 3));
        SetRotation(mRoot, OrvEuler::eOrderZXY, OrvVector4(10, 20, 30), OrvVector4(5, -5, 15));
        Animate(mRoot->LclTranslation, {{0, 0, 0}, {4, -2, 7}, {-3, 5, 1}}, kFramesPerSecond);
        Animate(mRoot->LclRotation, {{0, 0, 0}, {40, -70, 110}, {-150, 85, 20}}, kFramesPerSecond);

        OrvNode* lSpine = AddNode(mRoot, "Spine");
        SetProperty(lSpine->LclTranslation, OrvVector4(0, 10, 0));
        lSpine->SetRotationOffset(OrvNode::eSourcePivot, OrvVector4(0, 1, 0));
        SetRotation(lSpine, OrvEuler::eOrderYZX, OrvVector4(0, 0, 45));
        Animate(lSpine->LclRotation, {{10, 20, 30}, {-60, 5, 90}, {170, -30, -45}}, kFramesPerSecond);
        SetProperty(AddNode(lSpine, "Spine_End")->LclTranslation, OrvVector4(0, 5, 0));

        AddNode(AddNode(mRoot, "Mesh", false), "Hidden");

        OrvNode* lArm = AddNode(mRoot, "Arm");
        lArm->SetRotationOrder(OrvNode::eSourcePivot, OrvEuler::eOrderZYX);
        SetProperty(lArm->LclRotation, OrvVector4(0, 0, 30));
        Animate(lArm->LclTranslation, {{3, 0, 0}, {4, 1, 0}, {5, 0, -2}}, kFramesPerSecond);
    }
    void TearDown() override { std::filesystem::remove(mPath); }

    std::string Write(int pFrameCount = 3)
    {
        orvasf::OrvBvhWriteSettings lSettings;
        lSettings.mFramesPerSecond = kFramesPerSecond;
        lSettings.mFrameCount = pFrameCount;
        EXPECT_TRUE(mWriter.Write(mPath.c_str(), mRoot, lSettings));
        return testfiles::ReadFile(mPath);
    }

    OrvScenePtr mScene = CreateHostScene();
    OrvNode* mRoot = nullptr;
    orvasf::OrvBvhWriter mWriter;
    const std::string mPath = testfiles::ScratchPath("writer.bvh");
};

} // namespace

TEST_F(BvhWriter, WritesTheJointsWithChannelsInTheirHostOrder)
{
    const std::string lText = Write();
    const std::string lHierarchy = lText.substr(0, lText.find("MOTION"));
    EXPECT_EQ(lHierarchy,
              "HIERARCHY\nROOT Root\n{\n  OFFSET 1 2 3\n"
              "  CHANNELS 6 Xposition Yposition Zposition Yrotation Xrotation Zrotation\n"
              "  JOINT Spine\n  {\n    OFFSET 0 11 0\n    CHANNELS 3 Xrotation Zrotation Yrotation\n"
              "    End Site\n    {\n      OFFSET 0 5 0\n    }\n  }\n"
              "  JOINT Arm\n  {\n    OFFSET 0 0 0\n"
              "    CHANNELS 6 Xposition Yposition Zposition Zrotation Yrotation Xrotation\n"
              "    End Site\n    {\n      OFFSET 0 0 0\n    }\n  }\n}\n");
    EXPECT_NE(lText.find("MOTION\nFrames: 3\nFrame Time: 0.0333333333\n"), std::string::npos);
    const std::string lNoFrames = Write(0);
    EXPECT_EQ(lNoFrames.substr(lNoFrames.find("MOTION")), "MOTION\nFrames: 0\nFrame Time: 0.0333333333\n");
}

TEST_F(BvhWriter, WrittenFilePutsEveryJointWhereTheHostDoes)
{
    const bvhtest::Motion lMotion = bvhtest::Parse(Write());
    ASSERT_EQ(lMotion.mFrames.size(), 3u);
    // Arm has no end node: its End Site sits at the joint.
    EXPECT_LT(bvhtest::LargestDifference(lMotion, mRoot, kFramesPerSecond, bvhtest::NodeOrJointOf), 1e-6);
}
