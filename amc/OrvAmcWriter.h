#ifndef ORVASF_AMC_ORVAMCWRITER_H
#define ORVASF_AMC_ORVAMCWRITER_H

#include "amc/OrvAmcExport.h"
#include "orvsdk/host/math/OrvAMatrix.h"
#include "orvsdk/host/io/OrvTextFile.h"
#include "orvsdk/host/core/OrvTime.h"
#include "orvsdk/host/math/OrvVector4.h"

#include <string>
#include <vector>

namespace orvsdk {
class OrvAsfNode;
class OrvAsfScene;
class OrvNode;
} // namespace orvsdk

namespace orvasf {

/// Which frames an AMC file gets.
struct OrvAmcWriteSettings
{
    double mFramesPerSecond = 120.0; ///< above 0
    int mFrameCount = 1;             ///< 0 or more; frame i is taken at mStartTime + i / mFramesPerSecond
    orvsdk::OrvTime mStartTime;      ///< time of the first frame
    std::string mSkeletonFileName; ///< when not empty, named on a "#!OML:ASF" first line
};

/// Writer of Acclaim AMC motion files for a skeleton exported from a host scene.
///
/// The skeleton is one that OrvAsfScene::ORVToASF built from the host root given here, and that
/// is (or will be) written as an ASF file: so the root sits at the origin with a neutral frame,
/// and every other bone has the frame, bone vector and DOFs the export gave it. Each bone is
/// bound to the host node it was made for by name, along the hierarchy (intermediate "Dummy"
/// bones and end sites have no node); the host hierarchy must not have changed since the export.
///
/// For every frame, each bone's DOF values are computed so that the ASF meaning of the skeleton
/// and the motion - a bone's world rotation is its parent's times its frame, its DOF rotation and
/// its frame's inverse; a bone starts where its parent ends, moved by its translation DOFs - puts
/// every bone's joint where the host puts its node, as far as the DOFs allow: with three rotation
/// DOFs each bound bone takes its node's world rotation exactly, and translation DOFs carry any
/// change of a joint's offset from the rest offset. Reading the file back with OrvAmcReader against
/// the written skeleton and importing it therefore reproduces the host's world joint positions.
/// A bone with DOFs but no node is written at its rest pose (zeros).
///
/// File: the optional "#!OML:ASF" line, ":FULLY-SPECIFIED", ":DEGREES", then per frame its number
/// (from 1) and one line per bone with DOFs, in depth-first pre-order, values in the bone's DOF-list
/// order; translations in the skeleton's length unit (centimetres times length unit / 2.54).
/// Numbers have nine significant digits and '.' as decimal point whatever the locale. The output
/// is streamed to a temporary file that replaces the target only when all of it was written.
class ORVAMC_API OrvAmcWriter
{
public:
    OrvAmcWriter();

    /// Writes pSkeleton's motion, evaluated from the host hierarchy below pHostRoot (not null) in
    /// its scene's current animation stack, to pPath. pSkeleton must hold a root. True when the
    /// whole file was written; false, with an error message in GetFile(), when it could not be
    /// created or written, in which case an existing file at pPath is untouched. Costs the frame
    /// count times the bone count; memory stays bounded by the bone count.
    bool Write(const char* pPath, const orvsdk::OrvAsfScene& pSkeleton, orvsdk::OrvNode* pHostRoot,
               const OrvAmcWriteSettings& pSettings);

    /// The messages of the last write.
    const orvsdk::OrvTextFile& GetFile() const { return mFile; }

private:
    // A bone as the ASF file holds it, with its host node.
    struct Bone
    {
        const orvsdk::OrvAsfNode* mBone;
        orvsdk::OrvNode* mNode;    // null for a bone made for no host node
        int mParent;               // index in mBones; -1 for the root
        int mNodeParent;           // nearest ancestor with a node; -1 when none
        orvsdk::OrvAMatrix mFrame; // the bone's axis frame in world axes
        orvsdk::OrvAMatrix mFrameInverse;
        orvsdk::OrvVector4 mVector; // joint to end, world axes at rest
        int mOrder;                 // rotation order of the DOF list
    };

    // Where a bone is in one frame, as a reader of the file will compute it.
    struct Pose
    {
        orvsdk::OrvAMatrix mGlobal;        // the host node's global transform (bound bones only)
        orvsdk::OrvAMatrix mWorldRotation; // the bone's world rotation
        orvsdk::OrvVector4 mEnd;           // world position of the bone's end
    };

    void CollectBones(const orvsdk::OrvAsfNode* pBone, orvsdk::OrvNode* pNode, int pParent, int pNodeParent);
    void AddBone(const orvsdk::OrvAsfNode* pBone, orvsdk::OrvNode* pNode, int pParent, int pNodeParent);
    void AppendFrame(orvsdk::OrvTime pTime, std::string& pText);
    void PoseBone(size_t pIndex, orvsdk::OrvTime pTime, std::string& pText);

    orvsdk::OrvTextFile mFile;
    std::vector<Bone> mBones; // depth-first pre-order, the root first
    std::vector<Pose> mPoses; // one per bone, the current frame's
    double mTranslationFactor = 1.0;
};

} // namespace orvasf

#endif
