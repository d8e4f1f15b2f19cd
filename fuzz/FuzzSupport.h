#ifndef ORVASF_FUZZ_FUZZSUPPORT_H
#define ORVASF_FUZZ_FUZZSUPPORT_H

// Pieces shared by the fuzz targets: the reading flags taken from an input byte, checks that
// libFuzzer reports as crashes, skeleton reading and a whole motion import into a host scene.

#include "amc/OrvAmcReader.h"
#include "orvsdk/asf/OrvFileAcclaimAsf.h"
#include "orvsdk/host/anim/OrvAnimLayer.h"
#include "orvsdk/host/anim/OrvAnimStack.h"
#include "orvsdk/host/scene/OrvNode.h"
#include "orvsdk/host/scene/OrvScene.h"
#include "orvsdk/skeleton/OrvAsfDof.h"
#include "orvsdk/skeleton/OrvAsfNode.h"
#include "orvsdk/skeleton/OrvAsfScene.h"

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string_view>
#include <vector>

namespace orvfuzz {

// The reader's three flags and the node building's limits flag, from the low four bits of a byte.
struct ReadFlags
{
    bool mRemoveDummy;
    bool mUseRotationOffset;
    bool mUsePreRotation;
    bool mUseLimits;
};

inline ReadFlags FlagsFromByte(uint8_t pByte)
{
    return ReadFlags{(pByte & 1) != 0, (pByte & 2) != 0, (pByte & 4) != 0, (pByte & 8) != 0};
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
inline bool ReadSkeleton(const uint8_t* pText, size_t pSize, const ReadFlags& pFlags, orvsdk::OrvAsfScene& pScene)
{
    orvsdk::OrvFileAcclaimAsf lFile(false);
    Require(lFile.Open(reinterpret_cast<const char*>(pText), pSize, "fuzz.asf"), "in-memory open failed");
    if (!lFile.Read(&pScene, pFlags.mRemoveDummy, pFlags.mUseRotationOffset, pFlags.mUsePreRotation)) return false;
    Require(pScene.mRoot != nullptr, "read succeeded without a root");
    Require(lFile.GetErrorCount() == 0, "read succeeded with an error message");
    RequireSoundTree(pScene.mRoot);
    return true;
}

// A host scene with a current take named kTake, as an import expects it. It must outlive every
// skeleton whose curves it holds.
class HostScene
{
public:
    static constexpr const char* kTake = "Take";

    HostScene() : mScene(orvsdk::OrvScene::Create("fuzz"))
    {
        orvsdk::OrvAnimStack* lStack = orvsdk::OrvAnimStack::Create(mScene, kTake);
        orvsdk::OrvAnimLayer::Create(lStack, "Base");
        mScene->SetCurrentAnimationStack(lStack);
    }
    ~HostScene() { mScene->Destroy(); }
    HostScene(const HostScene&) = delete;
    HostScene& operator=(const HostScene&) = delete;

    orvsdk::OrvScene* Get() const { return mScene; }

private:
    orvsdk::OrvScene* mScene;
};

// A whole import of pSize bytes of motion onto pSkeleton, which has a root: curves, the AMC read
// and, when the motion was read whole, the host nodes.
inline void ImportMotion(const uint8_t* pText, size_t pSize, const ReadFlags& pFlags, orvsdk::OrvAsfScene& pSkeleton,
                         HostScene& pHost)
{
    pSkeleton.mRoot->CreateDataFromDOF(pHost.Get());
    orvasf::OrvAmcReadSettings lSettings;
    lSettings.mUseRotationOffset = pFlags.mUseRotationOffset;
    lSettings.mUsePreRotation = pFlags.mUsePreRotation;
    orvasf::OrvAmcReader lReader;
    const orvasf::OrvAmcReadResult lResult =
        lReader.Read(reinterpret_cast<const char*>(pText), pSize, "fuzz.amc", pSkeleton, lSettings);
    bool lHasError = false;
    for (const orvasf::OrvAmcMessage& lMessage : lResult.mMessages)
    {
        lHasError = lHasError || lMessage.mKind == orvasf::OrvAmcMessage::eError;
        Require(!lReader.FormatMessage(lMessage).empty(), "empty message");
    }
    Require(lHasError != lResult.mSucceeded, "the result disagrees with the error messages");
    if (!lResult.mSucceeded) return;
    Require(lResult.mFrameCount == 0 || lResult.mFirstFrame <= lResult.mLastFrame, "frames out of order");
    orvsdk::OrvNode* lRoot = pSkeleton.ASFToORV(pHost.Get(), HostScene::kTake, pFlags.mUseLimits,
                                                pFlags.mUseRotationOffset, pFlags.mUsePreRotation);
    Require(lRoot != nullptr, "node building returned no node");
    pHost.Get()->GetRootNode()->AddChild(lRoot);
}

} // namespace orvfuzz

#endif
