#include "bvh/OrvBvhWriter.h"

#include "bvh/OrvBvhChannels.h"
#include "orvsdk/host/io/OrvNumberText.h"
#include "orvsdk/host/math/OrvAMatrix.h"
#include "orvsdk/host/anim/OrvAnimCurveNode.h"
#include "orvsdk/host/scene/OrvNode.h"

#include <algorithm>
#include <cstring>

namespace orvasf {

namespace {

// Digits of every number written: enough for a float's value to survive the round trip.
constexpr int kSignificantDigits = 9;

using orvsdk::OrvNode;
using orvsdk::OrvVector4;

const char kEndSuffix[] = "_End";

// The node's name as one token: blanks become '_'.
std::string TokenName(const OrvNode* pNode)
{
    std::string lName = pNode->GetName();
    for (char& lChar : lName)
        if (lChar == ' ' || lChar == '\t' || lChar == '\r' || lChar == '\n') lChar = '_';
    return lName.empty() ? "_" : lName;
}

bool HasSkeletonChildren(const OrvNode* pNode)
{
    for (int i = 0; i < pNode->GetChildCount(false); ++i)
        if (pNode->GetChild(i)->GetSkeleton()) return true;
    return false;
}

// An end node as node building makes it: named "..._End", with no joints below it.
bool IsEndNode(const OrvNode* pNode)
{
    const size_t lLength = std::strlen(pNode->GetName());
    const size_t lSuffix = sizeof kEndSuffix - 1;
    return lLength >= lSuffix && std::strcmp(pNode->GetName() + lLength - lSuffix, kEndSuffix) == 0 &&
           !HasSkeletonChildren(pNode);
}

bool TranslationAnimated(OrvNode* pNode)
{
    const orvsdk::OrvAnimCurveNode* lCurveNode = pNode->LclTranslation.GetCurveNode(nullptr, false);
    return lCurveNode && lCurveNode->IsAnimated();
}

// The order in which the host evaluates the node's rotation.
orvsdk::OrvEuler::EOrder EvaluatedOrder(const OrvNode* pNode)
{
    orvsdk::OrvEuler::EOrder lOrder = orvsdk::OrvEuler::eOrderXYZ;
    pNode->GetRotationOrder(OrvNode::eSourcePivot, lOrder);
    const bool lValid = lOrder >= orvsdk::OrvEuler::eOrderXYZ && lOrder <= orvsdk::OrvEuler::eOrderZYX;
    return pNode->GetRotationActive() && lValid ? lOrder : orvsdk::OrvEuler::eOrderXYZ;
}

} // namespace

OrvBvhWriter::OrvBvhWriter() : mFile("BVH", " \t", "", true, false) {}

bool OrvBvhWriter::Write(const char* pPath, orvsdk::OrvNode* pRoot, const OrvBvhWriteSettings& pSettings)
{
    mJoints.clear();
    mRestTime = pSettings.mStartTime;
    if (!mFile.Create(pPath)) return false;
    const bool lWritten = mFile.Print(0, "HIERARCHY\n") && WriteJoint(pRoot, 0, true) && WriteMotion(pRoot, pSettings);
    // Close must run either way: it removes the temporary file of a failed write.
    const bool lClosed = mFile.Close();
    mJoints.clear();
    return lWritten && lClosed;
}

bool OrvBvhWriter::WriteJoint(orvsdk::OrvNode* pNode, int pLevel, bool pIsRoot)
{
    const Joint lJoint{pNode, pIsRoot || TranslationAnimated(pNode), EvaluatedOrder(pNode)};
    const OrvVector4 lOffset =
        lJoint.mHasPosition ? pNode->GetRotationOffset(OrvNode::eSourcePivot) : RestOffset(pNode);
    if (!mFile.Print(pLevel, "%s %s\n", pIsRoot ? "ROOT" : "JOINT", TokenName(pNode).c_str()) ||
        !mFile.Print(pLevel, "{\n") ||
        !mFile.Print(pLevel + 1, "OFFSET %.9g %.9g %.9g\n", lOffset[0], lOffset[1], lOffset[2]) ||
        !WriteChannels(lJoint, pLevel + 1))
        return false;
    mJoints.push_back(lJoint);

    bool lHasSkeletonChild = false;
    for (int i = 0; i < pNode->GetChildCount(false); ++i)
    {
        OrvNode* lChild = pNode->GetChild(i);
        if (!lChild->GetSkeleton()) continue;
        lHasSkeletonChild = true;
        const bool lWritten =
            IsEndNode(lChild) ? WriteEndSite(RestOffset(lChild), pLevel + 1) : WriteJoint(lChild, pLevel + 1, false);
        if (!lWritten) return false;
    }
    // A joint with nothing below it ends at itself: the host keeps no bone length.
    if (!lHasSkeletonChild && !WriteEndSite(OrvVector4(), pLevel + 1)) return false;
    return mFile.Print(pLevel, "}\n");
}

orvsdk::OrvVector4 OrvBvhWriter::RestOffset(orvsdk::OrvNode* pNode) const
{
    return pNode->GetRotationOffset(OrvNode::eSourcePivot) + pNode->EvaluateLocalTranslation(mRestTime);
}

bool OrvBvhWriter::WriteChannels(const Joint& pJoint, int pLevel)
{
    std::string lLine = pJoint.mHasPosition ? "CHANNELS 6" : "CHANNELS 3";
    if (pJoint.mHasPosition)
        for (int lChannel = eBvhXposition; lChannel <= eBvhZposition; ++lChannel)
            lLine.append(" ").append(BvhChannelName(lChannel));
    int lAxes[3];
    BvhAxesFromHostOrder(pJoint.mOrder, lAxes);
    for (int lAxis : lAxes) lLine.append(" ").append(BvhChannelName(eBvhXrotation + lAxis));
    return mFile.Print(pLevel, "%s\n", lLine.c_str());
}

bool OrvBvhWriter::WriteEndSite(const orvsdk::OrvVector4& pOffset, int pLevel)
{
    return mFile.Print(pLevel, "End Site\n") && mFile.Print(pLevel, "{\n") &&
           mFile.Print(pLevel + 1, "OFFSET %.9g %.9g %.9g\n", pOffset[0], pOffset[1], pOffset[2]) &&
           mFile.Print(pLevel, "}\n");
}

bool OrvBvhWriter::WriteMotion(orvsdk::OrvNode* pRoot, const OrvBvhWriteSettings& pSettings)
{
    if (!mFile.Print(0, "MOTION\nFrames: %d\nFrame Time: %.9g\n", pSettings.mFrameCount,
                     1.0 / pSettings.mFramesPerSecond))
        return false;
    const orvsdk::OrvPoseEvaluator lEvaluator(pRoot);
    const std::vector<OrvNode*>& lNodes = lEvaluator.GetNodes();
    for (Joint& lJoint : mJoints)
        lJoint.mEvaluatorIndex = static_cast<int>(std::find(lNodes.begin(), lNodes.end(), lJoint.mNode) - lNodes.begin());
    std::vector<orvsdk::OrvAMatrix> lLocals(lNodes.size());
    std::string lLine;
    for (int lFrame = 0; lFrame < pSettings.mFrameCount; ++lFrame)
    {
        const orvsdk::OrvTime lTime(pSettings.mStartTime.Get() +
                                    orvsdk::OrvTime::FromFrame(lFrame, pSettings.mFramesPerSecond).Get());
        lLine.clear();
        AppendFrame(lEvaluator, lTime, lLocals, lLine);
        if (!mFile.Print(0, "%s\n", lLine.c_str())) return false;
    }
    return true;
}

void OrvBvhWriter::AppendFrame(const orvsdk::OrvPoseEvaluator& pEvaluator, orvsdk::OrvTime pTime,
                               std::vector<orvsdk::OrvAMatrix>& pLocals, std::string& pLine) const
{
    pEvaluator.EvaluateLocals(pTime, pLocals.data());
    for (const Joint& lJoint : mJoints)
    {
        const orvsdk::OrvAMatrix& lLocal = pLocals[static_cast<size_t>(lJoint.mEvaluatorIndex)];
        if (lJoint.mHasPosition)
        {
            const OrvVector4 lTranslation = pEvaluator.EvaluateLocalTranslation(lJoint.mEvaluatorIndex, pTime);
            for (int a = 0; a < 3; ++a)
            {
                orvsdk::OrvAppendGeneral(pLine, lTranslation[a], kSignificantDigits);
                pLine += ' ';
            }
        }
        // Channels list the order's angles from the last applied to the first.
        const OrvVector4 lAngles = lLocal.GetR(lJoint.mOrder);
        for (int k = 2; k >= 0; --k)
        {
            orvsdk::OrvAppendGeneral(pLine, lAngles[k], kSignificantDigits);
            pLine += ' ';
        }
    }
    if (!pLine.empty()) pLine.pop_back();
}

} // namespace orvasf
