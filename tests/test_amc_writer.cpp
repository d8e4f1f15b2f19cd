// The AMC writer: a host skeleton exported as ASF, with its motion written as AMC, read back with
// the AMC reader and imported, must put every joint where the host puts it; and the file's layout.

#include "support/AsfAmcInterchange.h"
#include "support/ScratchFiles.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <string>

using namespace orvsdk;
using namespace orvsdk::asftest;
using namespace orvsdk::hosttest;

namespace {

const double kFramesPerSecond = 60.0;
const int kFrameCount = 4;

// Hips: rotation offset, pre-rotation, order Z X Y, animated translation and rotation
// +-- Spine: pre- and post-rotation, order Y Z X
// |   `-- Head: order X Y Z
// |       `-- Head_End
// +-- ns:LeftLeg: pre-rotation, order Z Y X, animated translation as well
// |   `-- ns:LeftLeg_End
// `-- RightLeg: order X Z Y, a leaf
// The three children of Hips sit at different offsets, so the export puts an intermediate bone
// above each.
class AmcWriter : public ::testing::Test
{
protected:
    // pRestInTranslation: where a joint's rest offset goes, the local translation (for the
    // local-transform export) or the rotation offset.
    void Build(bool pRestInTranslation)
    {
        mRestInTranslation = pRestInTranslation;
        mHips = AddNode(mScene->GetRootNode(), "Hips");
        Place(mHips, OrvVector4(0, 90, 0));
        SetRotation(mHips, OrvEuler::eOrderZXY, OrvVector4(0, 30, 0));
        Animate(mHips->LclTranslation, {{0, 0, 0}, {3, 1, -2}, {8, -1, 4}, {-5, 2, 9}}, kFramesPerSecond);
        Animate(mHips->LclRotation, {{0, 0, 0}, {20, -40, 75}, {-95, 60, 170}, {45, 89, -120}}, kFramesPerSecond);

        OrvNode* lSpine = AddNode(mHips, "Spine");
        Place(lSpine, OrvVector4(0, 10, 0));
        SetRotation(lSpine, OrvEuler::eOrderYZX, OrvVector4(10, 0, 0), OrvVector4(0, 0, 5));
        Animate(lSpine->LclRotation, {{5, 5, 5}, {-30, 10, 60}, {100, -20, 35}, {0, 80, -90}}, kFramesPerSecond);
        OrvNode* lHead = AddNode(lSpine, "Head");
        Place(lHead, OrvVector4(0, 8, 1));
        SetRotation(lHead, OrvEuler::eOrderXYZ);
        Animate(lHead->LclRotation, {{0, 0, 0}, {15, 25, 35}, {-70, 0, 10}, {30, -60, 150}}, kFramesPerSecond);
        Place(AddNode(lHead, "Head_End"), OrvVector4(0, 4, 0));

        OrvNode* lLeftLeg = AddNode(mHips, "ns:LeftLeg");
        Place(lLeftLeg, OrvVector4(5, -2, 0));
        SetRotation(lLeftLeg, OrvEuler::eOrderZYX, OrvVector4(0, 0, -20));
        Animate(lLeftLeg->LclRotation, {{0, 0, 0}, {45, 45, 45}, {-10, 70, -130}, {160, -5, 20}}, kFramesPerSecond);
        Animate(lLeftLeg->LclTranslation, {{0, 0, 0}, {1, 0, 0}, {0, -2, 1}, {0.5, 0.5, 0.5}}, kFramesPerSecond);
        Place(AddNode(lLeftLeg, "ns:LeftLeg_End"), OrvVector4(0, -15, 0));

        OrvNode* lRightLeg = AddNode(mHips, "RightLeg");
        Place(lRightLeg, OrvVector4(-5, -2, 0));
        SetRotation(lRightLeg, OrvEuler::eOrderXZY);
        Animate(lRightLeg->LclRotation, {{0, 0, 0}, {-45, 30, 10}, {60, 60, 60}, {-170, 20, -80}}, kFramesPerSecond);
    }
    void TearDown() override
    {
        std::filesystem::remove(mAsfPath);
        std::filesystem::remove(mAmcPath);
    }

    void Place(OrvNode* pNode, const OrvVector4& pOffset)
    {
        if (mRestInTranslation)
            SetProperty(pNode->LclTranslation, pOffset);
        else
            pNode->SetRotationOffset(OrvNode::eSourcePivot, pOffset);
    }

    // Exports the skeleton below Hips and writes it with its motion.
    void WritePair()
    {
        orvasf::OrvAmcWriteSettings lSettings;
        lSettings.mFramesPerSecond = kFramesPerSecond;
        lSettings.mFrameCount = kFrameCount;
        lSettings.mSkeletonFileName = "skeleton.asf";
        WriteAsfAmc(mHips, true, mRestInTranslation, lSettings, mAsfPath, mAmcPath);
    }

    // Largest distance, over all frames and host nodes, between the host and an import of the
    // written pair with pFlags (Hips is the skeleton's root; name spaces are not written).
    double LargestDifferenceAfterImport(const SetupFlags& pFlags)
    {
        HostImport lImport;
        ImportAsfAmc(mAsfPath, mAmcPath, pFlags, kFramesPerSecond, lImport);
        EXPECT_EQ(lImport.mFrameCount, kFrameCount);
        if (!lImport.mRoot) return HUGE_VAL;  // the import failed
        double lLargest = 0.0;
        for (int f = 0; f < kFrameCount; ++f)
            lLargest = std::max(lLargest, LargestDistance(mHips, lImport.mRoot, OrvTime::FromFrame(f, kFramesPerSecond),
                                                          [](const std::string& pName) {
                                                              return pName == "Hips" ? "root" : ExportedBoneName(pName);
                                                          }));
        return lLargest;
    }

    OrvScenePtr mScene = CreateHostScene();
    bool mRestInTranslation = false;
    OrvNode* mHips = nullptr;
    const std::string mAsfPath = testfiles::ScratchPath("writer.asf");
    const std::string mAmcPath = testfiles::ScratchPath("writer.amc");
};

} // namespace

TEST_F(AmcWriter, ImportOfTheWrittenPairPutsEveryJointWhereTheHostDoes)
{
    // The skeleton takes the rest pose from the rotation offsets, or from the local transforms.
    for (bool lRestInTranslation : {false, true})
    {
        mScene = CreateHostScene();  // without the joints of the round before
        Build(lRestInTranslation);
        WritePair();
        // What the import cannot tell: the header lines, and frames numbered from 1.
        const std::string lText = testfiles::ReadFile(mAmcPath);
        EXPECT_EQ(lText.substr(0, lText.find("\nroot ")), "#!OML:ASF skeleton.asf\n:FULLY-SPECIFIED\n:DEGREES\n1");
        for (const SetupFlags& lFlags : kAllSetupFlags)
            EXPECT_LT(LargestDifferenceAfterImport(lFlags), 1e-4) << FlagsText(lFlags) << ", rest in translation "
                                                                   << lRestInTranslation;
    }
}

TEST_F(AmcWriter, ReportsAFileThatCannotBeCreated)
{
    Build(false);
    OrvAsfScene lSkeleton;
    lSkeleton.ORVToASF(mHips, false, OrvVector4(1, 1, 1), false);
    orvasf::OrvAmcWriter lWriter;
    EXPECT_FALSE(lWriter.Write("/nonexistent/dir/out.amc", lSkeleton, mHips, orvasf::OrvAmcWriteSettings()));
    ASSERT_EQ(lWriter.GetFile().GetMessages().size(), 1u);
    EXPECT_EQ(lWriter.GetFile().GetMessages()[0].mText.rfind("Can't create AMC file /nonexistent/dir/out.amc", 0), 0u);
}
