#ifndef ORVASF_TESTS_SUPPORT_BVHREFERENCE_H
#define ORVASF_TESTS_SUPPORT_BVHREFERENCE_H

// An independent reading of BVH files, for checking what the BVH reader builds and what the
// writers produce. Nothing here calls module or host maths: the file is tokenised and posed with
// the standard BVH meaning:
//   - a joint's local transform is the translation by OFFSET plus its position channels, then
//     its rotation channels multiplied in the order they are listed (the first listed is the
//     leftmost factor; column vectors);
//   - a joint's world transform is its parent's times its local one; an End Site sits at its
//     OFFSET in its joint's frame.

#include "orvsdk/host/math/OrvAMatrix.h"
#include "orvsdk/host/scene/OrvNode.h"
#include "orvsdk/host/core/OrvTime.h"
#include "HostSceneSupport.h"
#include "Math3.h"
#include "ScratchFiles.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <sstream>
#include <string>
#include <unordered_map>
#include <vector>

namespace bvhtest {

using math3::Add;
using math3::Apply;
using math3::AxisRotation;
using math3::Distance;
using math3::Mat3;
using math3::Multiply;
using math3::Vec3;

struct Joint
{
    std::string mName; // End Sites: the joint's name followed by "_End"
    int mParent = -1;
    bool mEndSite = false;
    Vec3 mOffset{};
    std::vector<std::string> mChannels;
    int mFirstValue = 0;
};

struct Motion
{
    std::vector<Joint> mJoints; // file order
    int mChannelCount = 0;
    double mFrameTime = 0.0;
    std::vector<std::vector<double>> mFrames;
    bool mValid = false; // false when the text could not be read
};

// Reads BVH text: blanks, tabs and line ends separate tokens; frame lines are read by line.
inline Motion Parse(const std::string& pText)
{
    Motion lMotion;
    std::string lText = pText;
    for (char& lChar : lText)
        if (lChar == '\r' || lChar == '\t') lChar = ' ';
    std::istringstream lLines(lText);
    std::string lLine;
    std::vector<int> lOpen; // indices of the joints whose braces are open
    int lPending = -1;      // the joint whose "{" comes next
    while (std::getline(lLines, lLine))
    {
        std::istringstream lTokens(lLine);
        std::string lWord;
        if (!(lTokens >> lWord)) continue;
        if (lWord == "ROOT" || lWord == "JOINT" || lWord == "End")
        {
            Joint lJoint;
            lJoint.mParent = lOpen.empty() ? -1 : lOpen.back();
            lJoint.mEndSite = lWord == "End";
            if (lJoint.mEndSite)
                lJoint.mName = lMotion.mJoints[static_cast<size_t>(lJoint.mParent)].mName + "_End";
            else
                lTokens >> lJoint.mName;
            lPending = static_cast<int>(lMotion.mJoints.size());
            lMotion.mJoints.push_back(lJoint);
        }
        else if (lWord == "{")
            lOpen.push_back(lPending);
        else if (lWord == "}")
            lOpen.pop_back();
        else if (lWord == "OFFSET")
        {
            Vec3& lOffset = lMotion.mJoints[static_cast<size_t>(lOpen.back())].mOffset;
            lTokens >> lOffset[0] >> lOffset[1] >> lOffset[2];
        }
        else if (lWord == "CHANNELS")
        {
            Joint& lJoint = lMotion.mJoints[static_cast<size_t>(lOpen.back())];
            int lCount = 0;
            lTokens >> lCount;
            lJoint.mChannels.resize(static_cast<size_t>(lCount));
            for (std::string& lName : lJoint.mChannels) lTokens >> lName;
            lJoint.mFirstValue = lMotion.mChannelCount;
            lMotion.mChannelCount += lCount;
        }
        else if (lWord == "Frame")
        {
            std::string lTime;
            lTokens >> lTime >> lMotion.mFrameTime;
        }
        else if (lWord != "HIERARCHY" && lWord != "MOTION" && lWord.rfind("Frames", 0) != 0)
        {
            std::vector<double> lValues{std::stod(lWord)};
            double lValue = 0.0;
            while (lTokens >> lValue) lValues.push_back(lValue);
            if (static_cast<int>(lValues.size()) != lMotion.mChannelCount) return lMotion;
            lMotion.mFrames.push_back(lValues);
        }
    }
    lMotion.mValid = lOpen.empty() && !lMotion.mJoints.empty() && lMotion.mFrameTime > 0.0;
    return lMotion;
}

// World position of every joint and End Site of pMotion at frame pFrame, in file order.
inline std::vector<Vec3> WorldPositions(const Motion& pMotion, size_t pFrame)
{
    const std::vector<double>& lValues = pMotion.mFrames[pFrame];
    std::vector<Vec3> lPositions(pMotion.mJoints.size());
    std::vector<Mat3> lRotations(pMotion.mJoints.size());
    for (size_t j = 0; j < pMotion.mJoints.size(); ++j)
    {
        const Joint& lJoint = pMotion.mJoints[j];
        Vec3 lTranslation = lJoint.mOffset;
        Mat3 lRotation = AxisRotation(0, 0.0);
        for (size_t c = 0; c < lJoint.mChannels.size(); ++c)
        {
            const std::string& lName = lJoint.mChannels[c];
            const int lAxis = lName[0] - 'X';
            const double lValue = lValues[static_cast<size_t>(lJoint.mFirstValue) + c];
            if (lName.find("position") != std::string::npos)
                lTranslation[static_cast<size_t>(lAxis)] += lValue;
            else
                lRotation = Multiply(lRotation, AxisRotation(lAxis, lValue));
        }
        if (lJoint.mParent < 0)
        {
            lPositions[j] = lTranslation;
            lRotations[j] = lRotation;
            continue;
        }
        const size_t lParent = static_cast<size_t>(lJoint.mParent);
        lPositions[j] = Add(lPositions[lParent], Apply(lRotations[lParent], lTranslation));
        lRotations[j] = Multiply(lRotations[lParent], lRotation);
    }
    return lPositions;
}

using orvsdk::hosttest::PositionMap;

// The position named pName; null when there is none.
inline const Vec3* Find(const PositionMap& pPositions, const std::string& pName)
{
    const auto lFound = pPositions.find(pName);
    return lFound == pPositions.end() ? nullptr : &lFound->second;
}

// The host position of the node named like entry pJoint of pMotion.
inline const Vec3* NodeNamed(const Motion& pMotion, size_t pJoint, const PositionMap& pHost)
{
    return Find(pHost, pMotion.mJoints[pJoint].mName);
}

// As NodeNamed; an End Site without a node of its own stands at its joint's node, where the
// writers put an End Site of zero offset.
inline const Vec3* NodeOrJointOf(const Motion& pMotion, size_t pJoint, const PositionMap& pHost)
{
    const Joint& lJoint = pMotion.mJoints[pJoint];
    const Vec3* lNode = Find(pHost, lJoint.mName);
    if (lNode || !lJoint.mEndSite) return lNode;
    return Find(pHost, pMotion.mJoints[static_cast<size_t>(lJoint.mParent)].mName);
}

// Raises pLargest to the largest distance at frame pFrame between each joint and End Site of
// pMotion, posed with the BVH meaning, and the host position pFind(pMotion, entry, pHost) gives
// for it; NaN when a distance is NaN. A fatal failure when pFind gives no position.
template <typename FindNode>
void CompareFrame(const Motion& pMotion, size_t pFrame, const PositionMap& pHost, FindNode pFind, double& pLargest)
{
    const std::vector<Vec3> lPosed = WorldPositions(pMotion, pFrame);
    for (size_t j = 0; j < pMotion.mJoints.size(); ++j)
    {
        const Vec3* lNode = pFind(pMotion, j, pHost);
        ASSERT_NE(lNode, nullptr) << "no host node for " << pMotion.mJoints[j].mName << " at frame " << pFrame;
        const double lDistance = Distance(*lNode, lPosed[j]);
        if (!(lDistance <= pLargest)) pLargest = lDistance;
    }
}

// The largest distance, as CompareFrame measures it, over every frame of pMotion with the host
// below pTop keyed at pFramesPerSecond.
template <typename FindNode = decltype(&NodeNamed)>
double LargestDifference(const Motion& pMotion, orvsdk::OrvNode* pTop, double pFramesPerSecond,
                         FindNode pFind = &NodeNamed)
{
    EXPECT_TRUE(pMotion.mValid && !pMotion.mFrames.empty());
    double lLargest = 0.0;
    for (size_t f = 0; f < pMotion.mFrames.size() && !::testing::Test::HasFatalFailure(); ++f)
    {
        const orvsdk::OrvTime lTime = orvsdk::OrvTime::FromFrame(static_cast<double>(f), pFramesPerSecond);
        CompareFrame(pMotion, f, orvsdk::hosttest::WorldPositions(pTop, lTime), pFind, lLargest);
    }
    return lLargest;
}

// --- A small file for the tests of readers and tools --------------------------------------------

// Hips (ROOT, six channels, rotations listed Z X Y)
// +-- Chest (rotations X Y Z)
// |   `-- End Site
// `-- Leg (rotations Y and Z only, with position channels between them)
//     `-- End Site
inline const char* const kSmallBvh =
    "HIERARCHY\nROOT Hips\n{\n  OFFSET 1 2 3\n"                                                  // lines 1-4
    "  CHANNELS 6 Xposition Yposition Zposition Zrotation Xrotation Yrotation\n"                // 5
    "  JOINT Chest\n  {\n    OFFSET 0 10 0\n    CHANNELS 3 Xrotation Yrotation Zrotation\n"  // 6-9
    "    End Site\n    {\n      OFFSET 0 5 0\n    }\n  }\n"                                      // 10-14
    "  JOINT Leg\n  {\n    OFFSET 3 -1 0\n"                                                      // 15-17
    "    CHANNELS 5 Yrotation Xposition Zrotation Yposition Zposition\n"                         // 18
    "    End Site\n    {\n      OFFSET 0 -8 0\n    }\n  }\n}\n"                                 // 19-24
    "MOTION\nFrames: 3\nFrame Time: 0.04\n"                                                      // 25-27
    "0 0 0 0 0 0 0 0 0 0 0 0 0 0\n5 -2 7.5 30 -45 60 10 20 -30 15 1 -25 2 3\n"                    // 28-29
    "-3 1 2 170 80 -120 -90 45 135 -60 -1 88 0.5 -4\n";                                          // 30

} // namespace bvhtest

#endif
