#ifndef ORVASF_GLTF_ORVGLTFWRITER_H
#define ORVASF_GLTF_ORVGLTFWRITER_H

#include "gltf/OrvGltfExport.h"
#include "orvsdk/host/io/OrvDiagnostics.h"

#include <string>
#include <vector>

namespace orvsdk {
class OrvAnimStack;
class OrvNode;
} // namespace orvsdk

namespace orvasf {

/// How a glTF file holds its binary data.
enum class OrvGltfContainer
{
    eBinary,   ///< one .glb file: JSON chunk and binary chunk
    eEmbedded, ///< one .gltf file: the buffer as a base64 data URI
    eSeparate  ///< a .gltf file and, beside it, a .bin file named after it
};

/// What a glTF file gets.
struct OrvGltfWriteSettings
{
    OrvGltfContainer mContainer = OrvGltfContainer::eBinary; ///< the file layout
    double mFramesPerSecond = 120.0; ///< above 0; frame i is keyed at i / mFramesPerSecond seconds
    int mFrameCount = 0;             ///< frames of the animation; 0 writes the rest pose alone
    std::string mAnimationName = "Take 001"; ///< the animation's name
    std::string mGenerator;          ///< asset.generator: the writing tool's name and version
};

/// Writer of a host skeleton and its motion as a skinned, animated glTF 2.0 file.
///
/// Nodes: the given node and every node below it that carries a skeleton attribute, in child order
/// (children without one are left out with everything below them), become glTF nodes of the same
/// names (bytes that are not UTF-8 taken as Latin-1) and hierarchy. Each node's translation,
/// rotation (a unit quaternion) and scale come from the host node's local transform at rest (its
/// properties' own values, every curve left out), decomposed. Lengths are turned from centimetres
/// into metres; the host's Y axis is up, as glTF's is.
///
/// Skin and mesh: a skin over those joints with the inverse of each joint's world transform at rest,
/// and a mesh node at the scene root that shows the figure: a tapered box from each joint to each
/// child joint, its vertices weighted 1.0 to the joint, with flat normals.
///
/// Animation: one, named after the take, holding per joint a translation channel when its
/// translation moves and a rotation channel when it turns, keyed at every frame, LINEAR; each
/// quaternion lies in the hemisphere of the previous frame's, so that interpolation takes the short
/// way. None when nothing moves.
///
/// Output goes to a temporary file that replaces the target only when all of it was written (see
/// orvsdk::OrvTextFile); with a separate buffer the .bin file is written first.
class ORVGLTF_API OrvGltfWriter
{
public:
    /// Writes the skeleton below pRoot (not null) and its curves in pTake (null: the scene's
    /// current stack) to pPath. True when every file was written; false, with an error in
    /// GetMessages(), when a file could not be created or written, in which case an existing file
    /// at that path is untouched (of a .gltf and its .bin, the .bin may be written already), or
    /// when the skeleton cannot be written (more than 65536 joints, transforms that overflow).
    /// Costs one whole-pose evaluation per frame; memory holds every key of the animation once.
    bool Write(const std::string& pPath, orvsdk::OrvNode* pRoot, orvsdk::OrvAnimStack* pTake,
               const OrvGltfWriteSettings& pSettings);

    /// Builds the binary (.glb) file that Write would write for pRoot, pTake and pSettings (whose
    /// container is ignored) into pBytes instead of a file, for callers that wrap it in another
    /// file. True on success; false, with an error naming pName in GetMessages() and pBytes left
    /// as it was, when the skeleton cannot be written. Costs what Write costs, in memory.
    bool WriteBinary(std::string& pBytes, const std::string& pName, orvsdk::OrvNode* pRoot,
                     orvsdk::OrvAnimStack* pTake, const OrvGltfWriteSettings& pSettings);

    /// The messages of the last write.
    const std::vector<orvsdk::OrvMessage>& GetMessages() const { return mMessages; }

private:
    std::vector<orvsdk::OrvMessage> mMessages;
};

} // namespace orvasf

#endif
