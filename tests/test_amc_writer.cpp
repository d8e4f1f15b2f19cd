// The AMC writer: a host skeleton exported as ASF, with its motion written as AMC, read back with
// the AMC reader and imported, must put every joint where the host puts it; and the file's layout.

#include "support/BvhReference.h"
#include "support/HostSceneBuilder.h"

#include "amc/OrvAmcReader.h"
#include "amc/OrvAmcWriter.h"
#include "orvsdk/asf/OrvFileAcclaimAsf.h"
#include "orvsdk/skeleton/OrvAsfNode.h"
#include "orvsdk/skeleton/OrvAsfScene.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>

using namespace orvsdk;
using namespace hosttest;

namespace {

const double kFramesPerSecond = 60.0;
const int kFrameCount = 4;

struct Flags
{
    bool mUseRotationOffset;
    bool mUsePreRotation;
};

const Flags kAllFlags[] = {{false, false}, {true, false}, {false, true}, {true, true}};

std::string ReadText(const std::string& pPath)
{
    std::ifstream lFile(pPath);
    std::ostringstream lText;
    lText << lFile.rdbuf();
    return lText.str();
}

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
    void SetUp() override
    {
        mScene = CreateScene();
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
        mScene->Destroy();
        std::filesystem::remove(mAsfPath);
        std::filesystem::remove(mAmcPath);
    }

    // Where a joint's rest offset goes: the rotation offset, or, for the local-transform export,
    // the local translation.
    void Place(OrvNode* pNode, const OrvVector4& pOffset)
    {
        if (mRestInTranslation)
            SetProperty(pNode->LclTranslation, pOffset);
        else
            pNode->SetRotationOffset(OrvNode::eSourcePivot, pOffset);
    }

    // Exports the skeleton below Hips and writes it with its motion.
    void WritePair(bool pUseLocalTransform)
    {
        OrvAsfScene lSkeleton;
        lSkeleton.ORVToASF(mHips, true, OrvVector4(1, 1, 1), pUseLocalTransform);
        OrvFileAcclaimAsf lFile(false);
        ASSERT_TRUE(lFile.Create(mAsfPath.c_str()));
        ASSERT_TRUE(lFile.Write(&lSkeleton));
        ASSERT_TRUE(lFile.Close());
        orvasf::OrvAmcWriteSettings lSettings;
        lSettings.mFramesPerSecond = kFramesPerSecond;
        lSettings.mFrameCount = kFrameCount;
        lSettings.mSkeletonFileName = "skeleton.asf";
        ASSERT_TRUE(mWriter.Write(mAmcPath.c_str(), lSkeleton, mHips, lSettings));
    }

    // Largest distance, over all frames and host nodes, between the host and an import of the
    // written pair with pFlags.
    double LargestDifferenceAfterImport(const Flags& pFlags)
    {
        OrvScene* lScene = CreateScene();
        OrvNode* lRoot = nullptr;
        {
            OrvAsfScene lSkeleton;
            OrvFileAcclaimAsf lFile(false);
            EXPECT_TRUE(lFile.Open(mAsfPath.c_str()));
            EXPECT_TRUE(lFile.Read(&lSkeleton, false, pFlags.mUseRotationOffset, pFlags.mUsePreRotation));
            lSkeleton.mRoot->CreateDataFromDOF(lScene);
            orvasf::OrvAmcReadSettings lSettings;
            lSettings.mFramesPerSecond = kFramesPerSecond;
            lSettings.mUseRotationOffset = pFlags.mUseRotationOffset;
            lSettings.mUsePreRotation = pFlags.mUsePreRotation;
            orvasf::OrvAmcReader lReader;
            const orvasf::OrvAmcReadResult lResult = lReader.Read(mAmcPath.c_str(), lSkeleton, lSettings);
            EXPECT_TRUE(lResult.mSucceeded);
            EXPECT_EQ(lResult.mFrameCount, kFrameCount);
            lRoot = lSkeleton.ASFToORV(lScene, "Take", false, pFlags.mUseRotationOffset, pFlags.mUsePreRotation);
            lScene->GetRootNode()->AddChild(lRoot);
        }
        double lLargest = 0.0;
        for (int f = 0; f < kFrameCount; ++f)
        {
            const OrvTime lTime = OrvTime::FromFrame(f, kFramesPerSecond);
            const auto lImported = bvhtest::HostPositions(lRoot, lTime);
            for (const auto& lNode : bvhtest::HostPositions(mHips, lTime))
            {
                const size_t lColon = lNode.first.rfind(':');
                const std::string lName = lNode.first == "Hips"         ? "root"
                                          : lColon == std::string::npos ? lNode.first
                                                                        : lNode.first.substr(lColon + 1);
                const auto lFound = lImported.find(lName);
                if (lFound == lImported.end())
                {
                    ADD_FAILURE() << "no imported node " << lName;
                    continue;
                }
                lLargest = std::max(lLargest, bvhtest::Distance(lFound->second, lNode.second));
            }
        }
        lScene->Destroy();
        return lLargest;
    }

    bool mRestInTranslation = false;
    OrvScene* mScene = nullptr;
    OrvNode* mHips = nullptr;
    orvasf::OrvAmcWriter mWriter;
    const std::string mAsfPath = ::testing::TempDir() + "orv_amc_writer_" + std::to_string(getpid()) + ".asf";
    const std::string mAmcPath = ::testing::TempDir() + "orv_amc_writer_" + std::to_string(getpid()) + ".amc";
};

class AmcWriterRestInTranslation : public AmcWriter
{
protected:
    void SetUp() override
    {
        mRestInTranslation = true;
        AmcWriter::SetUp();
    }
};

} // namespace

TEST_F(AmcWriter, ImportOfTheWrittenPairPutsEveryJointWhereTheHostDoes)
{
    WritePair(false);
    for (const Flags& lFlags : kAllFlags)
        EXPECT_LT(LargestDifferenceAfterImport(lFlags), 1e-4)
            << "rotation offset " << lFlags.mUseRotationOffset << ", pre-rotation " << lFlags.mUsePreRotation;
}

TEST_F(AmcWriterRestInTranslation, SkeletonFromTheLocalTransformReproducesTheHostToo)
{
    WritePair(true);
    for (const Flags& lFlags : kAllFlags)
        EXPECT_LT(LargestDifferenceAfterImport(lFlags), 1e-4)
            << "rotation offset " << lFlags.mUseRotationOffset << ", pre-rotation " << lFlags.mUsePreRotation;
}

TEST_F(AmcWriter, WritesOneLinePerBoneWithDofsInEveryNumberedFrame)
{
    WritePair(false);
    std::istringstream lLines(ReadText(mAmcPath));
    std::string lLine;
    std::vector<std::string> lFirstWords;
    std::vector<size_t> lValueCounts;
    while (std::getline(lLines, lLine))
    {
        std::istringstream lWords(lLine);
        std::string lWord;
        lWords >> lWord;
        lFirstWords.push_back(lWord);
        size_t lCount = 0;
        for (std::string lValue; lWords >> lValue;) ++lCount;
        lValueCounts.push_back(lCount);
    }
    const std::vector<std::string> lFrame = {"root", "Spine", "Head", "LeftLeg", "RightLeg"};
    std::vector<std::string> lExpected = {"#!OML:ASF", ":FULLY-SPECIFIED", ":DEGREES"};
    for (int f = 1; f <= kFrameCount; ++f)
    {
        lExpected.push_back(std::to_string(f));
        lExpected.insert(lExpected.end(), lFrame.begin(), lFrame.end());
    }
    EXPECT_EQ(lFirstWords, lExpected);
    EXPECT_EQ(lValueCounts[0], 1u); // the skeleton file name
    for (size_t i = 3; i < lValueCounts.size(); ++i)
        EXPECT_EQ(lValueCounts[i], lFirstWords[i][0] >= '0' && lFirstWords[i][0] <= '9' ? 0u : 6u) << lFirstWords[i];
}

TEST_F(AmcWriter, ReportsAFileThatCannotBeCreated)
{
    OrvAsfScene lSkeleton;
    lSkeleton.ORVToASF(mHips, false, OrvVector4(1, 1, 1), false);
    EXPECT_FALSE(mWriter.Write("/nonexistent/dir/out.amc", lSkeleton, mHips, orvasf::OrvAmcWriteSettings()));
    ASSERT_EQ(mWriter.GetFile().GetMessages().size(), 1u);
    EXPECT_EQ(mWriter.GetFile().GetMessages()[0].mText.rfind("Can't create AMC file /nonexistent/dir/out.amc", 0), 0u);
}
