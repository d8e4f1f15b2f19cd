#ifndef ORVASF_PYTHON_SRC_LOADEDSCENE_H
#define ORVASF_PYTHON_SRC_LOADEDSCENE_H

#include "driver/OrvExportDriver.h"
#include "driver/OrvImportDriver.h"
#include "orvsdk/host/scene/OrvPoseEvaluator.h"

#include <cstdint>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

namespace orvasf::python {

// The frames a motion view covers: frame mFirst + i * mStep of the file for i below mCount.
struct FrameSelection
{
    int64_t mFirst = 0;
    int64_t mStep = 1;
    int64_t mCount = 0;

    int FrameAt(int64_t pIndex) const { return static_cast<int>(mFirst + pIndex * mStep); }
};

// What a local rotation is returned as.
enum class RotationKind
{
    eEuler,   // degrees, three per joint, in the joint's rotation order (first angle applies first)
    eQuat,    // w, x, y, z of a unit quaternion
    eMatrix   // the 3 x 3 rotation, row-major
};

// A successful import held for the Python objects that share it: the host scene with its nodes
// and curves, a pose evaluator of the take and one of the rest pose. Every evaluation is const
// and allocates its own working room, so several threads may evaluate one scene at a time.
class LoadedScene
{
public:
    // Takes over pImport, which must have succeeded; pSkeletonPath and pMotionPath are the ASF and
    // AMC files it was read from (both empty for BVH; the AMC empty without a motion). Costs the
    // number of nodes and curves.
    LoadedScene(OrvImportResult&& pImport, std::string pSkeletonPath, std::string pMotionPath);

    const OrvImportResult& GetImport() const { return mImport; }
    const std::string& GetSkeletonPath() const { return mSkeletonPath; }
    const orvsdk::OrvPoseEvaluator& GetPose() const { return *mPose; }
    int GetJointCount() const { return mPose->GetNodeCount(); }
    // Frames of the motion: its span of frame numbers (at most INT_MAX + 1, as frame indices are
    // ints), or 1 (the rest pose) without a motion.
    int64_t GetFrameCount() const;
    double GetFramesPerSecond() const { return mImport.mFramesPerSecond; }

    // The time of each selected frame.
    std::vector<orvsdk::OrvTime> TimesOf(const FrameSelection& pFrames) const;
    // Times from the first selected frame's to the last one's at pFramesPerSecond (above 0):
    // time i is i / pFramesPerSecond after the first, so frames between keys are interpolated
    // as the curves interpolate.
    std::vector<orvsdk::OrvTime> ResampledTimes(const FrameSelection& pFrames, double pFramesPerSecond) const;

    // Each fill writes the selected frames one after the other, joints in the evaluator's order.
    // World positions at pTimes, 3 per joint, multiplied by pScale (1 gives centimetres).
    void FillPositions(const std::vector<orvsdk::OrvTime>& pTimes, double pScale, double* pOut) const;
    // Global transforms, 16 per joint (4 x 4, row-major, translation in the last column, cm).
    void FillGlobalTransforms(const FrameSelection& pFrames, double* pOut) const;
    // Rotation part of each joint's local transform (pre-rotation and post-rotation included),
    // 3, 4 or 9 values per joint as pKind says.
    void FillLocalRotations(const FrameSelection& pFrames, RotationKind pKind, double* pOut) const;
    // The motion's channels as its file writes them: for an AMC motion "bone.dof" for every DOF of
    // every bone in the skeleton's order (the root's "order" list for the root), for BVH
    // "joint.Xposition" ... "joint.Zrotation" for every channel that has a curve.
    std::vector<std::string> GetChannelNames() const;
    // The selected frames' channel values, GetChannelNames().size() per frame: an AMC motion's
    // values as written (its file read again, the skeleton's units not applied; NaN where a frame
    // or a bone line is missing), a BVH file's values as its curves hold them (floats). Throws
    // std::runtime_error when the AMC file can no longer be read.
    void FillChannels(const FrameSelection& pFrames, double* pOut) const;
    // Each joint's rest position minus its parent's, world axes, cm; the root's rest position.
    void FillRestOffsets(double* pOut) const;
    // Rotation order of each joint, as axis letters in the order they apply ("XYZ").
    std::string GetRotationOrder(int pJoint) const;

    // Write the selected frames (evenly spaced, as every selection is) with the export driver:
    // as BVH, or as the exported skeleton's ASF file plus, when there is motion and pAmcPath is
    // not empty, its AMC file. Append the writers' messages to pMessages; false when a file
    // could not be written (an existing one is then untouched).
    bool WriteBvh(const std::string& pPath, const FrameSelection& pFrames,
                  std::vector<orvsdk::OrvMessage>& pMessages) const;
    bool WriteAsfAmc(const std::string& pAsfPath, const std::string& pAmcPath, const FrameSelection& pFrames,
                     std::vector<orvsdk::OrvMessage>& pMessages) const;

private:
    orvsdk::OrvTime TimeOf(int pFrame) const;
    OrvExportFrames ExportFrames(const FrameSelection& pFrames) const;

    OrvImportResult mImport;
    std::string mSkeletonPath;
    std::string mMotionPath;
    std::unique_ptr<orvsdk::OrvPoseEvaluator> mPose;  // the take's curves
    std::unique_ptr<orvsdk::OrvPoseEvaluator> mRest;  // an empty stack: every node's static values
    mutable std::mutex mWriting;  // the writers walk the scene's current stack, one at a time
};

} // namespace orvasf::python

#endif
