#ifndef ORVASF_DRIVER_ORVIMPORTDRIVER_H
#define ORVASF_DRIVER_ORVIMPORTDRIVER_H

#include "driver/OrvDriverExport.h"
#include "gltf/OrvGltfReader.h"
#include "orvsdk/host/io/OrvDiagnostics.h"
#include "orvsdk/host/scene/OrvScene.h"
#include "orvsdk/skeleton/OrvAsfScene.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace orvsdk {
class OrvAnimStack;
class OrvNode;
}

/// Motion files around the module: the AMC and BVH readers and writers and the import driver.
namespace orvasf {

/// Rotation filter run on the sampled rotation curves; the values are the host scene's codes.
enum class OrvRotationFilter : int
{
    eNone = 0,
    eGimbalKiller = 1,
    eUnroll = 2
};

/// Everything one import is set up with. One value reaches every step (the skeleton reader, each
/// sample of the motion and the node building), so the steps always agree.
struct OrvImportSettings
{
    ///@{
    /// Where each bone's rest pose is carried (the two set-up flags): true puts the rest
    /// translation in the host node's rotation offset (else in its local translation), and the
    /// rest rotation in its pre-rotation (else in its local rotation).
    bool mUseRotationOffset = false;
    bool mUsePreRotation = false;
    bool mRemoveDummy = false; ///< remove the bones without degrees of freedom
    bool mUseLimits = false;   ///< give the host nodes the bones' limits
    OrvRotationFilter mRotationFilter = OrvRotationFilter::eNone;
    bool mReduceKeys = false;         ///< run the constant-key reducer on the curves
    double mFramesPerSecond = 120.0;  ///< of an AMC motion; a BVH file states its own
    std::string mTakeName = "Take 001";
    ///@}
    /// Called now and then while a motion file is read, with the bytes read and the file's size
    /// (0 when unknown); may be empty.
    std::function<void(uint64_t pDone, uint64_t pTotal)> mProgress;
    /// Threads sampling an AMC motion beside the one reading it (0: one per core; 1: the calling
    /// thread alone). The keys are the same whatever the count.
    int mThreads = 0;
};

/// Wall-clock seconds of an import's steps.
struct OrvImportTimings
{
    double mReadSeconds = 0.0;         ///< reading the skeleton file
    double mSamplingSeconds = 0.0;     ///< reading the motion into curves, flush included
    double mNodeBuildingSeconds = 0.0; ///< building the host nodes
};

/// The outcome of one import. It owns the host scene, and with it every node and curve made; the
/// pointers into the scene stay valid as long as the result does.
struct OrvImportResult
{
    /// True when every file was read and the nodes were built; false when a file was refused,
    /// in which case mMessages holds the error and no node was attached.
    bool mSucceeded = false;
    ///@{
    /// The warnings and errors of every file, in the order met ("FILE:LINE: ..." through
    /// OrvFormatMessage); each file's warnings are capped as OrvDiagnostics caps them.
    std::vector<orvsdk::OrvMessage> mMessages;
    orvsdk::OrvScenePtr mScene;             ///< null only when the scene could not be made
    orvsdk::OrvNode* mRoot = nullptr;       ///< the skeleton's root node, a child of the scene's root node
    orvsdk::OrvAnimStack* mTake = nullptr;  ///< the stack holding the curves, named after the take
    ///@}
    ///@{
    /// The skeleton as read (ASF imports only; null for BVH). Declared after the scene so that it
    /// goes first: after a refused motion its bones still own curves of the scene.
    std::unique_ptr<orvsdk::OrvAsfScene> mSkeleton;
    int mJointCount = 0;      ///< bones (root included) or BVH joints, end sites not counted
    bool mHasMotion = false;  ///< a motion file was read
    int mFrameCount = 0;      ///< frames the motion file holds
    ///@}
    ///@{
    /// Frame indices from the first frame to the last, (last - first) + 1: frame numbers may lie
    /// anywhere in the int range, so the span takes 64 bits.
    int64_t mFrameSpan = 0;
    double mFramesPerSecond = 0.0;
    ///@}
    ///@{
    /// The rest translations sit in the nodes' rotation offsets, so the local transforms carry
    /// the motion alone.
    bool mRestInRotationOffsets = false;
    bool mJointTranslation = false;  ///< a joint other than the root has translation curves
    OrvImportTimings mTimings;
    ///@}
};

/// Reads the ASF skeleton at pPath into pSkeleton (constructed empty; the caller owns it either
/// way) with the reader settings of pSettings, and appends the file's messages to pMessages. A
/// file the reader stops reading without a message of its own gets an error saying why. True
/// when the file was read without error. Costs the size of the file.
ORVDRIVER_API bool OrvReadSkeleton(const std::string& pPath, const OrvImportSettings& pSettings,
                                   orvsdk::OrvAsfScene& pSkeleton, std::vector<orvsdk::OrvMessage>& pMessages);

/// Imports the ASF skeleton at pAsfPath, and the AMC motion at pAmcPath unless it is empty, into
/// a new host scene named after the skeleton: read, curves created, motion sampled, curves
/// flushed (rotation filter, key reducer) and host nodes built and attached under the scene's
/// root node, all with pSettings. Warns when the settings give results a user would not expect
/// (see the README's notes on the gimbal filter and on root positions). Costs the size of the
/// files, with memory bounded by the keys made.
ORVDRIVER_API OrvImportResult OrvImportAsf(const std::string& pAsfPath, const std::string& pAmcPath,
                                           const OrvImportSettings& pSettings);

/// Imports the BVH file at pPath into a new host scene named "BVH": its joints become nodes
/// under the scene's root node, its motion curves in the take pSettings names. Only the take
/// name of pSettings applies; the file states its own frame rate. A refused file leaves no node.
ORVDRIVER_API OrvImportResult OrvImportBvh(const std::string& pPath, const OrvImportSettings& pSettings);

/// Imports the glTF file at pPath (.gltf or .glb) into a new host scene named "glTF": its joints
/// become nodes under the scene's root node, its animation (chosen and sampled as pGltfSettings
/// say; see OrvGltfReader) curves in the take pSettings names. Only the take name of pSettings
/// applies. A refused file leaves no node.
ORVDRIVER_API OrvImportResult OrvImportGltf(const std::string& pPath, const OrvImportSettings& pSettings,
                                            const OrvGltfReadSettings& pGltfSettings);

} // namespace orvasf

#endif
