#ifndef ORVASF_BVH_ORVBVHWRITER_H
#define ORVASF_BVH_ORVBVHWRITER_H

#include "bvh/OrvBvhExport.h"
#include "orvsdk/host/math/OrvEuler.h"
#include "orvsdk/host/io/OrvTextFile.h"
#include "orvsdk/host/scene/OrvPoseEvaluator.h"
#include "orvsdk/host/core/OrvTime.h"
#include "orvsdk/host/math/OrvVector4.h"

#include <string>
#include <vector>

namespace orvsdk {
class OrvNode;
}

namespace orvasf {

/// Which frames a BVH file gets.
struct OrvBvhWriteSettings
{
    double mFramesPerSecond = 120.0; ///< above 0; "Frame Time" is its inverse
    int mFrameCount = 1;             ///< 0 or more; frame i is taken at mStartTime + i / mFramesPerSecond
    orvsdk::OrvTime mStartTime;      ///< also the time at which constant offsets are read
};

/// Writer of a host skeleton as a BVH file.
///
/// HIERARCHY: the given node is the ROOT; below it, every child that carries a skeleton
/// attribute, in child order, is a JOINT (children without one are left out with everything below
/// them). A child named "..._End" without skeleton children is an End Site; a joint without
/// skeleton children and without such a node gets an End Site at its own joint (offset zero), since
/// the host records no bone length. Names are written as they stand, with blanks turned into '_'
/// so that each stays one token.
///
/// Channels: the ROOT, and every joint whose local translation is animated in the current stack,
/// gets Xposition Yposition Zposition; every joint gets three rotation channels for its host
/// rotation order, listed outermost first (X, Y, Z order gives "Zrotation Yrotation Xrotation"),
/// or for X, Y, Z while its rotation is not active.
///
/// Values: OFFSET is the rotation offset, plus the local translation at the start time for a
/// joint without position channels; position channels carry the local translation of each
/// frame. The rotation of each frame is the node's full local rotation (pre-rotation, animated
/// rotation and inverse post-rotation, as the host composes them) decomposed in the joint's
/// order, so the file needs no pre-rotation. Scaling is not written. World positions are
/// relative to the ROOT node's parent. Numbers are printed with nine significant digits,
/// independently of the locale.
///
/// Output is streamed frame by frame to a temporary file that replaces the target only when all
/// of it was written (see orvsdk::OrvTextFile).
class ORVBVH_API OrvBvhWriter
{
public:
    OrvBvhWriter();

    /// Writes the skeleton below pRoot (not null), evaluated in its scene's current animation
    /// stack, to pPath. True when the whole file was written; false, with an error message in
    /// GetFile(), when it could not be created or written, in which case an existing file at
    /// pPath is untouched. Costs one whole-pose evaluation per frame; memory stays bounded by
    /// the node count.
    bool Write(const char* pPath, orvsdk::OrvNode* pRoot, const OrvBvhWriteSettings& pSettings);

    /// The messages of the last write.
    const orvsdk::OrvTextFile& GetFile() const { return mFile; }

private:
    // A joint whose channels appear on the frame lines, in file order.
    struct Joint
    {
        orvsdk::OrvNode* mNode;
        bool mHasPosition;
        orvsdk::OrvEuler::EOrder mOrder;
        int mEvaluatorIndex = -1;  // the node's index among the pose evaluator's nodes
    };

    bool WriteJoint(orvsdk::OrvNode* pNode, int pLevel, bool pIsRoot);
    // Where the node's joint sits in its parent's frame at the start time.
    orvsdk::OrvVector4 RestOffset(orvsdk::OrvNode* pNode) const;
    bool WriteChannels(const Joint& pJoint, int pLevel);
    bool WriteEndSite(const orvsdk::OrvVector4& pOffset, int pLevel);
    bool WriteMotion(orvsdk::OrvNode* pRoot, const OrvBvhWriteSettings& pSettings);
    void AppendFrame(const orvsdk::OrvPoseEvaluator& pEvaluator, orvsdk::OrvTime pTime,
                     std::vector<orvsdk::OrvAMatrix>& pLocals, std::string& pLine) const;

    orvsdk::OrvTextFile mFile;
    std::vector<Joint> mJoints;
    orvsdk::OrvTime mRestTime;
};

} // namespace orvasf

#endif
