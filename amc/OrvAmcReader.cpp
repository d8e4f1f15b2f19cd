#include "amc/OrvAmcReader.h"

#include "orvsdk/host/OrvTime.h"
#include "orvsdk/skeleton/OrvAsfNode.h"
#include "orvsdk/skeleton/OrvAsfScene.h"

#include <cctype>
#include <cerrno>
#include <charconv>
#include <cmath>
#include <cstring>
#include <memory>
#include <sys/stat.h>

namespace orvasf {

namespace {

constexpr size_t kChunkSize = 1 << 16;
constexpr int kMaxDofs = 7;
constexpr double kRadiansToDegrees = 57.29577951308232;

bool IsBlank(char pChar)
{
    return pChar == ' ' || pChar == '\t' || pChar == '\r' || pChar == '\0';
}

// Splits the first token off pText; pText keeps the rest. A '#' where a token would begin
// comments out the rest of the line.
std::string_view NextToken(std::string_view& pText)
{
    size_t lBegin = 0;
    while (lBegin < pText.size() && IsBlank(pText[lBegin])) ++lBegin;
    if (lBegin == pText.size() || pText[lBegin] == '#')
    {
        pText = std::string_view();
        return std::string_view();
    }
    size_t lEnd = lBegin;
    while (lEnd < pText.size() && !IsBlank(pText[lEnd])) ++lEnd;
    const std::string_view lToken = pText.substr(lBegin, lEnd - lBegin);
    pText.remove_prefix(lEnd);
    return lToken;
}

// A whole token read as a finite number or an infinity.
bool ParseDouble(std::string_view pToken, double& pValue)
{
    const char* lBegin = pToken.data();
    const char* lEnd = lBegin + pToken.size();
    if (lBegin != lEnd && *lBegin == '+') ++lBegin;
    double lValue = 0.0;
    const auto lResult = std::from_chars(lBegin, lEnd, lValue);
    if (lResult.ec != std::errc() || lResult.ptr != lEnd || std::isnan(lValue)) return false;
    pValue = lValue;
    return true;
}

bool ParseInteger(std::string_view pToken, int& pValue)
{
    const char* lBegin = pToken.data();
    const char* lEnd = lBegin + pToken.size();
    if (lBegin != lEnd && *lBegin == '+') ++lBegin;
    int lValue = 0;
    const auto lResult = std::from_chars(lBegin, lEnd, lValue);
    if (lResult.ec != std::errc() || lResult.ptr != lEnd) return false;
    pValue = lValue;
    return true;
}

bool LooksNumeric(std::string_view pToken)
{
    const char lFirst = pToken.front();
    return (lFirst >= '0' && lFirst <= '9') || lFirst == '-' || lFirst == '+' || lFirst == '.';
}

bool EqualsNoCase(std::string_view pLeft, const char* pRight)
{
    const size_t lLength = std::strlen(pRight);
    if (pLeft.size() != lLength) return false;
    for (size_t i = 0; i < lLength; ++i)
        if (std::tolower(static_cast<unsigned char>(pLeft[i])) != std::tolower(static_cast<unsigned char>(pRight[i])))
            return false;
    return true;
}

std::string Quote(std::string_view pText)
{
    return std::string(pText.substr(0, 64)) + (pText.size() > 64 ? "..." : "");
}

struct FileCloser
{
    void operator()(std::FILE* pFile) const { std::fclose(pFile); }
};
using FilePointer = std::unique_ptr<std::FILE, FileCloser>;

} // namespace

AmcReadResult AmcReader::Read(const char* pPath, orvsdk::OrvAsfScene& pScene, const AmcReadSettings& pSettings)
{
    mFileName = pPath;
    struct stat lStat;
    if (::stat(pPath, &lStat) == 0 && S_ISDIR(lStat.st_mode))
    {
        AmcReadResult lResult;
        lResult.mMessages.push_back({AmcMessage::eError, 0, "Is a directory"});
        return lResult;
    }
    FilePointer lFile(std::fopen(pPath, "rb"));
    if (!lFile)
    {
        AmcReadResult lResult;
        lResult.mMessages.push_back({AmcMessage::eError, 0, std::strerror(errno)});
        return lResult;
    }
    const uint64_t lSize = S_ISREG(lStat.st_mode) ? static_cast<uint64_t>(lStat.st_size) : 0;
    return ReadStream(lFile.get(), lSize, pScene, pSettings);
}

AmcReadResult AmcReader::Read(const char* pText, size_t pSize, const char* pName, orvsdk::OrvAsfScene& pScene,
                              const AmcReadSettings& pSettings)
{
    mFileName = pName;
    // fmemopen refuses a zero-size buffer: an empty text is read as a single line end.
    static const char sLineEnd[1] = {'\n'};
    FilePointer lFile(pSize > 0 ? fmemopen(const_cast<char*>(pText), pSize, "rb")
                                : fmemopen(const_cast<char*>(sLineEnd), sizeof(sLineEnd), "rb"));
    if (!lFile)
    {
        AmcReadResult lResult;
        lResult.mMessages.push_back({AmcMessage::eError, 0, std::strerror(errno)});
        return lResult;
    }
    return ReadStream(lFile.get(), pSize, pScene, pSettings);
}

std::string AmcReader::FormatMessage(const AmcMessage& pMessage) const
{
    std::string lText = mFileName + ":";
    if (pMessage.mLine > 0) lText += std::to_string(pMessage.mLine) + ":";
    lText += pMessage.mKind == AmcMessage::eError ? " error: " : " warning: ";
    return lText + pMessage.mText;
}

AmcReadResult AmcReader::ReadStream(std::FILE* pFile, uint64_t pSize, orvsdk::OrvAsfScene& pScene,
                                    const AmcReadSettings& pSettings)
{
    mResult = AmcReadResult();
    mBuffer.assign(kChunkSize, '\0');
    mBufferStart = mBufferEnd = 0;
    mEndOfInput = false;
    mLineNumber = 0;
    mBytesRead = 0;
    mUnknownBones.clear();
    mLinePrediction.clear();
    mLineInFrame = 0;
    mInFrames = false;

    orvsdk::OrvAsfNode* lRoot = pScene.mRoot;
    if (!lRoot)
    {
        Message(AmcMessage::eError, "The skeleton has no root");
        return mResult;
    }
    IndexBones(lRoot);
    mTranslationFactor = pScene.mLengthUnit > 0.0 ? 2.54 / pScene.mLengthUnit : 1.0;
    mRotationFactor = pScene.mAngleUnit;

    lRoot->StartSamplingData();
    bool lOk = true;
    uint64_t lReported = 0;
    std::string_view lLine;
    for (;;)
    {
        const ELineResult lRead = ReadLine(pFile, lLine);
        if (lRead == ELineResult::eEnd) break;
        if (lRead == ELineResult::eTooLong)
        {
            Message(AmcMessage::eError, "Line longer than " + std::to_string(kMaxLineLength) + " bytes");
            lOk = false;
            break;
        }
        if (lRead == ELineResult::eReadError)
        {
            Message(AmcMessage::eError, std::string("Read error: ") + std::strerror(errno));
            lOk = false;
            break;
        }
        if (!HandleLine(lLine, pSettings))
        {
            lOk = false;
            break;
        }
        if (pSettings.mProgress && mBytesRead - lReported >= (1u << 20))
        {
            lReported = mBytesRead;
            pSettings.mProgress(mBytesRead, pSize);
        }
    }
    lRoot->StopSamplingData();
    if (lOk && mResult.mFrameCount == 0) Message(AmcMessage::eWarning, "No frame in the file");
    mResult.mSucceeded = lOk;
    mBones.clear();
    return mResult;
}

AmcReader::ELineResult AmcReader::ReadLine(std::FILE* pFile, std::string_view& pLine)
{
    for (;;)
    {
        const char* lBegin = mBuffer.data() + mBufferStart;
        const size_t lAvailable = mBufferEnd - mBufferStart;
        const void* lNewline = std::memchr(lBegin, '\n', lAvailable);
        if (lNewline || (mEndOfInput && lAvailable > 0))
        {
            const size_t lLength = lNewline ? static_cast<size_t>(static_cast<const char*>(lNewline) - lBegin) : lAvailable;
            if (lLength > kMaxLineLength) return ELineResult::eTooLong;
            pLine = std::string_view(lBegin, lLength);
            const size_t lConsumed = lNewline ? lLength + 1 : lLength;
            mBufferStart += lConsumed;
            mBytesRead += lConsumed;
            ++mLineNumber;
            return ELineResult::eLine;
        }
        if (mEndOfInput) return ELineResult::eEnd;
        if (lAvailable > kMaxLineLength) return ELineResult::eTooLong;
        // Keep the unfinished line at the front and read the next chunk behind it.
        std::memmove(mBuffer.data(), lBegin, lAvailable);
        mBufferStart = 0;
        mBufferEnd = lAvailable;
        if (mBuffer.size() < mBufferEnd + kChunkSize) mBuffer.resize(mBufferEnd + kChunkSize);
        const size_t lRead = std::fread(mBuffer.data() + mBufferEnd, 1, kChunkSize, pFile);
        mBufferEnd += lRead;
        if (lRead < kChunkSize)
        {
            if (std::ferror(pFile)) return ELineResult::eReadError;
            mEndOfInput = true;
        }
    }
}

bool AmcReader::HandleLine(std::string_view pLine, const AmcReadSettings& pSettings)
{
    std::string_view lRest = pLine;
    const std::string_view lFirst = NextToken(lRest);
    if (lFirst.empty()) return true;
    if (lFirst.front() == ':') return HandleHeader(lFirst);
    if (LooksNumeric(lFirst)) return HandleFrameNumber(lFirst, lRest);
    if (!mInFrames)
    {
        Message(AmcMessage::eError, "Frame number expected before bone line (" + Quote(lFirst) + ")");
        return false;
    }
    return HandleBoneLine(lFirst, lRest, pSettings);
}

bool AmcReader::HandleHeader(std::string_view pToken)
{
    if (mInFrames)
    {
        Message(AmcMessage::eError, "Header keyword inside the frames (" + Quote(pToken) + ")");
        return false;
    }
    if (EqualsNoCase(pToken, ":RADIANS"))
    {
        mResult.mRadians = true;
        mRotationFactor = kRadiansToDegrees;
    }
    else if (EqualsNoCase(pToken, ":DEGREES"))
        mRotationFactor = 1.0;
    else if (!EqualsNoCase(pToken, ":FULLY-SPECIFIED"))
        Message(AmcMessage::eWarning, "Ignoring unknown header keyword (" + Quote(pToken) + ")");
    return true;
}

bool AmcReader::HandleFrameNumber(std::string_view pToken, std::string_view pRest)
{
    int lFrame = 0;
    if (!ParseInteger(pToken, lFrame) || !NextToken(pRest).empty())
    {
        Message(AmcMessage::eError, "Bad frame number (" + Quote(pToken) + ")");
        return false;
    }
    if (mInFrames && lFrame <= mFrameNumber)
    {
        Message(AmcMessage::eError, "Frame number " + std::to_string(lFrame) + " does not follow frame " +
                                        std::to_string(mFrameNumber));
        return false;
    }
    if (!mInFrames) mResult.mFirstFrame = lFrame;
    mInFrames = true;
    mFrameNumber = lFrame;
    mResult.mLastFrame = lFrame;
    ++mResult.mFrameCount;
    mLineInFrame = 0;
    return true;
}

bool AmcReader::HandleBoneLine(std::string_view pName, std::string_view pRest, const AmcReadSettings& pSettings)
{
    orvsdk::OrvAsfNode* lBone = ResolveBone(pName);
    if (!lBone) return true;
    double lValues[kMaxDofs];
    int lCount = 0;
    for (std::string_view lToken = NextToken(pRest); !lToken.empty(); lToken = NextToken(pRest))
    {
        if (lCount < lBone->mDofCount && !ParseDouble(lToken, lValues[lCount]))
        {
            Message(AmcMessage::eError, "Not a number (" + Quote(lToken) + ")");
            return false;
        }
        ++lCount;
    }
    if (lCount != lBone->mDofCount)
    {
        Message(AmcMessage::eError, "Bone " + Quote(pName) + " takes " + std::to_string(lBone->mDofCount) +
                                        " values, the line holds " + std::to_string(lCount));
        return false;
    }
    orvsdk::OrvTime lTime = orvsdk::OrvTime::FromFrame(mFrameNumber - mResult.mFirstFrame, pSettings.mFramesPerSecond);
    lBone->AddSampleFromDOF(lValues, lTime, mTranslationFactor, mRotationFactor, pSettings.mUseRotationOffset,
                            pSettings.mUsePreRotation);
    return true;
}

orvsdk::OrvAsfNode* AmcReader::ResolveBone(std::string_view pName)
{
    // Files list the bones in the same order in every frame: try the bone of the same line slot in
    // the previous frame before the name index.
    const size_t lSlot = mLineInFrame++;
    if (lSlot < mLinePrediction.size())
    {
        orvsdk::OrvAsfNode* lPredicted = mLinePrediction[lSlot];
        if (lPredicted && pName == lPredicted->mName) return lPredicted;
    }
    const auto lFound = mBones.find(pName);
    orvsdk::OrvAsfNode* lBone = lFound == mBones.end() ? nullptr : lFound->second;
    if (lSlot >= mLinePrediction.size()) mLinePrediction.resize(lSlot + 1, nullptr);
    mLinePrediction[lSlot] = lBone;
    if (!lBone && mUnknownBones.emplace(std::string(pName), true).second)
        Message(AmcMessage::eWarning, "Unknown bone (" + Quote(pName) + "), its lines are skipped");
    return lBone;
}

void AmcReader::IndexBones(orvsdk::OrvAsfNode* pRoot)
{
    // The first bone met depth-first wins a duplicated name, like the skeleton's own search.
    mBones.clear();
    std::vector<orvsdk::OrvAsfNode*> lPending{pRoot};
    while (!lPending.empty())
    {
        orvsdk::OrvAsfNode* lBone = lPending.back();
        lPending.pop_back();
        mBones.emplace(std::string_view(lBone->mName), lBone);
        for (int i = lBone->mChildren.GetCount() - 1; i >= 0; --i) lPending.push_back(lBone->mChildren[i]);
    }
}

void AmcReader::Message(AmcMessage::EKind pKind, std::string pText)
{
    mResult.mMessages.push_back({pKind, mLineNumber, std::move(pText)});
}

} // namespace orvasf
