// Interchange on the shared motion-capture files, every frame, every joint:
//   - ASF/AMC to BVH: the written BVH, posed independently, puts every joint where the host does;
//   - BVH in: the host built by the BVH reader puts every joint where the BVH meaning does;
//   - BVH to ASF/AMC and back: importing the written pair puts every joint of the source BVH in
//     place, and ASF/AMC to BVH to ASF/AMC puts every node of the first import in place;
//   - ASF/AMC to ASF/AMC through the host scene likewise.
// Each check prints its largest world-position difference and what it covered.

#include "support/BvhReference.h"
#include "support/SharedMotionPairs.h"

#include "amc/OrvAmcReader.h"
#include "amc/OrvAmcWriter.h"
#include "bvh/OrvBvhReader.h"
#include "bvh/OrvBvhWriter.h"
#include "orvsdk/asf/OrvFileAcclaimAsf.h"
#include "orvsdk/host/OrvAnimLayer.h"
#include "orvsdk/host/OrvAnimStack.h"
#include "orvsdk/host/OrvScene.h"
#include "orvsdk/skeleton/OrvAsfNode.h"
#include "orvsdk/skeleton/OrvAsfScene.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <iostream>
#include <iterator>
#include <memory>
#include <string>
#include <vector>

using namespace orvsdk;

namespace {

using shareddata::kMotionPairs;
using shareddata::MotionPair;

// Under the sanitizers only the two uniform flag settings run as well.
using shareddata::kSanitized;
using shareddata::kSanitizedMaxFrames;
using shareddata::kSanitizedStride;

const char* const kBvhFiles[] = {"cgspeed_01_01", "freebvh_mixamo", "imusim_16_15",
                                 "mocapbank",     "pfnn_hierarchy", "pymo_AV_8Walk_Meredith_HVHA_Rep1"};

struct Flags
{
    bool mUseRotationOffset;
    bool mUsePreRotation;
};

const Flags kAllFlags[] = {{false, false}, {true, false}, {false, true}, {true, true}};
// Both flags off and both on: the two ends of where the import keeps the rest pose.
const Flags kUniformFlags[] = {{false, false}, {true, true}};

// The settings a check runs with: under the sanitizers only the two uniform ones.
std::vector<Flags> FlagSettings(bool pAll)
{
    if (pAll && !kSanitized) return std::vector<Flags>(std::begin(kAllFlags), std::end(kAllFlags));
    return std::vector<Flags>(std::begin(kUniformFlags), std::end(kUniformFlags));
}

// Pairs with something particular for the ASF/AMC to ASF/AMC path: a short run, a motion cut short,
// root angles unwrapped past 360 degrees, a single frame.
const MotionPair kAsfPairs[] = {
    {"cmu_09-run", "cmu_09_06-run"},       {"cmu_07-walk", "cmu_07_12-walk"}, {"mo_golf", "mo_golf_01"},
    {"cmu_131-dance", "cmu_131_04-dance"}, {"cmu_01", "mo_null_pose"},
};

const char* const kTake = "Take";
const double kAmcFramesPerSecond = 120.0;

bool HaveSharedData()
{
    return std::filesystem::exists(ORV_SHARED_DATA_DIR);
}

std::string DataPath(const char* pFolder, const char* pName, const char* pExtension)
{
    return std::string(ORV_SHARED_DATA_DIR) + "/" + pFolder + "/" + pName + pExtension;
}

std::string TempPath(const std::string& pName)
{
    return ::testing::TempDir() + "orv_bvh_" + std::to_string(getpid()) + "_" + pName;
}

std::string FlagsText(const Flags& pFlags)
{
    return std::string("rotation offset ") + (pFlags.mUseRotationOffset ? "on" : "off") + ", pre-rotation " +
           (pFlags.mUsePreRotation ? "on" : "off");
}

// A host scene with its take current; released with everything in it.
struct SceneDeleter
{
    void operator()(OrvScene* pScene) const { pScene->Destroy(); }
};
using ScenePtr = std::unique_ptr<OrvScene, SceneDeleter>;

ScenePtr CreateHostScene()
{
    ScenePtr lScene(OrvScene::Create("interchange"));
    OrvAnimStack* lStack = OrvAnimStack::Create(lScene.get(), kTake);
    OrvAnimLayer::Create(lStack, "Base");
    lScene->SetCurrentAnimationStack(lStack);
    return lScene;
}

// A skeleton and motion imported into a host scene, the way the converter imports them.
struct Import
{
    ScenePtr mScene = CreateHostScene();
    OrvNode* mRoot = nullptr;
    int mFrameCount = 0;
};

void ImportAsfAmc(const std::string& pAsf, const std::string& pAmc, const Flags& pFlags, Import& pImport)
{
    OrvAsfScene lSkeleton;
    OrvFileAcclaimAsf lFile(false);
    ASSERT_TRUE(lFile.Open(pAsf.c_str()));
    ASSERT_TRUE(lFile.Read(&lSkeleton, false, pFlags.mUseRotationOffset, pFlags.mUsePreRotation));
    lSkeleton.mRoot->CreateDataFromDOF(pImport.mScene.get());
    orvasf::OrvAmcReadSettings lSettings;
    lSettings.mFramesPerSecond = kAmcFramesPerSecond;
    lSettings.mUseRotationOffset = pFlags.mUseRotationOffset;
    lSettings.mUsePreRotation = pFlags.mUsePreRotation;
    orvasf::OrvAmcReader lReader;
    const orvasf::OrvAmcReadResult lMotion = lReader.Read(pAmc.c_str(), lSkeleton, lSettings);
    ASSERT_TRUE(lMotion.mSucceeded) << pAmc;
    pImport.mRoot =
        lSkeleton.ASFToORV(pImport.mScene.get(), kTake, false, pFlags.mUseRotationOffset, pFlags.mUsePreRotation);
    pImport.mScene->GetRootNode()->AddChild(pImport.mRoot);
    pImport.mFrameCount = lMotion.mLastFrame - lMotion.mFirstFrame + 1;
}

void ReadBvh(const std::string& pPath, Import& pImport, orvasf::OrvBvhReadResult& pResult)
{
    orvasf::OrvBvhReader lReader;
    pResult = lReader.Read(pPath.c_str(), pImport.mScene->GetRootNode(), nullptr);
    ASSERT_TRUE(pResult.mSucceeded) << pPath;
    pImport.mRoot = pResult.mRoot;
    pImport.mFrameCount = pResult.mFrameCount;
}

void WriteBvh(const Import& pImport, double pFramesPerSecond, const std::string& pPath)
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
void WriteAsfAmc(const Import& pImport, bool pTranslationDofs, bool pRestInOffsets, double pFramesPerSecond,
                 const std::string& pAsf, const std::string& pAmc)
{
    OrvAsfScene lSkeleton;
    const bool lUseLocalTransform = !pRestInOffsets || pImport.mFrameCount == 1;
    lSkeleton.ORVToASF(pImport.mRoot, pTranslationDofs, OrvVector4(1.0, 1.0, 1.0), lUseLocalTransform);
    OrvFileAcclaimAsf lFile(false);
    ASSERT_TRUE(lFile.Create(pAsf.c_str()));
    ASSERT_TRUE(lFile.Write(&lSkeleton));
    ASSERT_TRUE(lFile.Close());
    orvasf::OrvAmcWriteSettings lSettings;
    lSettings.mFramesPerSecond = pFramesPerSecond;
    lSettings.mFrameCount = pImport.mFrameCount;
    orvasf::OrvAmcWriter lWriter;
    ASSERT_TRUE(lWriter.Write(pAmc.c_str(), lSkeleton, pImport.mRoot, lSettings));
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

    void Add(const bvhtest::Vec3& pA, const bvhtest::Vec3& pB)
    {
        mLargest = std::max(mLargest, bvhtest::Distance(pA, pB));
        ++mPositions;
    }
    void Print(const char* pCheck, const char* pUnit) const
    {
        std::cout << pCheck << ": " << mFiles << " runs, " << mFrames << " frames, " << mPositions
                  << " joint positions; largest world-position difference " << mLargest << " " << pUnit << std::endl;
    }
};

const bvhtest::Vec3* Find(const std::unordered_map<std::string, bvhtest::Vec3>& pPositions, const std::string& pName)
{
    const auto lFound = pPositions.find(pName);
    return lFound == pPositions.end() ? nullptr : &lFound->second;
}

std::string WithoutNameSpace(const std::string& pName)
{
    const size_t lColon = pName.rfind(':');
    return lColon == std::string::npos ? pName : pName.substr(lColon + 1);
}

// Where an imported ASF skeleton keeps the joint of BVH entry pJoint: the ROOT is "root"; a joint
// is the node of its bone, or, when its bone was pruned as a zero-length end, the end node of its
// parent's bone; an End Site is the end node of its joint's bone, or the joint itself when it
// sits at the joint (a zero-length bone gets no end node).
const bvhtest::Vec3* ImportedJoint(const bvhtest::Motion& pMotion, size_t pJoint,
                                   const std::unordered_map<std::string, bvhtest::Vec3>& pPositions)
{
    const bvhtest::Joint& lJoint = pMotion.mJoints[pJoint];
    if (lJoint.mParent < 0) return Find(pPositions, "root");
    const bvhtest::Joint& lParent = pMotion.mJoints[static_cast<size_t>(lJoint.mParent)];
    const std::string lParentName = lParent.mParent < 0 ? "root" : WithoutNameSpace(lParent.mName);
    if (lJoint.mEndSite)
    {
        const bvhtest::Vec3* lEnd = Find(pPositions, lParentName + "_End");
        return lEnd ? lEnd : Find(pPositions, lParentName);
    }
    const bvhtest::Vec3* lOwn = Find(pPositions, WithoutNameSpace(lJoint.mName));
    return lOwn ? lOwn : Find(pPositions, lParentName + "_End");
}

// Compares every node of pFirst with the node of the same name in pLast at every checked frame.
void CompareImports(const Import& pFirst, const Import& pLast, Tally& pTally)
{
    ASSERT_EQ(pLast.mFrameCount, pFirst.mFrameCount);
    ++pTally.mFiles;
    for (int f : FramesToCheck(pFirst.mFrameCount))
    {
        const OrvTime lTime = OrvTime::FromFrame(f, kAmcFramesPerSecond);
        const auto lFinal = bvhtest::HostPositions(pLast.mRoot, lTime);
        for (const auto& lNode : bvhtest::HostPositions(pFirst.mRoot, lTime))
        {
            const bvhtest::Vec3* lAgain = Find(lFinal, lNode.first);
            ASSERT_NE(lAgain, nullptr) << lNode.first;
            pTally.Add(*lAgain, lNode.second);
        }
        ++pTally.mFrames;
    }
}

class BvhInterchangeRealData : public ::testing::Test
{
protected:
    void SetUp() override
    {
        if (!HaveSharedData()) GTEST_SKIP() << "no shared data folder";
    }
};

} // namespace

TEST_F(BvhInterchangeRealData, WrittenBvhPutsEveryJointWhereTheHostDoes)
{
    Tally lTally;
    for (const MotionPair& lPair : kMotionPairs)
        for (const Flags& lFlags : FlagSettings(true))
        {
            SCOPED_TRACE(std::string(lPair.mAmc) + ", " + FlagsText(lFlags));
            Import lImport;
            ImportAsfAmc(DataPath("asf", lPair.mAsf, ".asf"), DataPath("amc", lPair.mAmc, ".amc"), lFlags, lImport);
            if (HasFatalFailure()) return;
            if (kSanitized && lImport.mFrameCount > kSanitizedMaxFrames) continue;
            const std::string lBvh = TempPath(std::string(lPair.mAmc) + ".bvh");
            WriteBvh(lImport, kAmcFramesPerSecond, lBvh);
            const bvhtest::Motion lMotion = bvhtest::ReadFile(lBvh);
            std::filesystem::remove(lBvh);
            ASSERT_TRUE(lMotion.mValid);
            ASSERT_EQ(static_cast<int>(lMotion.mFrames.size()), lImport.mFrameCount);
            ++lTally.mFiles;
            for (int f : FramesToCheck(lImport.mFrameCount))
            {
                const auto lHost = bvhtest::HostPositions(lImport.mRoot, OrvTime::FromFrame(f, kAmcFramesPerSecond));
                const std::vector<bvhtest::Vec3> lPosed = bvhtest::WorldPositions(lMotion, static_cast<size_t>(f));
                for (size_t j = 0; j < lMotion.mJoints.size(); ++j)
                {
                    const bvhtest::Joint& lJoint = lMotion.mJoints[j];
                    // An End Site without an end node sits at its joint.
                    const bvhtest::Vec3* lNode = Find(lHost, lJoint.mName);
                    if (!lNode && lJoint.mEndSite)
                        lNode = Find(lHost, lMotion.mJoints[static_cast<size_t>(lJoint.mParent)].mName);
                    ASSERT_NE(lNode, nullptr) << lJoint.mName;
                    lTally.Add(*lNode, lPosed[j]);
                }
                ++lTally.mFrames;
            }
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
        const std::string lPath = DataPath("bvh", lName, ".bvh");
        Import lImport;
        orvasf::OrvBvhReadResult lResult;
        ReadBvh(lPath, lImport, lResult);
        if (HasFatalFailure()) return;
        const bvhtest::Motion lMotion = bvhtest::ReadFile(lPath);
        ASSERT_TRUE(lMotion.mValid);
        ASSERT_EQ(static_cast<int>(lMotion.mFrames.size()), lResult.mFrameCount);
        ++lTally.mFiles;
        for (int f : FramesToCheck(lResult.mFrameCount))
        {
            const auto lHost = bvhtest::HostPositions(lImport.mRoot, OrvTime::FromFrame(f, lResult.mFramesPerSecond));
            const std::vector<bvhtest::Vec3> lPosed = bvhtest::WorldPositions(lMotion, static_cast<size_t>(f));
            for (size_t j = 0; j < lMotion.mJoints.size(); ++j)
            {
                const bvhtest::Vec3* lNode = Find(lHost, lMotion.mJoints[j].mName);
                ASSERT_NE(lNode, nullptr) << lMotion.mJoints[j].mName;
                lTally.Add(*lNode, lPosed[j]);
            }
            ++lTally.mFrames;
        }
    }
    lTally.Print("BVH in", "file units");
    EXPECT_LT(lTally.mLargest, 1e-4);
}

TEST_F(BvhInterchangeRealData, BvhToAsfAmcAndBackPutsEveryJointOfTheSourceInPlace)
{
    Tally lTally;
    for (const char* lName : kBvhFiles)
        for (const Flags& lFlags : FlagSettings(true))
        {
            SCOPED_TRACE(std::string(lName) + ", " + FlagsText(lFlags));
            const std::string lPath = DataPath("bvh", lName, ".bvh");
            Import lSource;
            orvasf::OrvBvhReadResult lResult;
            ReadBvh(lPath, lSource, lResult);
            if (HasFatalFailure()) return;
            if (kSanitized && lResult.mFrameCount > kSanitizedMaxFrames) continue;
            const std::string lAsf = TempPath(std::string(lName) + ".asf");
            const std::string lAmc = TempPath(std::string(lName) + ".amc");
            WriteAsfAmc(lSource, lResult.mHasJointTranslation, true, lResult.mFramesPerSecond, lAsf, lAmc);
            Import lBack;
            if (!HasFatalFailure()) ImportAsfAmc(lAsf, lAmc, lFlags, lBack);
            std::filesystem::remove(lAsf);
            std::filesystem::remove(lAmc);
            if (HasFatalFailure()) return;

            const bvhtest::Motion lMotion = bvhtest::ReadFile(lPath);
            ASSERT_EQ(lBack.mFrameCount, lResult.mFrameCount);
            ++lTally.mFiles;
            for (int f : FramesToCheck(lResult.mFrameCount))
            {
                // The import keys frame f at f / 120 s, the BVH at f times its frame time.
                const auto lHost = bvhtest::HostPositions(lBack.mRoot, OrvTime::FromFrame(f, kAmcFramesPerSecond));
                const std::vector<bvhtest::Vec3> lPosed = bvhtest::WorldPositions(lMotion, static_cast<size_t>(f));
                for (size_t j = 0; j < lMotion.mJoints.size(); ++j)
                {
                    const bvhtest::Vec3* lNode = ImportedJoint(lMotion, j, lHost);
                    ASSERT_NE(lNode, nullptr) << lMotion.mJoints[j].mName;
                    lTally.Add(*lNode, lPosed[j]);
                }
                ++lTally.mFrames;
            }
        }
    lTally.Print("BVH to ASF/AMC and back", "file units");
    EXPECT_LT(lTally.mLargest, 1e-3);
}

TEST_F(BvhInterchangeRealData, AsfAmcToBvhToAsfAmcPutsEveryNodeOfTheFirstImportInPlace)
{
    Tally lTally;
    for (const MotionPair& lPair : kMotionPairs)
        for (const Flags& lFlags : FlagSettings(false))
        {
            SCOPED_TRACE(std::string(lPair.mAmc) + ", " + FlagsText(lFlags));
            Import lFirst;
            ImportAsfAmc(DataPath("asf", lPair.mAsf, ".asf"), DataPath("amc", lPair.mAmc, ".amc"), lFlags, lFirst);
            if (HasFatalFailure()) return;
            if (kSanitized && lFirst.mFrameCount > kSanitizedMaxFrames) continue;
            const std::string lBvh = TempPath(std::string(lPair.mAmc) + ".bvh");
            const std::string lAsf = TempPath(std::string(lPair.mAmc) + ".asf");
            const std::string lAmc = TempPath(std::string(lPair.mAmc) + ".amc");
            WriteBvh(lFirst, kAmcFramesPerSecond, lBvh);
            Import lMiddle;
            orvasf::OrvBvhReadResult lResult;
            if (!HasFatalFailure()) ReadBvh(lBvh, lMiddle, lResult);
            if (!HasFatalFailure())
                WriteAsfAmc(lMiddle, lResult.mHasJointTranslation, true, lResult.mFramesPerSecond, lAsf, lAmc);
            Import lLast;
            if (!HasFatalFailure()) ImportAsfAmc(lAsf, lAmc, lFlags, lLast);
            for (const std::string& lFile : {lBvh, lAsf, lAmc}) std::filesystem::remove(lFile);
            if (HasFatalFailure()) return;

            CompareImports(lFirst, lLast, lTally);
        }
    lTally.Print("ASF/AMC to BVH to ASF/AMC", "cm");
    EXPECT_LT(lTally.mLargest, 1e-3);
}

TEST_F(BvhInterchangeRealData, AsfAmcToAsfAmcThroughTheHostPutsEveryNodeInPlace)
{
    Tally lTally;
    for (const MotionPair& lPair : kAsfPairs)
        for (const Flags& lFlags : FlagSettings(true))
        {
            SCOPED_TRACE(std::string(lPair.mAmc) + ", " + FlagsText(lFlags));
            Import lFirst;
            ImportAsfAmc(DataPath("asf", lPair.mAsf, ".asf"), DataPath("amc", lPair.mAmc, ".amc"), lFlags, lFirst);
            if (HasFatalFailure()) return;
            if (kSanitized && lFirst.mFrameCount > kSanitizedMaxFrames) continue;
            const std::string lAsf = TempPath(std::string(lPair.mAmc) + ".asf");
            const std::string lAmc = TempPath(std::string(lPair.mAmc) + ".amc");
            WriteAsfAmc(lFirst, false, lFlags.mUseRotationOffset, kAmcFramesPerSecond, lAsf, lAmc);
            Import lLast;
            if (!HasFatalFailure()) ImportAsfAmc(lAsf, lAmc, lFlags, lLast);
            for (const std::string& lFile : {lAsf, lAmc}) std::filesystem::remove(lFile);
            if (HasFatalFailure()) return;
            CompareImports(lFirst, lLast, lTally);
        }
    lTally.Print("ASF/AMC to ASF/AMC", "cm");
    EXPECT_LT(lTally.mLargest, 1e-3);
}
