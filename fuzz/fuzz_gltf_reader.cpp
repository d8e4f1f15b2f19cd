// glTF reader on arbitrary bytes. The first byte chooses the sampling (0: at the keyframe times,
// else that many frames per second), the rest is a .gltf or .glb file read from memory. A file
// that reads must have built its nodes and keyed frames consistently, and must survive being
// written as .glb and read back.

#include "FuzzSupport.h"
#include "gltf/OrvGltfReader.h"
#include "gltf/OrvGltfWriter.h"
#include "orvsdk/host/anim/OrvAnimLayer.h"
#include "orvsdk/host/anim/OrvAnimStack.h"
#include "orvsdk/host/scene/OrvPoseEvaluator.h"

#include <cmath>

namespace {

struct Scene
{
    orvsdk::OrvScenePtr mScene = orvsdk::OrvCreateScene("fuzz");
    orvsdk::OrvAnimStack* mTake = orvsdk::OrvAnimStack::Create(mScene.get(), "Take 001");
    Scene() { orvsdk::OrvAnimLayer::Create(mTake, "Base Layer"); }
};

// Reads pSize bytes into a new scene; checks what a success promises.
bool ReadInto(Scene& pScene, const uint8_t* pBytes, size_t pSize, double pFramesPerSecond,
              orvasf::OrvGltfReadResult& pResult)
{
    orvasf::OrvGltfReadSettings lSettings;
    lSettings.mFramesPerSecond = pFramesPerSecond;
    orvasf::OrvGltfReader lReader;
    pResult = lReader.Read(pBytes, pSize, "fuzz.glb", pScene.mScene->GetRootNode(), pScene.mTake, lSettings);
    bool lHasError = false;
    for (const orvsdk::OrvMessage& lMessage : lReader.GetMessages())
        lHasError = lHasError || lMessage.mKind == orvsdk::OrvMessage::eError;
    orvfuzz::Require(lHasError != pResult.mSucceeded, "the result disagrees with the error messages");
    orvfuzz::Require(pResult.mSucceeded == (pScene.mScene->GetRootNode()->GetChildCount() == 1),
                     "a read built nothing, or a refusal built something");
    if (!pResult.mSucceeded) return false;
    orvfuzz::Require(pResult.mRoot && pResult.mJointCount == pResult.mRoot->GetChildCount(true) + 1,
                     "the node count disagrees with the tree");
    orvfuzz::Require(!pResult.mHasMotion || (pResult.mFrameCount > 0 && pResult.mFramesPerSecond > 0.0),
                     "a motion without frames or rate");
    return true;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* pData, size_t pSize)
{
    static const orvfuzz::ScratchFile sWritten(".glb");
    if (pSize == 0) return 0;
    const double lFramesPerSecond = pData[0];
    Scene lScene;
    orvasf::OrvGltfReadResult lRead;
    if (!ReadInto(lScene, pData + 1, pSize - 1, lFramesPerSecond, lRead)) return 0;

    orvasf::OrvGltfWriteSettings lSettings;
    lSettings.mFramesPerSecond = lRead.mHasMotion ? lRead.mFramesPerSecond : 30.0;
    lSettings.mFrameCount = lRead.mHasMotion ? lRead.mFrameCount : 0;
    orvasf::OrvGltfWriter lWriter;
    const uint8_t kPlaceholder = 0;
    const std::string& lPath = sWritten.Write(&kPlaceholder, 1);
    // Transforms that overflow (huge scales, say) are refused with a message, never written.
    if (!lWriter.Write(lPath, lRead.mRoot, lScene.mTake, lSettings))
    {
        orvfuzz::Require(!lWriter.GetMessages().empty(), "a write failed without a message");
        return 0;
    }

    Scene lAgain;
    orvasf::OrvGltfReadResult lReadAgain;
    orvasf::OrvGltfReader lReader;
    lReadAgain = lReader.Read(lPath, lAgain.mScene->GetRootNode(), lAgain.mTake, orvasf::OrvGltfReadSettings());
    orvfuzz::Require(lReadAgain.mSucceeded, "a written file could not be read back");
    orvfuzz::Require(lReadAgain.mJointCount == lRead.mJointCount, "the joints changed on the way back");
    return 0;
}
