// The BVH reader: what it builds in the host scene, that the host's world positions follow the
// BVH meaning (checked against the independent reading of tests/support/BvhReference.h), the
// layout variants real files use, and the messages of refused files.

#include "support/BvhReference.h"
#include "support/HostSceneSupport.h"

#include "bvh/OrvBvhReader.h"
#include "orvsdk/host/anim/OrvAnimCurve.h"
#include "orvsdk/host/anim/OrvAnimCurveNode.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>

using namespace orvsdk;
using bvhtest::kSmallBvh;
using testfiles::Replace;

namespace {

class BvhReader : public ::testing::Test
{
protected:
    orvasf::OrvBvhReadResult Read(const std::string& pText)
    {
        return mReader.Read(pText.data(), pText.size(), "test.bvh", mScene->GetRootNode(), mStack);
    }

    // The messages of the last read, formatted as the tool prints them.
    std::vector<std::string> Messages() const
    {
        std::vector<std::string> lTexts;
        for (const OrvMessage& lMessage : mReader.GetFile().GetMessages()) lTexts.push_back(OrvFormatMessage(lMessage));
        return lTexts;
    }

    OrvScenePtr mScene = hosttest::CreateHostScene();
    OrvAnimStack* mStack = mScene->GetCurrentAnimationStack();
    orvasf::OrvBvhReader mReader;
};

} // namespace

// Where the positions cannot tell: the counts, the skeleton types, offsets in the rotation offset
// rather than the translation, a name-space prefix kept, and no curve for a channel not listed.
TEST_F(BvhReader, BuildsOneNodePerJointAndEndSiteAndOneCurvePerListedChannel)
{
    const orvasf::OrvBvhReadResult lResult = Read(Replace(kSmallBvh, "ROOT Hips", "ROOT mixamorig:Hips"));
    ASSERT_TRUE(lResult.mSucceeded) << ::testing::PrintToString(Messages());
    EXPECT_EQ(lResult.mJointCount, 3);
    EXPECT_EQ(lResult.mEndSiteCount, 2);
    EXPECT_EQ(lResult.mChannelCount, 14);
    EXPECT_TRUE(lResult.mHasJointTranslation);

    OrvNode* lHips = lResult.mRoot;
    ASSERT_EQ(mScene->GetRootNode()->GetChild(0), lHips);
    EXPECT_STREQ(lHips->GetName(), "mixamorig:Hips");
    EXPECT_EQ(lHips->GetSkeleton()->GetSkeletonType(), OrvSkeleton::eRoot);
    OrvNode* lLeg = lHips->GetChild(1);
    EXPECT_EQ(lLeg->GetChild(0)->GetSkeleton()->GetSkeletonType(), OrvSkeleton::eLimbNode);
    EXPECT_EQ(lLeg->GetRotationOffset(OrvNode::eSourcePivot), OrvVector4(3, -1, 0));
    EXPECT_EQ(lLeg->EvaluateLocalTranslation(OrvTime()), OrvVector4(0, 0, 0));

    // Leg lists Yrotation Xposition Zrotation Yposition Zposition: no curve turns it about X.
    OrvAnimCurveNode* lTranslation = lLeg->LclTranslation.GetCurveNode(mStack);
    ASSERT_NE(lTranslation, nullptr);
    EXPECT_STREQ(lTranslation->GetCurve(0)->GetName(), "Leg_Xposition");
    EXPECT_EQ(lTranslation->GetCurve(0)->KeyGetCount(), 3);
    EXPECT_EQ(lLeg->LclRotation.GetCurveNode(mStack)->GetCurveCount(0), 0);
}

TEST_F(BvhReader, AllSixRotationOrdersPoseLikeTheBvhMeaning)
{
    // A chain of six joints, one per order of the three rotation channels.
    const char* const kOrders[6] = {"Xrotation Yrotation Zrotation", "Xrotation Zrotation Yrotation",
                                    "Yrotation Zrotation Xrotation", "Yrotation Xrotation Zrotation",
                                    "Zrotation Xrotation Yrotation", "Zrotation Yrotation Xrotation"};
    std::string lText = "HIERARCHY\nROOT J0\n{\nOFFSET 0 0 0\nCHANNELS 3 " + std::string(kOrders[0]) + "\n";
    for (int j = 1; j < 6; ++j)
        lText += "JOINT J" + std::to_string(j) + "\n{\nOFFSET 1 2 3\nCHANNELS 3 " + kOrders[j] + "\n";
    lText += "End Site\n{\nOFFSET 4 5 6\n}\n";
    for (int j = 0; j < 6; ++j) lText += "}\n";
    lText += "MOTION\nFrames: 2\nFrame Time: 0.5\n";
    for (int f = 0; f < 2; ++f)
    {
        for (int v = 0; v < 18; ++v) lText += std::to_string((v * 37 + f * 71) % 170 - 85) + " ";
        lText += "\n";
    }
    const orvasf::OrvBvhReadResult lResult = Read(lText);
    ASSERT_TRUE(lResult.mSucceeded) << ::testing::PrintToString(Messages());
    EXPECT_LT(bvhtest::LargestDifference(bvhtest::Parse(lText), lResult.mRoot, lResult.mFramesPerSecond), 1e-4);
}

TEST_F(BvhReader, HostWorldPositionsFollowTheBvhMeaningInEveryLayoutOfRealFiles)
{
    // The host text file's own tests cover the blanks and line ends between tokens; here they
    // reach the frame lines and the labels, which the reader splits itself.
    std::string lTabsAndCrlf;
    for (const char lChar : std::string(kSmallBvh))
        lTabsAndCrlf += lChar == '\n' ? "\r\n" : lChar == ' ' ? "\t" : std::string(1, lChar);
    const std::string lVariants[] = {
        kSmallBvh,
        lTabsAndCrlf,  // "Frames:\t3" and "Frame\tTime:\t0.04" among others
        std::string(kSmallBvh).substr(0, std::string(kSmallBvh).size() - 1), // no final newline
        Replace(Replace(kSmallBvh, "Frames: 3", "Frames :3"), "Frame Time: 0.04", "Frame Time:0.04"),
        Replace(kSmallBvh, "Frame Time: 0.04", "Frame  Time :\t.04"),
        Replace(Replace(kSmallBvh, "HIERARCHY", "hierarchy"), "Xposition", "XPOSITION"),
        Replace(kSmallBvh, "0.5 -4\n", "0.5 -4\n\n\n"), // blank lines at the end
    };
    for (const std::string& lText : lVariants)
    {
        mScene->GetRootNode()->RemoveChild(mScene->GetRootNode()->GetChild(0));
        const orvasf::OrvBvhReadResult lResult = Read(lText);
        ASSERT_TRUE(lResult.mSucceeded) << lText << ::testing::PrintToString(Messages());
        EXPECT_LT(bvhtest::LargestDifference(bvhtest::Parse(kSmallBvh), lResult.mRoot, lResult.mFramesPerSecond), 1e-4);
    }
}

TEST_F(BvhReader, WarnsAboutTextAfterTheAnnouncedFrames)
{
    const orvasf::OrvBvhReadResult lResult = Read(Replace(kSmallBvh, "Frames: 3", "Frames: 2"));
    ASSERT_TRUE(lResult.mSucceeded);
    EXPECT_EQ(lResult.mFrameCount, 2);
    EXPECT_EQ(Messages(), std::vector<std::string>{"test.bvh:30: warning: Text after the last of 2 frames ignored"});
}

TEST_F(BvhReader, RefusedFilesNameFileAndLineAndBuildNothing)
{
    const std::string lSmall = kSmallBvh;
    const std::pair<std::string, std::string> lCases[] = {
        {lSmall.substr(0, lSmall.find("  JOINT Leg")),
         "test.bvh:14: error: The file ends inside the hierarchy: joint \"Hips\" is not closed"},
        {Replace(kSmallBvh, "5 -2 7.5 30", "5 -2 7.5"),
         "test.bvh:29: error: Frame 2 holds 13 values; the hierarchy has 14 channels"},
        {Replace(kSmallBvh, "0.5 -4\n", "0.5 -4 9\n"),
         "test.bvh:30: error: Frame 3 holds 15 values; the hierarchy has 14 channels"},
        {Replace(kSmallBvh, "Xrotation Yrotation Zrotation", "Xrotation Wrotation Zrotation"),
         "test.bvh:9: error: Unknown channel name \"Wrotation\" in joint \"Chest\" (expected Xposition, Yposition, "
         "Zposition, Xrotation, Yrotation or Zrotation)"},
        {Replace(kSmallBvh, "Frames: 3\n", ""),
         "test.bvh:26: error: Expected \"Frames:\" after MOTION, found \"Frame Time: 0.04\""},
        {lSmall.substr(0, lSmall.find("MOTION") + 7), "test.bvh:25: error: The file ends before \"Frames:\""},
        {Replace(kSmallBvh, "Frames: 3", "Frames: 4"), "test.bvh:30: error: The file ends after 3 of 4 frames"},
        {Replace(kSmallBvh, "Frames: 3", "Frames: three"),
         "test.bvh:26: error: \"Frames:\" needs a whole number of frames, 0 or more, not \"three\""},
        {Replace(kSmallBvh, "Frame Time: 0.04", "Frame Time: 0"),
         "test.bvh:27: error: \"Frame Time:\" needs a positive number of seconds, not \"0\""},
        {Replace(kSmallBvh, "CHANNELS 3 Xrotation", "CHANNELS 4 Xrotation"),
         "test.bvh:9: error: CHANNELS of joint \"Chest\" announces 4 channels and names 3"},
        {Replace(kSmallBvh, "Yrotation Zrotation\n", "Yrotation Xrotation\n"),
         "test.bvh:9: error: Channel Xrotation listed twice in joint \"Chest\""},
        {Replace(kSmallBvh, "    OFFSET 0 10 0\n", ""), "test.bvh:13: error: Joint \"Chest\" has no OFFSET"},
        {Replace(kSmallBvh, "OFFSET 0 10 0", "OFFSET 0 10"),
         "test.bvh:8: error: OFFSET of joint \"Chest\" needs three finite numbers on its line"},
        {Replace(kSmallBvh, "0 -8 0\n    }\n", "0 -8 0\n    }\n    CHANNELS 1 Xrotation\n"),
         "test.bvh:23: error: Joint \"Leg\" has a second CHANNELS line"},
        {Replace(kSmallBvh, "-3 1 2", "-3 x 2"), "test.bvh:30: error: Frame 3: \"x\" is not a finite number"},
        {Replace(kSmallBvh, "HIERARCHY\n", ""),
         "test.bvh:1: error: Expected HIERARCHY at the start of the file, found \"ROOT\""},
        {Replace(kSmallBvh, "MOTION", "MOTIONS"),
         "test.bvh:25: error: Expected MOTION after the hierarchy, found \"MOTIONS\""},
        {Replace(kSmallBvh, "JOINT Chest", "JOINT"), "test.bvh:7: error: JOINT without a joint name"},
        {"", "test.bvh: error: The file is empty; a BVH file starts with HIERARCHY"},
        {lSmall + std::string("\0\n", 2), "test.bvh:31: error: NUL byte in line"},
    };
    for (const auto& [lText, lMessage] : lCases)
    {
        const int lObjects = mScene->GetObjectCount();
        const orvasf::OrvBvhReadResult lResult = Read(lText);
        EXPECT_FALSE(lResult.mSucceeded) << lText;
        EXPECT_EQ(lResult.mRoot, nullptr);
        EXPECT_EQ(mScene->GetObjectCount(), lObjects);
        EXPECT_EQ(mScene->GetRootNode()->GetChildCount(), 0);
        EXPECT_EQ(Messages(), std::vector<std::string>{lMessage});
    }
}
