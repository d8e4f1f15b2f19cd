#ifndef ORVSDK_TESTS_SUPPORT_REFERENCEKINEMATICS_H
#define ORVSDK_TESTS_SUPPORT_REFERENCEKINEMATICS_H

// An independent forward kinematics of Acclaim ASF/AMC data, for checking what the module builds.
//
// Only the raw description of each bone is taken from a read OrvAsfScene (name, parent, unit
// direction, length, axis angles and their order, DOF list, units); everything else, the
// rotation maths included, is computed here from what the ASF/AMC data mean:
//   - a bone's frame C is its axis angles applied in its axis order (first named axis first);
//   - its motion rotation M is its DOF angles multiplied in DOF-list order, each later DOF from
//     the left, applied in the bone's frame: the rotation in world axes is C * M * C^-1;
//   - the world rotation of a bone is its parent's world rotation times its own C * M * C^-1;
//   - a bone starts where its parent ends and ends at its start plus its world rotation applied to
//     direction * length; translation DOFs move the start along the bone's frame C, turned by the
//     parent's motion; the root starts at its position plus its translation DOFs, in world axes;
//   - translations and the root position are in the file's length unit and become centimetres,
//     like bone lengths, through 2.54 / length unit.
// A small AMC reader and a comparison with host node world positions complete the check.

#include "orvsdk/host/math/OrvAMatrix.h"
#include "orvsdk/host/scene/OrvNode.h"
#include "orvsdk/host/core/OrvTime.h"
#include "orvsdk/skeleton/OrvAsfNode.h"
#include "orvsdk/skeleton/OrvAsfScene.h"

#include "HostSceneSupport.h"
#include "Math3.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <cmath>
#include <fstream>
#include <sstream>
#include <string>
#include <unordered_map>
#include <vector>

namespace orvsdk {
namespace reference {

// --- Small 3D maths ------------------------------------------------------------------------------

using math3::Add;
using math3::Apply;
using math3::AxisRotation;
using math3::Distance;
using math3::Identity;
using math3::Mat3;
using math3::Multiply;
using math3::Scale;
using math3::Transpose;
using math3::Vec3;

// The axes of the rotation orders XYZ, XZY, YZX, YXZ, ZXY, ZYX (the reader's order codes 0 to 5),
// in the sequence in which they apply.
inline const int* AxisSequence(int pOrder)
{
    static const int sSequences[6][3] = {{0, 1, 2}, {0, 2, 1}, {1, 2, 0}, {1, 0, 2}, {2, 0, 1}, {2, 1, 0}};
    return sSequences[pOrder >= 0 && pOrder < 6 ? pOrder : 0];
}

// X, Y, Z angles applied one axis after the other in pOrder's sequence.
inline Mat3 EulerRotation(const OrvVector4& pAngles, int pOrder)
{
    const int* lAxes = AxisSequence(pOrder);
    Mat3 lR = Identity();
    for (int k = 0; k < 3; ++k) lR = Multiply(AxisRotation(lAxes[k], pAngles[lAxes[k]]), lR);
    return lR;
}

inline Vec3 ToVec3(const OrvVector4& pV)
{
    return Vec3{pV[0], pV[1], pV[2]};
}

// The 3x3 part of a host matrix.
inline Mat3 RotationOf(const OrvAMatrix& pMatrix)
{
    Mat3 lR{};
    for (int r = 0; r < 3; ++r)
        for (int c = 0; c < 3; ++c) lR[r][c] = pMatrix(r, c);
    return lR;
}

// --- Skeleton ------------------------------------------------------------------------------------

struct Bone
{
    std::string mName;
    int mParent = -1;           // index in Skeleton::mBones; -1 for the root
    Vec3 mVector{};             // rest bone vector in world axes, centimetres
    Mat3 mFrame = Identity();   // C
    std::vector<int> mDofs;     // tx 0, ty 1, tz 2, rz 3, ry 4, rx 5, in list order
    int mFirstValue = 0;        // index of the bone's first value in a flat pose
};

struct Skeleton
{
    std::vector<Bone> mBones;   // parents before children; the root first
    Vec3 mRootPosition{};       // centimetres
    double mLengthFactor = 1.0; // file length unit to centimetres
    int mValueCount = 0;        // size of a flat pose: every bone's DOF values, bone by bone
    std::unordered_map<std::string, int> mIndex;  // bone name to index
};

inline void DescribeBone(const OrvAsfNode& pBone, int pParent, Skeleton& pSkeleton)
{
    Bone lBone;
    lBone.mName = pBone.mName;
    lBone.mParent = pParent;
    lBone.mVector = Scale(ToVec3(pBone.mDirection), pBone.mLength);
    lBone.mFrame = EulerRotation(pBone.mAxis, pBone.mAxisOrder);
    lBone.mDofs.assign(pBone.mDof, pBone.mDof + pBone.mDofCount);
    lBone.mFirstValue = pSkeleton.mValueCount;
    pSkeleton.mValueCount += pBone.mDofCount;
    const int lIndex = static_cast<int>(pSkeleton.mBones.size());
    pSkeleton.mIndex.emplace(lBone.mName, lIndex);
    pSkeleton.mBones.push_back(lBone);
    for (int i = 0; i < pBone.mChildren.GetCount(); ++i) DescribeBone(*pBone.mChildren[i], lIndex, pSkeleton);
}

// The raw description of a skeleton as read (both set-up flags clear, so that the root keeps its
// file position), with no dummy removed.
inline Skeleton DescribeSkeleton(const OrvAsfScene& pScene)
{
    Skeleton lSkeleton;
    lSkeleton.mLengthFactor = pScene.mLengthUnit > 0.0 ? 2.54 / pScene.mLengthUnit : 1.0;
    lSkeleton.mRootPosition = Scale(ToVec3(pScene.mRoot->mPosition), lSkeleton.mLengthFactor);
    DescribeBone(*pScene.mRoot, -1, lSkeleton);
    return lSkeleton;
}

// --- Pose ----------------------------------------------------------------------------------------

struct BonePose
{
    Vec3 mStart{};  // the joint
    Vec3 mEnd{};    // the joint plus the posed bone vector
};

// Every bone's joint and end in world space for one flat pose (pValues holds the skeleton's
// mValueCount DOF values, in file units and degrees; null means the rest pose).
inline std::vector<BonePose> Pose(const Skeleton& pSkeleton, const double* pValues)
{
    std::vector<BonePose> lPoses(pSkeleton.mBones.size());
    std::vector<Mat3> lWorld(pSkeleton.mBones.size());
    for (size_t b = 0; b < pSkeleton.mBones.size(); ++b)
    {
        const Bone& lBone = pSkeleton.mBones[b];
        Mat3 lMotion = Identity();
        Vec3 lTranslation{};
        for (size_t i = 0; i < lBone.mDofs.size(); ++i)
        {
            const double lValue = pValues ? pValues[lBone.mFirstValue + static_cast<int>(i)] : 0.0;
            const int lCode = lBone.mDofs[i];
            if (lCode <= 2)
                lTranslation[lCode] += lValue * pSkeleton.mLengthFactor;
            else
                lMotion = Multiply(AxisRotation(5 - lCode, lValue), lMotion);
        }
        const Mat3 lLocal = Multiply(Multiply(lBone.mFrame, lMotion), Transpose(lBone.mFrame));
        if (lBone.mParent < 0)
        {
            lWorld[b] = lLocal;
            lPoses[b].mStart = Add(pSkeleton.mRootPosition, lTranslation);
        }
        else
        {
            const Mat3& lParentWorld = lWorld[lBone.mParent];
            lWorld[b] = Multiply(lParentWorld, lLocal);
            const Vec3 lMoved = Apply(lParentWorld, Apply(lBone.mFrame, lTranslation));
            lPoses[b].mStart = Add(lPoses[lBone.mParent].mEnd, lMoved);
        }
        lPoses[b].mEnd = Add(lPoses[b].mStart, Apply(lWorld[b], lBone.mVector));
    }
    return lPoses;
}

// --- Motion --------------------------------------------------------------------------------------

struct Frame
{
    int mNumber = 0;
    std::vector<double> mValues;  // a flat pose
};

struct Motion
{
    std::vector<Frame> mFrames;
    bool mRadians = false;
};

// Reads an AMC file for pSkeleton. A bone missing from a frame keeps its values of the frame
// before (the last key of its curves holds on); lines of unknown bones are ignored. Values are
// stored as written; rotations are turned into degrees under ":RADIANS". Empty on a missing file.
inline Motion ReadMotion(const std::string& pPath, const Skeleton& pSkeleton)
{
    Motion lMotion;
    std::ifstream lFile(pPath, std::ios::binary);
    std::vector<double> lCurrent(static_cast<size_t>(pSkeleton.mValueCount), 0.0);
    std::string lLine;
    while (std::getline(lFile, lLine))
    {
        std::istringstream lTokens(lLine);
        std::string lFirst;
        if (!(lTokens >> lFirst) || lFirst[0] == '#') continue;
        if (lFirst[0] == ':')
        {
            if (lFirst.rfind(":RADIANS", 0) == 0) lMotion.mRadians = true;
            continue;
        }
        if (std::isdigit(static_cast<unsigned char>(lFirst[0])))
        {
            if (!lMotion.mFrames.empty()) lMotion.mFrames.back().mValues = lCurrent;
            lMotion.mFrames.push_back(Frame{std::stoi(lFirst), {}});
            continue;
        }
        const auto lFound = pSkeleton.mIndex.find(lFirst);
        if (lFound == pSkeleton.mIndex.end()) continue;
        const Bone& lBone = pSkeleton.mBones[lFound->second];
        for (size_t i = 0; i < lBone.mDofs.size(); ++i)
        {
            double lValue = 0.0;
            lTokens >> lValue;
            if (lMotion.mRadians && lBone.mDofs[i] > 2) lValue *= 180.0 / 3.14159265358979323846;
            lCurrent[lBone.mFirstValue + i] = lValue;
        }
    }
    if (!lMotion.mFrames.empty()) lMotion.mFrames.back().mValues = lCurrent;
    return lMotion;
}

// --- Host side -----------------------------------------------------------------------------------

// The largest distance at pTime between the world positions of the host nodes below pRoot and
// pSkeleton's pose of pValues (null: the rest pose): each bone's node against the bone's joint,
// each "_End" node against the end of its leaf bone of positive length. Infinity when the nodes
// are not exactly those.
inline double LargestDistanceToPose(OrvNode* pRoot, OrvTime pTime, const Skeleton& pSkeleton, const double* pValues)
{
    const auto lHost = hosttest::WorldPositions(pRoot, pTime);
    const std::vector<BonePose> lPoses = Pose(pSkeleton, pValues);
    std::vector<bool> lHasChildren(pSkeleton.mBones.size(), false);
    for (const Bone& lBone : pSkeleton.mBones)
        if (lBone.mParent >= 0) lHasChildren[lBone.mParent] = true;
    double lLargest = 0.0;
    size_t lExpectedNodes = 0;
    const auto lCompare = [&](const std::string& pName, const Vec3& pExpected) {
        ++lExpectedNodes;
        const auto lFound = lHost.find(pName);
        lLargest = lFound == lHost.end() ? HUGE_VAL : std::max(lLargest, Distance(lFound->second, pExpected));
    };
    for (size_t b = 0; b < pSkeleton.mBones.size(); ++b)
    {
        const Bone& lBone = pSkeleton.mBones[b];
        lCompare(lBone.mName, lPoses[b].mStart);
        if (!lHasChildren[b] && Distance(lBone.mVector, Vec3{}) > 0.0) lCompare(lBone.mName + "_End", lPoses[b].mEnd);
    }
    return lHost.size() == lExpectedNodes ? lLargest : HUGE_VAL;
}

} // namespace reference
} // namespace orvsdk

#endif
