// Interchange on the shared motion-capture files, every frame, every joint:
//   - ASF/AMC to BVH: the written BVH, posed independently, puts every joint where the host does;
//   - BVH in: the host built by the BVH reader puts every joint where the BVH meaning does;
//   - BVH to ASF/AMC and back: importing the written pair puts every joint of the source BVH in
//     place, and ASF/AMC to BVH to ASF/AMC puts every node of the first import in place;
//   - ASF/AMC to ASF/AMC through the host scene likewise.
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

// The settings a check runs with: all four, or both flags off and both on, the two ends of where
// the import keeps the rest pose (under the sanitizers always these two).
std::vector<SetupFlags> FlagSettings(bool pAll)
{
    if (pAll && !kSanitized) return {std::begin(kAllSetupFlags), std::end(kAllSetupFlags)};
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

void ReadBvh(const std::string& pPath, HostImport& pImport, orvasf::OrvBvhReadResult& pResult)
{
    orvasf::OrvBvhReader lReader;
    pResult = lReader.Read(pPath.c_str(), pImport.mScene->GetRootNode(), nullptr);
    ASSERT_TRUE(pResult.mSucceeded) << pPath;
    pImport.mRoot = pResult.mRoot;
    pImport.mFrameCount = pResult.mFrameCount;
}

void WriteBvh(const HostImport& pImport, double pFramesPerSecond, const std::string& pPath)
{
    orvasf::OrvBvhWriteSettings lSettings;
    lSettings.mFramesPerSecond = pFramesPerSecond;
    lSettings.mFrameCount = pImport.mFrameCount;
    orvasf::OrvBvhWriter lWriter;
    ASSERT_TRUE(lWriter.Write(pPath.c_str(), pImport.mRoot, lSettings));
}

// Exports the host skeleton below pImport's root and writes it with its motion, as the converter
// does: the rest pose from rotation offsets and pre-rotations when the host keeps it there,
// from the local transform otherwise, and always for a single frame, which an import keeps only
// in the rest pose.
void WriteAsfAmc(const HostImport& pImport, bool pTranslationDofs, bool pRestInOffsets, double pFramesPerSecond,
                 const std::string& pAsf, const std::string& pAmc)
{
    orvasf::OrvAmcWriteSettings lSettings;
    lSettings.mFramesPerSecond = pFramesPerSecond;
    lSettings.mFrameCount = pImport.mFrameCount;
    const bool lUseLocalTransform = !pRestInOffsets || pImport.mFrameCount == 1;
    asftest::WriteAsfAmc(pImport.mRoot, pTranslationDofs, lUseLocalTransform, lSettings, pAsf, pAmc);
}

// The frames to compare: all, or under the sanitizers every kSanitizedStride-th and the last.
std::vector<int> FramesToCheck(int pFrameCount)
{
    const int lStride = kSanitized ? static_cast<int>(kSanitizedStride) : 1;
    std::vector<int> lFrames;
    for (int f = 0; f < pFrameCount; f += lStride) lFrames.push_back(f);
    if (!lFrames.empty() && lFrames.back() != pFrameCount - 1) lFrames.push_back(pFrameCount - 1);
    return lFrames;
}

// What one check covered and the largest difference it met.
struct Tally
{
    double mLargest = 0.0;
    int mFiles = 0;
    long long mFrames = 0;
    long long mPositions = 0;

    void Print(const char* pCheck, const char* pUnit) const
    {
        std::cout << pCheck << ": " << mFiles << " runs, " << mFrames << " frames, " << mPositions
                  << " joint positions; largest world-position difference " << mLargest << " " << pUnit << std::endl;
    }
};

// Compares the host below pRoot, keyed at pFramesPerSecond, with every checked frame of pMotion,
// finding the host position of each BVH entry with pFind.
template <typename FindNode>
void CompareMotion(const bvhtest::Motion& pMotion, OrvNode* pRoot, double pFramesPerSecond, FindNode pFind, Tally& pTally)
{
    ++pTally.mFiles;
    for (int f : FramesToCheck(static_cast<int>(pMotion.mFrames.size())))
    {
        const bvhtest::PositionMap lHost = bvhtest::HostPositions(pRoot, OrvTime::FromFrame(f, pFramesPerSecond));
        bvhtest::CompareFrame(pMotion, static_cast<size_t>(f), lHost, pFind, pTally.mLargest);
        if (::testing::Test::HasFatalFailure()) return;
        ++pTally.mFrames;
        pTally.mPositions += static_cast<long long>(pMotion.mJoints.size());
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
    if (lJoint.mEndSite)
    {
        const bvhtest::Vec3* lEnd = bvhtest::Find(pPositions, lParentName + "_End");
        return lEnd ? lEnd : bvhtest::Find(pPositions, lParentName);
    }
    const bvhtest::Vec3* lOwn = bvhtest::Find(pPositions, ExportedBoneName(lJoint.mName));
    return lOwn ? lOwn : bvhtest::Find(pPositions, lParentName + "_End");
}

// Compares every node of pFirst with the node of the same name in pLast at every checked frame.
void CompareImports(const HostImport& pFirst, const HostImport& pLast, Tally& pTally)
{
    ASSERT_EQ(pLast.mFrameCount, pFirst.mFrameCount);
    ++pTally.mFiles;
    for (int f : FramesToCheck(pFirst.mFrameCount))
    {
        const OrvTime lTime = OrvTime::FromFrame(f, kAmcFramesPerSecond);
        const bvhtest::PositionMap lFinal = bvhtest::HostPositions(pLast.mRoot, lTime);
        for (const auto& [lName, lPosition] : bvhtest::HostPositions(pFirst.mRoot, lTime))
        {
            const bvhtest::Vec3* lAgain = bvhtest::Find(lFinal, lName);
            ASSERT_NE(lAgain, nullptr) << lName;
            const double lDistance = bvhtest::Distance(*lAgain, lPosition);
            if (!(lDistance <= pTally.mLargest)) pTally.mLargest = lDistance;
            ++pTally.mPositions;
        }
        ++pTally.mFrames;
    }
}

// Imports pPair with pFlags, lets pWrite(first import, ASF path, AMC path) write a skeleton and
// motion pair from it, imports that pair with pFlags and compares every node with the first
// import. Long motions are left out under the sanitizers.
template <typename Write>
void RoundTrip(const MotionPair& pPair, const SetupFlags& pFlags, Write pWrite, Tally& pTally)
{
    HostImport lFirst;
    ImportPair(pPair, pFlags, lFirst);
    if (::testing::Test::HasFatalFailure() || (kSanitized && lFirst.mFrameCount > kSanitizedMaxFrames)) return;
    const std::string lAsf = testfiles::ScratchPath(std::string(pPair.mAmc) + ".asf");
    const std::string lAmc = testfiles::ScratchPath(std::string(pPair.mAmc) + ".amc");
    pWrite(lFirst, lAsf, lAmc);
    HostImport lLast;
    if (!::testing::Test::HasFatalFailure()) ImportAsfAmc(lAsf, lAmc, pFlags, kAmcFramesPerSecond, lLast);
    std::filesystem::remove(lAsf);
    std::filesystem::remove(lAmc);
    if (!::testing::Test::HasFatalFailure()) CompareImports(lFirst, lLast, pTally);
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
        for (const SetupFlags& lFlags : FlagSettings(true))
        {
            SCOPED_TRACE(std::string(lPair.mAmc) + ", " + FlagsText(lFlags));
            HostImport lImport;
            ImportPair(lPair, lFlags, lImport);
            if (HasFatalFailure()) return;
            if (kSanitized && lImport.mFrameCount > kSanitizedMaxFrames) continue;
            const std::string lBvh = testfiles::ScratchPath(std::string(lPair.mAmc) + ".bvh");
            WriteBvh(lImport, kAmcFramesPerSecond, lBvh);
            const bvhtest::Motion lMotion = bvhtest::ReadFile(lBvh);
            std::filesystem::remove(lBvh);
            ASSERT_TRUE(lMotion.mValid);
            ASSERT_EQ(static_cast<int>(lMotion.mFrames.size()), lImport.mFrameCount);
            CompareMotion(lMotion, lImport.mRoot, kAmcFramesPerSecond, bvhtest::NodeOrJointOf, lTally);
            if (HasFatalFailure()) return;
        }
    lTally.Print("ASF/AMC to BVH", "cm");
    EXPECT_LT(lTally.mLargest, 1e-3);
}

TEST_F(BvhInterchangeRealData, HostFromBvhPutsEveryJointWhereTheBvhMeaningDoes)
{
    Tally lTally;
    for (const char* lName : kBvhFiles)
    {
        SCOPED_TRACE(lName);
        const std::string lPath = SharedDataPath("bvh", lName, ".bvh");
        HostImport lImport;
        orvasf::OrvBvhReadResult lResult;
        ReadBvh(lPath, lImport, lResult);
        if (HasFatalFailure()) return;
        const bvhtest::Motion lMotion = bvhtest::ReadFile(lPath);
        ASSERT_TRUE(lMotion.mValid);
        ASSERT_EQ(static_cast<int>(lMotion.mFrames.size()), lResult.mFrameCount);
        CompareMotion(lMotion, lImport.mRoot, lResult.mFramesPerSecond, bvhtest::NodeNamed, lTally);
        if (HasFatalFailure()) return;
    }
    lTally.Print("BVH in", "file units");
    EXPECT_LT(lTally.mLargest, 1e-4);
}

TEST_F(BvhInterchangeRealData, BvhToAsfAmcAndBackPutsEveryJointOfTheSourceInPlace)
{
    Tally lTally;
    for (const char* lName : kBvhFiles)
        for (const SetupFlags& lFlags : FlagSettings(true))
        {
            SCOPED_TRACE(std::string(lName) + ", " + FlagsText(lFlags));
            const std::string lPath = SharedDataPath("bvh", lName, ".bvh");
            HostImport lSource;
            orvasf::OrvBvhReadResult lResult;
            ReadBvh(lPath, lSource, lResult);
            if (HasFatalFailure()) return;
            if (kSanitized && lResult.mFrameCount > kSanitizedMaxFrames) continue;
            const std::string lAsf = testfiles::ScratchPath(std::string(lName) + ".asf");
            const std::string lAmc = testfiles::ScratchPath(std::string(lName) + ".amc");
            WriteAsfAmc(lSource, lResult.mHasJointTranslation, true, lResult.mFramesPerSecond, lAsf, lAmc);
            HostImport lBack;
            if (!HasFatalFailure()) ImportAsfAmc(lAsf, lAmc, lFlags, kAmcFramesPerSecond, lBack);
            std::filesystem::remove(lAsf);
            std::filesystem::remove(lAmc);
            if (HasFatalFailure()) return;

            const bvhtest::Motion lMotion = bvhtest::ReadFile(lPath);
            ASSERT_EQ(static_cast<int>(lMotion.mFrames.size()), lResult.mFrameCount);
            ASSERT_EQ(lBack.mFrameCount, lResult.mFrameCount);
            // The import keys frame f at f / 120 s, the BVH at f times its frame time.
            CompareMotion(lMotion, lBack.mRoot, kAmcFramesPerSecond, ImportedJoint, lTally);
            if (HasFatalFailure()) return;
        }
    lTally.Print("BVH to ASF/AMC and back", "file units");
    EXPECT_LT(lTally.mLargest, 1e-3);
}

TEST_F(BvhInterchangeRealData, AsfAmcToBvhToAsfAmcPutsEveryNodeOfTheFirstImportInPlace)
{
    Tally lTally;
    for (const MotionPair& lPair : kMotionPairs)
        for (const SetupFlags& lFlags : FlagSettings(false))
        {
            SCOPED_TRACE(std::string(lPair.mAmc) + ", " + FlagsText(lFlags));
            const auto lThroughBvh = [&lPair](const HostImport& pFirst, const std::string& pAsf, const std::string& pAmc) {
                const std::string lBvh = testfiles::ScratchPath(std::string(lPair.mAmc) + ".bvh");
                WriteBvh(pFirst, kAmcFramesPerSecond, lBvh);
                HostImport lMiddle;
                orvasf::OrvBvhReadResult lResult;
                if (!HasFatalFailure()) ReadBvh(lBvh, lMiddle, lResult);
                std::filesystem::remove(lBvh);
                if (!HasFatalFailure())
                    WriteAsfAmc(lMiddle, lResult.mHasJointTranslation, true, lResult.mFramesPerSecond, pAsf, pAmc);
            };
            RoundTrip(lPair, lFlags, lThroughBvh, lTally);
            if (HasFatalFailure()) return;
        }
    lTally.Print("ASF/AMC to BVH to ASF/AMC", "cm");
    EXPECT_LT(lTally.mLargest, 1e-3);
}

TEST_F(BvhInterchangeRealData, AsfAmcToAsfAmcThroughTheHostPutsEveryNodeInPlace)
{
    Tally lTally;
    for (const MotionPair& lPair : kAsfPairs)
        for (const SetupFlags& lFlags : FlagSettings(true))
        {
            SCOPED_TRACE(std::string(lPair.mAmc) + ", " + FlagsText(lFlags));
            const auto lDirect = [&lFlags](const HostImport& pFirst, const std::string& pAsf, const std::string& pAmc) {
                WriteAsfAmc(pFirst, false, lFlags.mUseRotationOffset, kAmcFramesPerSecond, pAsf, pAmc);
            };
            RoundTrip(lPair, lFlags, lDirect, lTally);
            if (HasFatalFailure()) return;
        }
    lTally.Print("ASF/AMC to ASF/AMC", "cm");
    EXPECT_LT(lTally.mLargest, 1e-3);
}
