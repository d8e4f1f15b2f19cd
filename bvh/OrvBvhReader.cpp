#include "bvh/OrvBvhReader.h"

#include "bvh/OrvBvhChannels.h"
#include "orvsdk/host/anim/OrvAnimCurve.h"
#include "orvsdk/host/anim/OrvAnimCurveKey.h"
#include "orvsdk/host/anim/OrvAnimCurveNode.h"
#include "orvsdk/host/scene/OrvNode.h"
#include "orvsdk/host/scene/OrvScene.h"
#include "orvsdk/host/scene/OrvSkeleton.h"
#include "orvsdk/host/core/OrvTime.h"

#include <charconv>
#include <cmath>
#include <cstring>

namespace orvasf {

namespace {

using orvsdk::TextToken;

// Structure words; a word's code is its index.
enum EWord
{
    eHierarchy,
    eRootWord,
    eJointWord,
    eEndWord,
    eSiteWord,
    eOffsetWord,
    eChannelsWord,
    eOpenBrace,
    eCloseBrace,
    eMotionWord
};

const TextToken sWords[] = {{"HIERARCHY", 0}, {"ROOT", 0}, {"JOINT", 0}, {"End", 0},    {"Site", 0}, {"OFFSET", 0},
                            {"CHANNELS", 0},  {"{", 0},    {"}", 0},     {"MOTION", 0}, {"", 0}};

// Longest piece of unexpected text quoted in a message.
constexpr int kQuoted = 64;

char LowerAscii(char pChar)
{
    return pChar >= 'A' && pChar <= 'Z' ? static_cast<char>(pChar - 'A' + 'a') : pChar;
}

// When pLine starts with pLabel (ASCII case ignored) followed by a colon, with or without blanks
// around it, pValue receives the text after the colon and its blanks.
bool SplitLabeledLine(const std::string& pLine, const char* pLabel, std::string& pValue)
{
    const size_t lLabelLength = std::strlen(pLabel);
    if (pLine.size() < lLabelLength) return false;
    for (size_t i = 0; i < lLabelLength; ++i)
        if (LowerAscii(pLine[i]) != LowerAscii(pLabel[i])) return false;
    size_t lAt = lLabelLength;
    if (lAt < pLine.size() && pLine[lAt] == ' ') ++lAt;
    if (lAt == pLine.size() || pLine[lAt] != ':') return false;
    ++lAt;
    if (lAt < pLine.size() && pLine[lAt] == ' ') ++lAt;
    pValue = pLine.substr(lAt);
    return true;
}

template <typename T>
bool ParseWhole(const std::string& pText, T& pValue)
{
    const char* lEnd = pText.data() + pText.size();
    const std::from_chars_result lResult = std::from_chars(pText.data(), lEnd, pValue);
    return !pText.empty() && lResult.ec == std::errc() && lResult.ptr == lEnd;
}

orvsdk::OrvEuler::EOrder RotationOrderOf(const std::vector<int>& pChannels)
{
    int lAxes[3];
    int lCount = 0;
    for (int lChannel : pChannels)
        if (lChannel >= eBvhXrotation) lAxes[lCount++] = lChannel - eBvhXrotation;
    return HostOrderFromBvhAxes(lAxes, lCount);
}

} // namespace

OrvBvhReader::OrvBvhReader() : mFile("BVH", " \t\r", "", true, false) {}

OrvBvhReadResult OrvBvhReader::Read(const char* pPath, orvsdk::OrvNode* pParent, orvsdk::OrvAnimStack* pStack)
{
    Reset();
    if (!mFile.Open(pPath)) return OrvBvhReadResult();
    return ReadOpened(pParent, pStack);
}

OrvBvhReadResult OrvBvhReader::Read(const char* pText, size_t pSize, const char* pName, orvsdk::OrvNode* pParent,
                                    orvsdk::OrvAnimStack* pStack)
{
    Reset();
    if (!mFile.Open(pText, pSize, pName)) return OrvBvhReadResult();
    return ReadOpened(pParent, pStack);
}

void OrvBvhReader::Reset()
{
    std::vector<Joint>().swap(mJoints);
    std::vector<double>().swap(mValues);
    mChannelCount = 0;
    mFrameCount = 0;
    mFrameTime = 0.0;
}

OrvBvhReadResult OrvBvhReader::ReadOpened(orvsdk::OrvNode* pParent, orvsdk::OrvAnimStack* pStack)
{
    OrvBvhReadResult lResult;
    const bool lRead = ReadHierarchy() && ReadMotionHeader() && ReadFrames() && mFile.GetErrorCount() == 0;
    mFile.Close();
    if (lRead)
    {
        Summarize(lResult);
        BuildNodes(pParent, pStack, lResult);
        lResult.mSucceeded = true;
    }
    Reset();
    return lResult;
}

void OrvBvhReader::Summarize(OrvBvhReadResult& pResult) const
{
    for (const Joint& lJoint : mJoints)
    {
        ++(lJoint.mEndSite ? pResult.mEndSiteCount : pResult.mJointCount);
        for (int lChannel : lJoint.mChannels)
            if (lJoint.mParent >= 0 && lChannel < eBvhXrotation) pResult.mHasJointTranslation = true;
    }
    pResult.mChannelCount = mChannelCount;
    pResult.mFrameCount = mFrameCount;
    pResult.mFrameTime = mFrameTime;
    pResult.mFramesPerSecond = 1.0 / mFrameTime;
}

// ---- Tokens ----------------------------------------------------------------------------------

bool OrvBvhReader::NextTokenReady()
{
    while (*mFile.mCurrentToken == '\0')
        if (!mFile.NextLine()) return false;
    return true;
}

std::string OrvBvhReader::TakeToken()
{
    std::string lToken(mFile.mCurrentToken);
    std::vector<char> lBuffer(lToken.size() + 1);
    mFile.GetString(lBuffer.data(), static_cast<int>(lBuffer.size()));
    return lToken;
}

std::string OrvBvhReader::TakeLine()
{
    std::string lLine;
    while (*mFile.mCurrentToken != '\0')
    {
        if (!lLine.empty()) lLine += ' ';
        lLine += TakeToken();
    }
    return lLine;
}

// ---- Hierarchy -------------------------------------------------------------------------------

bool OrvBvhReader::ReadHierarchy()
{
    if (!mFile.FirstLine())
    {
        mFile.Error("The file is empty; a BVH file starts with HIERARCHY\n");
        return false;
    }
    if (mFile.Check(sWords) != eHierarchy)
    {
        mFile.Error("Expected HIERARCHY at the start of the file, found \"%.*s\"\n", kQuoted, mFile.mCurrentToken);
        return false;
    }
    mFile.Handle(sWords);
    if (!NextTokenReady() || mFile.Handle(sWords) != eRootWord)
    {
        mFile.Error("Expected ROOT after HIERARCHY\n");
        return false;
    }
    if (!ReadJoint(-1, 0, false)) return false;
    if (!NextTokenReady())
    {
        mFile.Error("The file ends after the hierarchy; expected MOTION\n");
        return false;
    }
    if (mFile.Check(sWords) != eMotionWord)
    {
        mFile.Error("Expected MOTION after the hierarchy, found \"%.*s\"\n", kQuoted, mFile.mCurrentToken);
        return false;
    }
    mFile.Handle(sWords);
    return true;
}

bool OrvBvhReader::ReadJoint(int pParent, int pDepth, bool pEndSite)
{
    if (pDepth > kMaxDepth)
    {
        mFile.Error("Joints nested deeper than %d levels\n", kMaxDepth);
        return false;
    }
    Joint lJoint;
    if (!ReadJointName(lJoint, pParent, pEndSite)) return false;
    if (!NextTokenReady() || mFile.Handle(sWords) != eOpenBrace)
    {
        mFile.Error("Expected \"{\" after joint \"%s\"\n", lJoint.mName.c_str());
        return false;
    }
    const int lIndex = static_cast<int>(mJoints.size());
    mJoints.push_back(std::move(lJoint));
    for (;;)
    {
        if (!NextTokenReady())
        {
            mFile.Error("The file ends inside the hierarchy: joint \"%s\" is not closed\n",
                        mJoints[lIndex].mName.c_str());
            return false;
        }
        if (mFile.Check(sWords) == eCloseBrace) break;
        if (!ReadJointItem(lIndex, pDepth)) return false;
    }
    mFile.Handle(sWords);
    if (!mJoints[lIndex].mHasOffset)
    {
        mFile.Error("Joint \"%s\" has no OFFSET\n", mJoints[lIndex].mName.c_str());
        return false;
    }
    return true;
}

bool OrvBvhReader::ReadJointName(Joint& pJoint, int pParent, bool pEndSite)
{
    pJoint.mParent = pParent;
    pJoint.mEndSite = pEndSite;
    if (pEndSite)
    {
        pJoint.mName = mJoints[pParent].mName + "_End";
        if (NextTokenReady() && mFile.Handle(sWords) == eSiteWord) return true;
        mFile.Error("Expected \"Site\" after \"End\" in joint \"%s\"\n", mJoints[pParent].mName.c_str());
        return false;
    }
    const int lWord = NextTokenReady() ? mFile.Check(sWords) : eOpenBrace;
    if (lWord == eOpenBrace || lWord == eCloseBrace)
    {
        mFile.Error("%s without a joint name\n", pParent < 0 ? "ROOT" : "JOINT");
        return false;
    }
    pJoint.mName = TakeToken();
    return true;
}

// One OFFSET, CHANNELS, JOINT or End Site inside the joint at index pJoint.
bool OrvBvhReader::ReadJointItem(int pJoint, int pDepth)
{
    const bool lEndSite = mJoints[pJoint].mEndSite;
    const int lWord = mFile.Handle(sWords);
    if (lWord == eOffsetWord) return ReadOffset(mJoints[pJoint]);
    if (lWord == eChannelsWord && !lEndSite) return ReadChannels(mJoints[pJoint]);
    if (lWord == eJointWord && !lEndSite) return ReadJoint(pJoint, pDepth + 1, false);
    if (lWord == eEndWord && !lEndSite) return ReadJoint(pJoint, pDepth + 1, true);
    const char* lText = lWord >= 0 ? sWords[lWord].keyword : mFile.mCurrentToken;
    mFile.Error("Unexpected \"%.*s\" in %s \"%s\"\n", kQuoted, lText, lEndSite ? "the End Site of joint" : "joint",
                lEndSite ? mJoints[mJoints[pJoint].mParent].mName.c_str() : mJoints[pJoint].mName.c_str());
    return false;
}

bool OrvBvhReader::ReadOffset(Joint& pJoint)
{
    if (pJoint.mHasOffset)
    {
        mFile.Error("Joint \"%s\" has a second OFFSET\n", pJoint.mName.c_str());
        return false;
    }
    if (!mFile.GetVector(pJoint.mOffset, 1.0) || !std::isfinite(pJoint.mOffset[0]) ||
        !std::isfinite(pJoint.mOffset[1]) || !std::isfinite(pJoint.mOffset[2]))
    {
        mFile.Error("OFFSET of joint \"%s\" needs three finite numbers on its line\n", pJoint.mName.c_str());
        return false;
    }
    pJoint.mHasOffset = true;
    return true;
}

bool OrvBvhReader::ReadChannels(Joint& pJoint)
{
    int lCount = -1;
    if (pJoint.mHasChannels)
    {
        mFile.Error("Joint \"%s\" has a second CHANNELS line\n", pJoint.mName.c_str());
        return false;
    }
    if (!mFile.GetInteger(lCount) || lCount < 0 || lCount > eBvhChannelCount)
    {
        mFile.Error("CHANNELS of joint \"%s\" needs a count from 0 to %d\n", pJoint.mName.c_str(), eBvhChannelCount);
        return false;
    }
    pJoint.mHasChannels = true;
    for (int i = 0; i < lCount; ++i)
    {
        if (*mFile.mCurrentToken == '\0')
        {
            mFile.Error("CHANNELS of joint \"%s\" announces %d channels and names %d\n", pJoint.mName.c_str(), lCount,
                        i);
            return false;
        }
        const int lChannel = BvhChannelFromName(mFile.mCurrentToken);
        if (lChannel < 0)
        {
            mFile.Error(
                "Unknown channel name \"%.*s\" in joint \"%s\" (expected Xposition, Yposition, Zposition, "
                "Xrotation, Yrotation or Zrotation)\n",
                kQuoted, mFile.mCurrentToken, pJoint.mName.c_str());
            return false;
        }
        for (int lListed : pJoint.mChannels)
            if (lListed == lChannel)
            {
                mFile.Error("Channel %s listed twice in joint \"%s\"\n", BvhChannelName(lChannel),
                            pJoint.mName.c_str());
                return false;
            }
        pJoint.mChannels.push_back(lChannel);
        TakeToken();
    }
    if (*mFile.mCurrentToken != '\0' && BvhChannelFromName(mFile.mCurrentToken) >= 0)
    {
        mFile.Error("CHANNELS of joint \"%s\" announces %d channels and names more\n", pJoint.mName.c_str(), lCount);
        return false;
    }
    pJoint.mFirstValue = mChannelCount;
    mChannelCount += lCount;
    return true;
}

// ---- Motion ----------------------------------------------------------------------------------

bool OrvBvhReader::ReadMotionHeader()
{
    std::string lValue;
    if (!NextTokenReady())
    {
        mFile.Error("The file ends before \"Frames:\"\n");
        return false;
    }
    const std::string lFramesLine = TakeLine();
    if (!SplitLabeledLine(lFramesLine, "Frames", lValue))
    {
        mFile.Error("Expected \"Frames:\" after MOTION, found \"%.*s\"\n", kQuoted, lFramesLine.c_str());
        return false;
    }
    if (!ParseWhole(lValue, mFrameCount) || mFrameCount < 0)
    {
        mFile.Error("\"Frames:\" needs a whole number of frames, 0 or more, not \"%.*s\"\n", kQuoted, lValue.c_str());
        return false;
    }
    if (!NextTokenReady())
    {
        mFile.Error("The file ends before \"Frame Time:\"\n");
        return false;
    }
    const std::string lTimeLine = TakeLine();
    if (!SplitLabeledLine(lTimeLine, "Frame Time", lValue))
    {
        mFile.Error("Expected \"Frame Time:\" after \"Frames:\", found \"%.*s\"\n", kQuoted, lTimeLine.c_str());
        return false;
    }
    if (!ParseWhole(lValue, mFrameTime) || !std::isfinite(mFrameTime) || mFrameTime <= 0.0)
    {
        mFile.Error("\"Frame Time:\" needs a positive number of seconds, not \"%.*s\"\n", kQuoted, lValue.c_str());
        return false;
    }
    return true;
}

bool OrvBvhReader::ReadFrames()
{
    for (int lFrame = 0; lFrame < mFrameCount; ++lFrame)
    {
        if (!NextTokenReady())
        {
            mFile.Error("The file ends after %d of %d frames\n", lFrame, mFrameCount);
            return false;
        }
        if (!ReadFrameLine(lFrame)) return false;
    }
    if (NextTokenReady()) mFile.Warning("Text after the last of %d frames ignored\n", mFrameCount);
    return true;
}

bool OrvBvhReader::ReadFrameLine(int pFrame)
{
    int lCount = 0;
    for (; *mFile.mCurrentToken != '\0'; ++lCount)
    {
        double lValue = 0.0;
        if (!mFile.GetDouble(lValue, 1.0) || !std::isfinite(lValue))
        {
            mFile.Error("Frame %d: \"%.*s\" is not a finite number\n", pFrame + 1, kQuoted, mFile.mCurrentToken);
            return false;
        }
        if (lCount < mChannelCount) mValues.push_back(lValue);
    }
    if (lCount == mChannelCount) return true;
    mFile.Error("Frame %d holds %d values; the hierarchy has %d channels\n", pFrame + 1, lCount, mChannelCount);
    return false;
}

// ---- Host scene ------------------------------------------------------------------------------

void OrvBvhReader::BuildNodes(orvsdk::OrvNode* pParent, orvsdk::OrvAnimStack* pStack, OrvBvhReadResult& pResult) const
{
    orvsdk::OrvScene* lScene = pParent->GetScene();
    std::vector<orvsdk::OrvNode*> lNodes(mJoints.size());
    for (size_t j = 0; j < mJoints.size(); ++j)
    {
        const Joint& lJoint = mJoints[j];
        orvsdk::OrvNode* lNode = orvsdk::OrvNode::Create(lScene, lJoint.mName.c_str());
        orvsdk::OrvSkeleton* lSkeleton = orvsdk::OrvSkeleton::Create(lScene, "");
        lSkeleton->SetSkeletonType(lJoint.mParent < 0 ? orvsdk::OrvSkeleton::eRoot : orvsdk::OrvSkeleton::eLimbNode);
        lNode->SetNodeAttribute(lSkeleton);
        lNode->SetRotationOffset(orvsdk::OrvNode::eSourcePivot,
                                 orvsdk::OrvVector4(lJoint.mOffset[0], lJoint.mOffset[1], lJoint.mOffset[2]));
        if (!lJoint.mEndSite)
        {
            lNode->SetRotationActive(true);
            lNode->SetRotationOrder(orvsdk::OrvNode::eSourcePivot, RotationOrderOf(lJoint.mChannels));
            BuildCurves(lJoint, lNode, pStack);
        }
        (lJoint.mParent < 0 ? pParent : lNodes[static_cast<size_t>(lJoint.mParent)])->AddChild(lNode);
        lNodes[j] = lNode;
    }
    pResult.mRoot = lNodes.front();
}

// One curve per channel of pJoint, keyed at every frame.
void OrvBvhReader::BuildCurves(const Joint& pJoint, orvsdk::OrvNode* pNode, orvsdk::OrvAnimStack* pStack) const
{
    const double lFramesPerSecond = 1.0 / mFrameTime;
    orvsdk::OrvAnimCurveKey lKey;
    for (size_t c = 0; c < pJoint.mChannels.size(); ++c)
    {
        const int lChannel = pJoint.mChannels[c];
        orvsdk::OrvProperty& lProperty = lChannel < eBvhXrotation ? pNode->LclTranslation : pNode->LclRotation;
        const std::string lName = pJoint.mName + "_" + BvhChannelName(lChannel);
        orvsdk::OrvAnimCurve* lCurve = orvsdk::OrvAnimCurve::Create(pNode->GetScene(), lName.c_str());
        lProperty.GetCurveNode(pStack, true)->ConnectToChannel(lCurve, static_cast<unsigned>(lChannel % 3));
        size_t lValue = static_cast<size_t>(pJoint.mFirstValue) + c;
        for (int lFrame = 0; lFrame < mFrameCount; ++lFrame, lValue += static_cast<size_t>(mChannelCount))
        {
            const orvsdk::OrvTime lTime = orvsdk::OrvTime::FromFrame(lFrame, lFramesPerSecond);
            lKey.Set(lTime, static_cast<float>(mValues[lValue]));
            lCurve->KeyAdd(lTime, lKey);
        }
    }
}

} // namespace orvasf
