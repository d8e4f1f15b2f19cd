// Skeleton and motion files into and out of host scenes, the way the converter moves them; shared
// by the tests of the motion writers.
#ifndef ORVASF_TESTS_SUPPORT_ASFAMCINTERCHANGE_H
#define ORVASF_TESTS_SUPPORT_ASFAMCINTERCHANGE_H

#include "tests/AsfTestSupport.h"
#include "tests/support/HostSceneSupport.h"

#include "amc/OrvAmcWriter.h"
#include "driver/OrvImportDriver.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>

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
    OrvScenePtr mScene = hosttest::CreateHostScene();
    OrvNode* mRoot = nullptr;
    int mFrameCount = 0;  // from the first to the last frame number of the motion
};

// Imports the skeleton pAsf and the motion pAmc, keyed at pFramesPerSecond, with pFlags, into
// pImport. Fatal failures when a file is refused.
inline void ImportAsfAmc(const std::string& pAsf, const std::string& pAmc, SetupFlags pFlags, double pFramesPerSecond,
                         HostImport& pImport)
{
    orvasf::OrvImportSettings lSettings;
    lSettings.mUseRotationOffset = pFlags.mUseRotationOffset;
    lSettings.mUsePreRotation = pFlags.mUsePreRotation;
    lSettings.mFramesPerSecond = pFramesPerSecond;
    orvasf::OrvImportResult lResult = orvasf::OrvImportAsf(pAsf, pAmc, lSettings);
    ASSERT_TRUE(lResult.mSucceeded) << pAsf << " + " << pAmc;
    pImport.mScene = std::move(lResult.mScene);
    pImport.mRoot = lResult.mRoot;
    pImport.mFrameCount = static_cast<int>(lResult.mFrameSpan);
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
