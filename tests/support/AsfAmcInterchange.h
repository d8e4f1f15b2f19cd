// Skeleton and motion files into and out of host scenes, the way the converter moves them; shared
// by the tests of the motion writers.
#ifndef ORVASF_TESTS_SUPPORT_ASFAMCINTERCHANGE_H
#define ORVASF_TESTS_SUPPORT_ASFAMCINTERCHANGE_H

#include "tests/AsfTestSupport.h"
#include "tests/support/HostSceneSupport.h"

#include "amc/OrvAmcReader.h"
#include "amc/OrvAmcWriter.h"

#include <gtest/gtest.h>

#include <string>

namespace orvsdk {
namespace asftest {

// The name of the bone exported for a host node: the node's name without its name-space prefix.
inline std::string ExportedBoneName(const std::string& pNodeName)
{
    const size_t lColon = pNodeName.rfind(':');
    return lColon == std::string::npos ? pNodeName : pNodeName.substr(lColon + 1);
}

// A skeleton and its motion as host nodes below the root of a scene of their own.
struct HostImport
{
    hosttest::ScenePointer mScene = hosttest::CreateHostScene();
    OrvNode* mRoot = nullptr;
    int mFrameCount = 0;  // from the first to the last frame number of the motion
};

// Reads the skeleton pAsf and the motion pAmc, keyed at pFramesPerSecond, with pFlags, and builds
// their host nodes into pImport. Fatal failures when a file is refused.
inline void ImportAsfAmc(const std::string& pAsf, const std::string& pAmc, SetupFlags pFlags, double pFramesPerSecond,
                         HostImport& pImport)
{
    const auto lSkeleton = ReadAsfFile(pAsf, false, pFlags);
    ASSERT_TRUE(lSkeleton->mRead) << pAsf;
    lSkeleton->mScene.mRoot->CreateDataFromDOF(pImport.mScene.get());
    orvasf::OrvAmcReadSettings lSettings;
    lSettings.mFramesPerSecond = pFramesPerSecond;
    lSettings.mUseRotationOffset = pFlags.mUseRotationOffset;
    lSettings.mUsePreRotation = pFlags.mUsePreRotation;
    orvasf::OrvAmcReader lReader;
    const orvasf::OrvAmcReadResult lMotion = lReader.Read(pAmc.c_str(), lSkeleton->mScene, lSettings);
    ASSERT_TRUE(lMotion.mSucceeded) << pAmc;
    pImport.mRoot = lSkeleton->mScene.ASFToORV(pImport.mScene.get(), pImport.mScene->GetCurrentAnimationStack()->GetName(),
                                               false, pFlags.mUseRotationOffset, pFlags.mUsePreRotation);
    pImport.mScene->GetRootNode()->AddChild(pImport.mRoot);
    pImport.mFrameCount = lMotion.mLastFrame - lMotion.mFirstFrame + 1;
}

// Exports the host skeleton below pRoot (unit scale) to the file pAsf and its motion over
// pSettings' frames to pAmc. Fatal failures when a file cannot be written.
inline void WriteAsfAmc(OrvNode* pRoot, bool pTranslationDofs, bool pUseLocalTransform,
                        const orvasf::OrvAmcWriteSettings& pSettings, const std::string& pAsf, const std::string& pAmc)
{
    OrvAsfScene lSkeleton;
    lSkeleton.ORVToASF(pRoot, pTranslationDofs, OrvVector4(1.0, 1.0, 1.0), pUseLocalTransform);
    OrvFileAcclaimAsf lFile(false);
    ASSERT_TRUE(lFile.Create(pAsf.c_str()));
    ASSERT_TRUE(lFile.Write(&lSkeleton));
    ASSERT_TRUE(lFile.Close());
    orvasf::OrvAmcWriter lWriter;
    ASSERT_TRUE(lWriter.Write(pAmc.c_str(), lSkeleton, pRoot, pSettings)) << pAmc;
}

} // namespace asftest
} // namespace orvsdk

#endif
