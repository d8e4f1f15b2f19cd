#ifndef ORVASF_GLTF_ORVGLTFREADER_H
#define ORVASF_GLTF_ORVGLTFREADER_H

#include "gltf/OrvGltfExport.h"
#include "orvsdk/host/io/OrvDiagnostics.h"

#include <cstddef>
#include <string>
#include <vector>

namespace orvsdk {
class OrvAnimStack;
class OrvNode;
} // namespace orvsdk

namespace orvasf {

/// How a glTF animation is read.
struct OrvGltfReadSettings
{
    std::string mAnimationName;    ///< the animation to read; empty: the first
    double mFramesPerSecond = 0.0; ///< above 0: sample at this rate; 0: at the keyframe times
};

/// Summary of one glTF read.
struct OrvGltfReadResult
{
    bool mSucceeded = false;           ///< the file was read and its nodes built
    orvsdk::OrvNode* mRoot = nullptr;  ///< the topmost node read; null unless the read succeeded
    int mJointCount = 0;               ///< nodes read
    bool mHasMotion = false;           ///< an animation was read
    int mFrameCount = 0;               ///< frames sampled: frame i is keyed at OrvTime::FromFrame(i, rate)
    double mFramesPerSecond = 0.0;     ///< the rate of the frames
    bool mHasJointTranslation = false; ///< a node below the topmost one has translation curves
};

/// Reader of glTF 2.0 files (.gltf with embedded or external buffers, or .glb) into a host scene.
///
/// Which nodes: the joints of the first skin and every node above them, or, without a skin, the
/// first root node of the default (else the first) scene and everything below it. Each becomes a
/// host node of the same name ("node" and its index when it has none) with a skeleton attribute,
/// its translation in centimetres (glTF's metres times 100) as the rotation offset, its rotation as
/// X, Y, Z Euler angles in the rotation property (order X, Y, Z), and its scale as scaling.
///
/// Which motion: the first animation, or the one named in the settings. It is sampled at its
/// keyframe times, which must then be evenly spaced (their rate, an integer rate when within 1e-4
/// of one, becomes the frame rate; uneven times are sampled at 30 frames per second with a
/// warning), or at the settings' rate. The first keyframe time is frame 0. Translation keys hold
/// the motion beyond the rest translation; rotation keys hold whole Euler angles, each within 180
/// degrees of the previous frame's; scale keys the scale. LINEAR samplers interpolate as glTF says
/// (rotations spherically); STEP and CUBICSPLINE samplers are followed too, with a warning, as are
/// scale channels (BVH and ASF/AMC outputs carry no scale). Morph target weights are ignored with
/// a warning.
///
/// Refused (an error naming the file, nothing built): a file that is not glTF 2.0, a truncated
/// binary file, a missing external buffer, an index that points outside its array, an accessor
/// outside its buffer or of a type its use does not allow, keyframe times that do not increase, a
/// node hierarchy with a cycle or a node of two parents, no node to read, a named animation that
/// does not exist.
class ORVGLTF_API OrvGltfReader
{
public:
    /// Reads the file at pPath (external buffers relative to its folder) and builds its nodes
    /// below pParent (not null), in its scene, with the curves in pStack (not null). mSucceeded
    /// tells whether the file was read; on failure nothing was created. The created objects
    /// belong to the scene. Costs the file's size in memory plus the sampled keys.
    OrvGltfReadResult Read(const std::string& pPath, orvsdk::OrvNode* pParent, orvsdk::OrvAnimStack* pStack,
                           const OrvGltfReadSettings& pSettings);
    /// The same from pSize bytes; pName stands for the file in messages. External buffers are refused.
    OrvGltfReadResult Read(const unsigned char* pBytes, size_t pSize, const std::string& pName,
                           orvsdk::OrvNode* pParent, orvsdk::OrvAnimStack* pStack,
                           const OrvGltfReadSettings& pSettings);

    /// The warnings and errors of the last read, "FILE: error: TEXT" through OrvFormatMessage.
    const std::vector<orvsdk::OrvMessage>& GetMessages() const { return mDiagnostics.GetMessages(); }

private:
    OrvGltfReadResult ReadBytes(const unsigned char* pBytes, size_t pSize, const std::string& pBaseDir,
                                bool pExternalFiles, orvsdk::OrvNode* pParent, orvsdk::OrvAnimStack* pStack,
                                const OrvGltfReadSettings& pSettings);

    orvsdk::OrvDiagnostics mDiagnostics;
};

} // namespace orvasf

#endif
