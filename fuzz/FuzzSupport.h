#ifndef ORVASF_FUZZ_FUZZSUPPORT_H
#define ORVASF_FUZZ_FUZZSUPPORT_H

// Pieces shared by the fuzz targets: the import settings taken from an input byte, checks that
// libFuzzer reports as crashes, skeleton reading, scratch files and a whole import through the
// import driver.

#include "driver/OrvImportDriver.h"
#include "orvsdk/asf/OrvFileAcclaimAsf.h"
#include "orvsdk/host/scene/OrvNode.h"
#include "orvsdk/skeleton/OrvAsfDof.h"
#include "orvsdk/skeleton/OrvAsfNode.h"
#include "orvsdk/skeleton/OrvAsfScene.h"

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <string_view>
#include <vector>

#include <unistd.h>

namespace orvfuzz {

// The reader's dummy removal, the two set-up flags and the node building's limits flag, from the
// low four bits of a byte.
inline orvasf::OrvImportSettings SettingsFromByte(uint8_t pByte)
{
    orvasf::OrvImportSettings lSettings;
    lSettings.mRemoveDummy = (pByte & 1) != 0;
    lSettings.mUseRotationOffset = (pByte & 2) != 0;
    lSettings.mUsePreRotation = (pByte & 4) != 0;
    lSettings.mUseLimits = (pByte & 8) != 0;
    return lSettings;
}

// A broken expectation: printed, then abort(), which libFuzzer records as a crash with its input.
[[noreturn]] inline void Fail(const char* pWhat)
{
    std::fprintf(stderr, "fuzz check failed: %s\n", pWhat);
    std::abort();
}

inline void Require(bool pCondition, const char* pWhat)
{
    if (!pCondition) Fail(pWhat);
}

// Every bone of the tree in depth-first pre-order, without recursion.
inline std::vector<const orvsdk::OrvAsfNode*> BonesInPreOrder(const orvsdk::OrvAsfNode* pRoot)
{
    std::vector<const orvsdk::OrvAsfNode*> lBones;
    std::vector<const orvsdk::OrvAsfNode*> lPending{pRoot};
    while (!lPending.empty())
    {
        const orvsdk::OrvAsfNode* lBone = lPending.back();
        lPending.pop_back();
        lBones.push_back(lBone);
        for (int i = lBone->mChildren.GetCount() - 1; i >= 0; --i) lPending.push_back(lBone->mChildren[i]);
    }
    return lBones;
}

// The tree a successful read leaves: parent links agree with the children arrays, the DOF lists
// hold at most kMaxDofs stored codes, and no bone lies deeper than the reader's limit.
inline void RequireSoundTree(const orvsdk::OrvAsfNode* pRoot)
{
    Require(pRoot->mParent == nullptr, "the root has a parent");
    for (const orvsdk::OrvAsfNode* lBone : BonesInPreOrder(pRoot))
    {
        Require(lBone->mDofCount >= 0 && lBone->mDofCount <= orvsdk::OrvAsfNode::kMaxDofs, "DOF count out of range");
        for (int i = 0; i < lBone->mDofCount; ++i)
            Require(orvsdk::IsStoredDof(lBone->mDof[i]), "DOF code out of range");
        for (int i = 0; i < lBone->mChildren.GetCount(); ++i)
            Require(lBone->mChildren[i]->mParent == lBone, "child whose parent link points elsewhere");
        int lDepth = 0;
        for (const orvsdk::OrvAsfNode* lUp = lBone; lUp->mParent; lUp = lUp->mParent) ++lDepth;
        Require(lDepth <= orvsdk::OrvFileAcclaimAsf::kMaxBoneDepth, "bone deeper than the limit");
    }
}

// Reads pSize bytes of ASF text into pScene; on success checks the tree.
inline bool ReadSkeleton(const uint8_t* pText, size_t pSize, const orvasf::OrvImportSettings& pFlags,
                         orvsdk::OrvAsfScene& pScene)
{
    orvsdk::OrvFileAcclaimAsf lFile(false);
    Require(lFile.Open(reinterpret_cast<const char*>(pText), pSize, "fuzz.asf"), "in-memory open failed");
    if (!lFile.Read(&pScene, pFlags.mRemoveDummy, pFlags.mUseRotationOffset, pFlags.mUsePreRotation)) return false;
    Require(pScene.mRoot != nullptr, "read succeeded without a root");
    Require(lFile.GetErrorCount() == 0, "read succeeded with an error message");
    RequireSoundTree(pScene.mRoot);
    return true;
}

// A file of this process named after pSuffix, in memory-backed /dev/shm when there is one,
// rewritten for each input and removed when the process ends normally.
class ScratchFile
{
public:
    explicit ScratchFile(const char* pSuffix)
        : mPath(std::string(access("/dev/shm", W_OK) == 0 ? "/dev/shm" : "/tmp") + "/orvasf-fuzz-" +
                std::to_string(getpid()) + pSuffix)
    {
    }
    ~ScratchFile() { unlink(mPath.c_str()); }
    ScratchFile(const ScratchFile&) = delete;
    ScratchFile& operator=(const ScratchFile&) = delete;

    // Replaces the file's content with pSize bytes at pBytes; returns its path.
    const std::string& Write(const uint8_t* pBytes, size_t pSize) const
    {
        std::FILE* lFile = std::fopen(mPath.c_str(), "wb");
        Require(lFile != nullptr, "cannot create a scratch file");
        const bool lWritten = std::fwrite(pBytes, 1, pSize, lFile) == pSize;
        Require(std::fclose(lFile) == 0 && lWritten, "cannot write a scratch file");
        return mPath;
    }

private:
    std::string mPath;
};

// A whole import through the import driver of the skeleton at pAsfPath and the motion at
// pAmcPath, with the result's invariants checked: every message formats, an error comes exactly
// with a refusal, a read skeleton is a sound tree, a success has its nodes attached.
inline void Import(const std::string& pAsfPath, const std::string& pAmcPath, const orvasf::OrvImportSettings& pSettings)
{
    const orvasf::OrvImportResult lResult = orvasf::OrvImportAsf(pAsfPath, pAmcPath, pSettings);
    bool lHasError = false;
    for (const orvsdk::OrvMessage& lMessage : lResult.mMessages)
    {
        lHasError = lHasError || lMessage.mKind == orvsdk::OrvMessage::eError;
        Require(!orvsdk::OrvFormatMessage(lMessage).empty(), "empty message");
    }
    Require(lHasError != lResult.mSucceeded, "the result disagrees with the error messages");
    if (lResult.mScene) RequireSoundTree(lResult.mSkeleton->mRoot);
    if (!lResult.mSucceeded) return;
    Require(lResult.mFrameSpan >= lResult.mFrameCount, "frames out of order");
    Require(lResult.mRoot != nullptr && lResult.mRoot->GetParent() == lResult.mScene->GetRootNode(),
            "the skeleton's node is not attached");
}

} // namespace orvfuzz

#endif
