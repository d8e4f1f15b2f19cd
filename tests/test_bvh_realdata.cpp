// Interchange on the shared motion-capture files, every frame, every joint:
//   - ASF/AMC to BVH: the written BVH, posed independently, puts every joint where the host does;
//   - BVH in: the host built by the BVH reader puts every joint where the BVH meaning does;
//   - BVH to ASF/AMC and back: importing the written pair puts every joint of the source BVH in
//     place;
//   - ASF/AMC to ASF/AMC through the host scene: every node of the first import in place.
// A chain of these (ASF/AMC to BVH to ASF/AMC) adds no check of its own: each step is checked.
// Each check prints its largest world-position difference and what it covered.

#include "support/AsfAmcInterchange.h"
#include "support/BvhReference.h"
#include "support/ScratchFiles.h"
#include "support/SharedMotionPairs.h"

#include "bvh/OrvBvhReader.h"
#include "bvh/OrvBvhWriter.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <iostream>
#include <string>
#include <vector>

using namespace orvsdk;
using namespace orvsdk::asftest;
using namespace orvsdk::hosttest;
using namespace shareddata;

namespace {

const char* const kBvhFiles[] = {"cgspeed_01_01", "freebvh_mixamo", "imusim_16_15",
                                 "mocapbank",     "pfnn_hierarchy", "pymo_AV_8Walk_Meredith_HVHA_Rep1"};

// The settings a check runs with: all four, or under the sanitizers both flags off and both on,
// the two ends of where the import keeps the rest pose.
std::vector<SetupFlags> FlagSettings()
{
    if (!kSanitized) return {std::begin(kAllSetupFlags), std::end(kAllSetupFlags)};
    return {{false, false}, {true, true}};
}

// Pairs with something particular for the ASF/AMC to ASF/AMC path: a short run, a motion cut short,
// root angles unwrapped past 360 degrees, a single frame.
const MotionPair kAsfPairs[] = {
    {"cmu_09-run", "cmu_09_06-run"},       {"cmu_07-walk", "cmu_07_12-walk"}, {"mo_golf", "mo_golf_01"},
    {"cmu_131-dance", "cmu_131_04-dance"}, {"cmu_01", "mo_null_pose"},
};

const double kAmcFramesPerSecond = 120.0;

void ImportPair(const MotionPair& pPair, const SetupFlags& pFlags, HostImport& pImport)
{
    ImportAsfAmc(SharedDataPath("asf", pPair.mAsf, ".asf"), SharedDataPath("amc", pPair.mAmc, ".amc"), pFlags,
                 kAmcFramesPerSecond, pImport);
}

// Exports the host skeleton below pSource's root and writes it with its motion as the converter
// does (the rest pose from rotation offsets and pre-rotations when the host keeps it there, from
// the local transform otherwise, and always for a single frame, which an import keeps only in the
// rest pose), then imports the written pair with pFlags into pBack.
void WriteAndImport(const HostImport& pSource, bool pTranslationDofs, bool pRestInOffsets, double pFramesPerSecond,
                    const std::string& pName, const SetupFlags& pFlags, HostImport& pBack)
{
    orvasf::OrvAmcWriteSettings lSettings;
    lSettings.mFramesPerSecond = pFramesPerSecond;
    lSettings.mFrameCount = pSource.mFrameCount;
    const std::string lAsf = testfiles::ScratchPath(pName + ".asf");
    const std::string lAmc = testfiles::ScratchPath(pName + ".amc");
    WriteAsfAmc(pSource.mRoot, pTranslationDofs, !pRestInOffsets || pSource.mFrameCount == 1, lSettings, lAsf, lAmc);
    if (!::testing::Test::HasFatalFailure()) ImportAsfAmc(lAsf, lAmc, pFlags, kAmcFramesPerSecond, pBack);
    std::filesystem::remove(lAsf);
    std::filesystem::remove(lAmc);
}

// What one check covered and the largest difference it met.
struct Tally
{
    double mLargest = 0.0;
    int mRuns = 0;
    long long mFrames = 0;

    void Print(const char* pCheck, const char* pUnit) const
    {
        std::cout << pCheck << ": " << mRuns << " runs, " << mFrames << " frames; largest world-position difference "
                  << mLargest << " " << pUnit << std::endl;
    }
};

// Compares the host below pRoot, keyed at pFramesPerSecond, with every checked frame of pMotion,
// which holds pFrameCount frames, finding the host position of each BVH entry with pFind.
template <typename FindNode>
void CompareMotion(const bvhtest::Motion& pMotion, int pFrameCount, OrvNode* pRoot, double pFramesPerSecond,
                   FindNode pFind, Tally& pTally)
{
    ASSERT_TRUE(pMotion.mValid);
    ASSERT_EQ(pMotion.mFrames.size(), static_cast<size_t>(pFrameCount));
    ++pTally.mRuns;
    for (size_t f : FramesToCheck(pMotion.mFrames.size()))
    {
        const OrvTime lTime = OrvTime::FromFrame(static_cast<double>(f), pFramesPerSecond);
        const bvhtest::PositionMap lHost = WorldPositions(pRoot, lTime);
        bvhtest::CompareFrame(pMotion, f, lHost, pFind, pTally.mLargest);
        if (::testing::Test::HasFatalFailure()) return;
        ++pTally.mFrames;
    }
}

// Where an imported ASF skeleton keeps the joint of BVH entry pJoint: the ROOT is "root"; a joint
// is the node of its bone, or, when its bone was pruned as a zero-length end, the end node of its
// parent's bone; an End Site is the end node of its joint's bone, or the joint itself when it
// sits at the joint (a zero-length bone gets no end node).
const bvhtest::Vec3* ImportedJoint(const bvhtest::Motion& pMotion, size_t pJoint, const bvhtest::PositionMap& pPositions)
{
    const bvhtest::Joint& lJoint = pMotion.mJoints[pJoint];
    if (lJoint.mParent < 0) return bvhtest::Find(pPositions, "root");
    const bvhtest::Joint& lParent = pMotion.mJoints[static_cast<size_t>(lJoint.mParent)];
    const std::string lParentName = lParent.mParent < 0 ? "root" : ExportedBoneName(lParent.mName);
    const bvhtest::Vec3* lOwn =
        bvhtest::Find(pPositions, lJoint.mEndSite ? lParentName + "_End" : ExportedBoneName(lJoint.mName));
    return lOwn ? lOwn : bvhtest::Find(pPositions, lJoint.mEndSite ? lParentName : lParentName + "_End");
}

class BvhInterchangeRealData : public ::testing::Test
{
protected:
    void SetUp() override
    {
        if (!HasSharedData()) GTEST_SKIP() << "no shared data folder";
    }
};

} // namespace

TEST_F(BvhInterchangeRealData, WrittenBvhPutsEveryJointWhereTheHostDoes)
{
    Tally lTally;
    for (const MotionPair& lPair : kMotionPairs)
        for (const SetupFlags& lFlags : FlagSettings())
        {
            SCOPED_TRACE(std::string(lPair.mAmc) + ", " + FlagsText(lFlags));
            HostImport lImport;
            ImportPair(lPair, lFlags, lImport);
            if (HasFatalFailure()) return;
            if (kSanitized && static_cast<size_t>(lImport.mFrameCount) > kSanitizedMaxFrames) continue;
            const std::string lBvh = testfiles::ScratchPath(std::string(lPair.mAmc) + ".bvh");
            orvasf::OrvBvhWriteSettings lSettings;
            lSettings.mFramesPerSecond = kAmcFramesPerSecond;
            lSettings.mFrameCount = lImport.mFrameCount;
            ASSERT_TRUE(orvasf::OrvBvhWriter().Write(lBvh.c_str(), lImport.mRoot, lSettings));
            const bvhtest::Motion lMotion = bvhtest::Parse(testfiles::ReadFile(lBvh));
            std::filesystem::remove(lBvh);
            CompareMotion(lMotion, lImport.mFrameCount, lImport.mRoot, kAmcFramesPerSecond, bvhtest::NodeOrJointOf,
                          lTally);
            if (HasFatalFailure()) return;
        }
    lTally.Print("ASF/AMC to BVH", "cm");
    EXPECT_LT(lTally.mLargest, 1e-3);
}

// The host built from each file, compared with the BVH meaning; with pFlags the host is also
// written as ASF/AMC and imported back, and the import compared instead.
TEST_F(BvhInterchangeRealData, HostFromBvhAndItsAsfAmcExportPutEveryJointWhereTheBvhMeaningDoes)
{
    Tally lIn;
    Tally lBack;
    for (const char* lName : kBvhFiles)
    {
        SCOPED_TRACE(lName);
        const std::string lPath = SharedDataPath("bvh", lName, ".bvh");
        HostImport lSource;
        const orvasf::OrvBvhReadResult lResult =
            orvasf::OrvBvhReader().Read(lPath.c_str(), lSource.mScene->GetRootNode(), nullptr);
        ASSERT_TRUE(lResult.mSucceeded);
        lSource.mRoot = lResult.mRoot;
        lSource.mFrameCount = lResult.mFrameCount;
        const bvhtest::Motion lMotion = bvhtest::Parse(testfiles::ReadFile(lPath));
        CompareMotion(lMotion, lResult.mFrameCount, lSource.mRoot, lResult.mFramesPerSecond, bvhtest::NodeNamed, lIn);
        if (HasFatalFailure()) return;
        if (kSanitized && lMotion.mFrames.size() > kSanitizedMaxFrames) continue;
        for (const SetupFlags& lFlags : FlagSettings())
        {
            SCOPED_TRACE(FlagsText(lFlags));
            HostImport lImport;
            WriteAndImport(lSource, lResult.mHasJointTranslation, true, lResult.mFramesPerSecond, lName, lFlags, lImport);
            if (HasFatalFailure()) return;
            ASSERT_EQ(lImport.mFrameCount, lResult.mFrameCount);
            // The import keys frame f at f / 120 s, the BVH at f times its frame time.
            CompareMotion(lMotion, lResult.mFrameCount, lImport.mRoot, kAmcFramesPerSecond, ImportedJoint, lBack);
            if (HasFatalFailure()) return;
        }
    }
    lIn.Print("BVH in", "file units");
    lBack.Print("BVH to ASF/AMC and back", "file units");
    EXPECT_LT(lIn.mLargest, 1e-4);
    EXPECT_LT(lBack.mLargest, 1e-3);
}

TEST_F(BvhInterchangeRealData, AsfAmcToAsfAmcThroughTheHostPutsEveryNodeInPlace)
{
    Tally lTally;
    for (const MotionPair& lPair : kAsfPairs)
        for (const SetupFlags& lFlags : FlagSettings())
        {
            SCOPED_TRACE(std::string(lPair.mAmc) + ", " + FlagsText(lFlags));
            HostImport lFirst;
            ImportPair(lPair, lFlags, lFirst);
            if (HasFatalFailure()) return;
            if (kSanitized && static_cast<size_t>(lFirst.mFrameCount) > kSanitizedMaxFrames) continue;
            HostImport lLast;
            WriteAndImport(lFirst, false, lFlags.mUseRotationOffset, kAmcFramesPerSecond, lPair.mAmc, lFlags, lLast);
            if (HasFatalFailure()) return;
            ASSERT_EQ(lLast.mFrameCount, lFirst.mFrameCount);
            ++lTally.mRuns;
            for (size_t f : FramesToCheck(static_cast<size_t>(lFirst.mFrameCount)))
            {
                const OrvTime lTime = OrvTime::FromFrame(static_cast<double>(f), kAmcFramesPerSecond);
                const double lDistance = LargestDistance(lFirst.mRoot, lLast.mRoot, lTime);
                if (!(lDistance <= lTally.mLargest)) lTally.mLargest = lDistance;
                ++lTally.mFrames;
            }
        }
    lTally.Print("ASF/AMC to ASF/AMC", "cm");
    EXPECT_LT(lTally.mLargest, 1e-3);
}
