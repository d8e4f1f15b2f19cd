#include "amc/OrvAmcReader.h"

#include "orvsdk/host/anim/OrvAnimCurve.h"
#include "orvsdk/host/core/OrvTime.h"
#include "orvsdk/skeleton/OrvAsfNode.h"
#include "orvsdk/skeleton/OrvAsfScene.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <cerrno>
#include <charconv>
#include <cmath>
#include <cstring>
#include <limits>
#include <memory>
#include <sys/stat.h>
#include <thread>

namespace orvasf {

namespace {

constexpr size_t kChunkSize = 1 << 16;
// The most values a bone line can carry: a full DOF list, or three.
constexpr int kMaxValues = orvsdk::OrvAsfNode::kMaxDofs > 3 ? orvsdk::OrvAsfNode::kMaxDofs : 3;
constexpr double kRadiansToDegrees = 57.29577951308232;
constexpr size_t kNoNul = std::numeric_limits<size_t>::max();
// Lines whose bone is remembered from the previous frame; later lines of longer frames look
// their bone up by name.
constexpr size_t kMaxPredictedLines = 4096;
// Files of fewer frames are sampled on the reading thread.
constexpr uint64_t kParallelFrames = 300;

// Blanks separate tokens; CR counts as one, so that CRLF and LF lines read alike.
constexpr std::array<bool, 256> MakeBlankTable()
{
    std::array<bool, 256> lTable{};
    lTable[' '] = lTable['\t'] = lTable['\r'] = true;
    return lTable;
}
constexpr std::array<bool, 256> kBlank = MakeBlankTable();

bool IsBlank(char pChar)
{
    return kBlank[static_cast<unsigned char>(pChar)];
}

// Splits the first token off pText; pText keeps the rest. A '#' where a token would begin
// comments out the rest of the line.
std::string_view NextToken(std::string_view& pText)
{
    const char* lBegin = pText.data();
    const char* const lEnd = lBegin + pText.size();
    while (lBegin != lEnd && IsBlank(*lBegin)) ++lBegin;
    if (lBegin == lEnd || *lBegin == '#')
    {
        pText = std::string_view();
        return std::string_view();
    }
    const char* lTokenEnd = lBegin;
    while (lTokenEnd != lEnd && !IsBlank(*lTokenEnd)) ++lTokenEnd;
    pText = std::string_view(lTokenEnd, static_cast<size_t>(lEnd - lTokenEnd));
    return std::string_view(lBegin, static_cast<size_t>(lTokenEnd - lBegin));
}

const char* SkipBlanks(const char* pText, const char* pEnd)
{
    while (pText != pEnd && IsBlank(*pText)) ++pText;
    return pText;
}

const char* TokenEnd(const char* pText, const char* pEnd)
{
    while (pText != pEnd && !IsBlank(*pText)) ++pText;
    return pText;
}

// Appends the digits at pText to pMantissa; returns the end of the digits.
const char* ReadDigits(const char* pText, const char* pEnd, uint64_t& pMantissa)
{
    for (; pText != pEnd; ++pText)
    {
        const unsigned lDigit = static_cast<unsigned char>(*pText - '0');
        if (lDigit >= 10) break;
        pMantissa = pMantissa * 10 + lDigit;
    }
    return pText;
}

// The powers of ten that a double holds exactly.
constexpr double kExactPowersOfTen[] = {1e0,  1e1,  1e2,  1e3,  1e4,  1e5,  1e6,  1e7,  1e8,  1e9,  1e10, 1e11,
                                        1e12, 1e13, 1e14, 1e15, 1e16, 1e17, 1e18, 1e19, 1e20, 1e21, 1e22};
constexpr int kMaxExactPower = 22;
constexpr long kMaxMantissaDigits = 19;  // below 2^64
constexpr long kMaxExponentDigits = 4;
constexpr uint64_t kMaxExactMantissa = uint64_t(1) << 53;

// Reads the number at pText when it is -?D+(.D+)?([eE][-+]?D+)? with a mantissa of at most 2^53
// (its digits taken as one integer) and a decimal exponent within +-22: both are exact doubles,
// so one product or quotient rounds once, to the nearest double, the very value from_chars
// returns. Returns the end of the number, or null when the text does not start with such a
// number; the caller checks that the token ends there.
const char* ReadShortDecimal(const char* pText, const char* pEnd, double& pValue)
{
    const char* p = pText;
    const bool lNegative = p != pEnd && *p == '-';
    if (lNegative) ++p;
    uint64_t lMantissa = 0;
    const char* const lIntegerBegin = p;
    p = ReadDigits(p, pEnd, lMantissa);
    if (p == lIntegerBegin) return nullptr;
    long lDigits = p - lIntegerBegin;
    int lExponent = 0;
    if (p != pEnd && *p == '.')
    {
        const char* const lFractionBegin = ++p;
        p = ReadDigits(p, pEnd, lMantissa);
        if (p == lFractionBegin) return nullptr;
        lDigits += p - lFractionBegin;
        lExponent = -static_cast<int>(p - lFractionBegin);
    }
    if (lDigits > kMaxMantissaDigits || lMantissa > kMaxExactMantissa) return nullptr;
    if (p != pEnd && (*p == 'e' || *p == 'E'))
    {
        ++p;
        const bool lNegativeExponent = p != pEnd && *p == '-';
        if (p != pEnd && (*p == '-' || *p == '+')) ++p;
        uint64_t lWritten = 0;
        const char* const lExponentBegin = p;
        p = ReadDigits(p, pEnd, lWritten);
        if (p == lExponentBegin || p - lExponentBegin > kMaxExponentDigits) return nullptr;
        lExponent += lNegativeExponent ? -static_cast<int>(lWritten) : static_cast<int>(lWritten);
    }
    if (lExponent < -kMaxExactPower || lExponent > kMaxExactPower) return nullptr;
    const double lMagnitude = lExponent < 0 ? static_cast<double>(lMantissa) / kExactPowersOfTen[-lExponent]
                                            : static_cast<double>(lMantissa) * kExactPowersOfTen[lExponent];
    pValue = lNegative ? -lMagnitude : lMagnitude;
    return p;
}

// A whole token read by from_chars as a finite number or an infinity.
bool ParseWithFromChars(std::string_view pToken, double& pValue)
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

std::string UnknownBoneText(std::string_view pName)
{
    return "Unknown bone (" + Quote(pName) + "), its lines are skipped";
}

// Skips a UTF-8 byte order mark at the start of the first line; false when the line starts with
// a UTF-16 one.
bool AcceptFirstLine(std::string_view& pLine)
{
    const orvsdk::OrvTextStart lStart = orvsdk::OrvExamineTextStart(pLine.data(), pLine.size());
    pLine.remove_prefix(lStart.mMarkSize);
    return lStart.mRefusal == nullptr;
}

struct FileCloser
{
    void operator()(std::FILE* pFile) const { std::fclose(pFile); }
};
using FilePointer = std::unique_ptr<std::FILE, FileCloser>;

} // namespace

OrvAmcReadResult OrvAmcReader::Read(const char* pPath, orvsdk::OrvAsfScene& pScene, const OrvAmcReadSettings& pSettings)
{
    mDiagnostics.Reset(pPath);
    struct stat lStat;
    if (::stat(pPath, &lStat) == 0 && S_ISDIR(lStat.st_mode)) return Refuse("Is a directory");
    FilePointer lFile(std::fopen(pPath, "rb"));
    if (!lFile) return Refuse(std::strerror(errno));
    const uint64_t lSize = S_ISREG(lStat.st_mode) ? static_cast<uint64_t>(lStat.st_size) : 0;
    return ReadStream(lFile.get(), lSize, pScene, pSettings);
}

OrvAmcReadResult OrvAmcReader::Read(const char* pText, size_t pSize, const char* pName, orvsdk::OrvAsfScene& pScene,
                                    const OrvAmcReadSettings& pSettings)
{
    mDiagnostics.Reset(pName);
    // fmemopen may refuse a zero-size buffer: an empty text is read as a one-byte buffer whose
    // byte is taken at once.
    static const char sLineEnd[1] = {'\n'};
    FilePointer lFile(pSize > 0 ? fmemopen(const_cast<char*>(pText), pSize, "rb")
                                : fmemopen(const_cast<char*>(sLineEnd), sizeof(sLineEnd), "rb"));
    if (!lFile) return Refuse(std::strerror(errno));
    if (pSize == 0) std::fgetc(lFile.get());
    return ReadStream(lFile.get(), pSize, pScene, pSettings);
}

// A result refusing the whole file before any line was read.
OrvAmcReadResult OrvAmcReader::Refuse(std::string pText)
{
    mDiagnostics.Error(0, std::move(pText));
    OrvAmcReadResult lResult;
    lResult.mMessages = mDiagnostics.GetMessages();
    return lResult;
}

bool OrvAmcReader::ParseValue(std::string_view pToken, double& pValue)
{
    const char* const lEnd = pToken.data() + pToken.size();
    return ReadShortDecimal(pToken.data(), lEnd, pValue) == lEnd || ParseWithFromChars(pToken, pValue);
}

OrvAmcReadResult OrvAmcReader::ReadStream(std::FILE* pFile, uint64_t pSize, orvsdk::OrvAsfScene& pScene,
                                          const OrvAmcReadSettings& pSettings)
{
    mResult = OrvAmcReadResult();
    mBuffer.assign(kChunkSize, '\0');
    mBufferStart = mBufferEnd = 0;
    mNulAt = kNoNul;
    mEndOfInput = false;
    mLineNumber = 0;
    mBytesRead = 0;
    mSize = pSize;
    mUnknownBones.clear();
    mLinePrediction.clear();
    mLineInFrame = 0;
    mInFrames = false;
    mAllJointsThreeDof = false;

    orvsdk::OrvAsfNode* lRoot = pScene.mRoot;
    if (!lRoot) return Refuse("The skeleton has no root");
    IndexBones(lRoot);
    mTranslationFactor = pScene.mLengthUnit > 0.0 ? 2.54 / pScene.mLengthUnit : 1.0;
    mRotationFactor = pScene.mAngleUnit;

    if (pSettings.mSampleValues) lRoot->StartSamplingData();
    bool lOk = true;
    uint64_t lReported = 0;
    std::string_view lLine;
    for (;;)
    {
        const ELineResult lRead = ReadLine(pFile, lLine);
        if (lRead == ELineResult::eEnd) break;
        if (lRead != ELineResult::eLine)
        {
            ReportLineFault(lRead);
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
    if (mPipeline)
    {
        mPipeline->Finish();
        mPipeline.reset();
    }
    if (pSettings.mSampleValues) lRoot->StopSamplingData();
    if (lOk && mResult.mFrameCount == 0)
    {
        // Nothing to import: a file cut down to nothing, or not a motion file at all.
        Fail("No frames in the file");
        lOk = false;
    }
    mResult.mSucceeded = lOk;
    mResult.mAllJointsThreeDof = mAllJointsThreeDof;
    mResult.mMessages = mDiagnostics.GetMessages();
    mResult.mWarningCount = mDiagnostics.GetWarningCount();
    mBones.clear();
    return mResult;
}

OrvAmcReader::ELineResult OrvAmcReader::ReadLine(std::FILE* pFile, std::string_view& pLine)
{
    for (;;)
    {
        const char* lBegin = mBuffer.data() + mBufferStart;
        const size_t lAvailable = mBufferEnd - mBufferStart;
        const void* lNewline = std::memchr(lBegin, '\n', lAvailable);
        if (lNewline || (mEndOfInput && lAvailable > 0))
        {
            // The line counts from here on, so that a fault names it.
            ++mLineNumber;
            const size_t lLength = lNewline ? static_cast<size_t>(static_cast<const char*>(lNewline) - lBegin) : lAvailable;
            if (lLength > kMaxLineLength) return ELineResult::eTooLong;
            pLine = std::string_view(lBegin, lLength);
            const bool lHoldsNul = mNulAt < mBufferStart + lLength;
            const size_t lConsumed = lNewline ? lLength + 1 : lLength;
            mBufferStart += lConsumed;
            mBytesRead += lConsumed;
            if (mLineNumber == 1 && !AcceptFirstLine(pLine)) return ELineResult::eUtf16;
            return lHoldsNul ? ELineResult::eNulByte : ELineResult::eLine;
        }
        if (mEndOfInput) return ELineResult::eEnd;
        if (lAvailable > kMaxLineLength)
        {
            ++mLineNumber;
            return ELineResult::eTooLong;
        }
        if (!FillBuffer(pFile)) return ELineResult::eReadError;
    }
}

// Keeps the unfinished line at the front of the buffer and reads the next chunk behind it. The
// chunk is searched for a NUL byte once, here, so that each line costs one comparison for it.
// False on a read error.
bool OrvAmcReader::FillBuffer(std::FILE* pFile)
{
    const size_t lAvailable = mBufferEnd - mBufferStart;
    std::memmove(mBuffer.data(), mBuffer.data() + mBufferStart, lAvailable);
    if (mNulAt != kNoNul) mNulAt -= mBufferStart;
    mBufferStart = 0;
    mBufferEnd = lAvailable;
    if (mBuffer.size() < mBufferEnd + kChunkSize) mBuffer.resize(mBufferEnd + kChunkSize);
    char* const lChunk = mBuffer.data() + mBufferEnd;
    const size_t lRead = std::fread(lChunk, 1, kChunkSize, pFile);
    if (mNulAt == kNoNul)
    {
        const size_t lNul = orvsdk::OrvFindNulByte(lChunk, lRead);
        if (lNul < lRead) mNulAt = mBufferEnd + lNul;
    }
    mBufferEnd += lRead;
    if (lRead < kChunkSize)
    {
        if (std::ferror(pFile)) return false;
        mEndOfInput = true;
    }
    return true;
}

void OrvAmcReader::ReportLineFault(ELineResult pResult)
{
    switch (pResult)
    {
    case ELineResult::eTooLong:
        Fail("Line longer than " + std::to_string(kMaxLineLength) + " bytes");
        break;
    case ELineResult::eNulByte: Fail(orvsdk::kOrvNulByteMessage); break;
    case ELineResult::eUtf16: Fail(orvsdk::kOrvUtf16Message); break;
    default: Fail(std::string("Read error: ") + std::strerror(errno)); break;
    }
}

bool OrvAmcReader::HandleLine(std::string_view pLine, const OrvAmcReadSettings& pSettings)
{
    std::string_view lRest = pLine;
    const std::string_view lFirst = NextToken(lRest);
    if (lFirst.empty()) return true;
    if (lFirst.front() == ':') return HandleHeader(lFirst);
    if (LooksNumeric(lFirst)) return HandleFrameNumber(lFirst, lRest, pSettings);
    if (!mInFrames)
    {
        Fail("Frame number expected before bone line (" + Quote(lFirst) + ")");
        return false;
    }
    return HandleBoneLine(lFirst, lRest, pSettings);
}

bool OrvAmcReader::HandleHeader(std::string_view pToken)
{
    if (mInFrames)
    {
        Fail("Header keyword inside the frames (" + Quote(pToken) + ")");
        return false;
    }
    if (EqualsNoCase(pToken, ":RADIANS"))
    {
        mResult.mRadians = true;
        mRotationFactor = kRadiansToDegrees;
    }
    else if (EqualsNoCase(pToken, ":DEGREES"))
        mRotationFactor = 1.0;
    else if (EqualsNoCase(pToken, ":FORCE-ALL-JOINTS-BE-3DOF"))
        mAllJointsThreeDof = true;
    else if (!EqualsNoCase(pToken, ":FULLY-SPECIFIED"))
        mDiagnostics.Warning(mLineNumber, [&] { return "Ignoring unknown header keyword (" + Quote(pToken) + ")"; });
    return true;
}

bool OrvAmcReader::HandleFrameNumber(std::string_view pToken, std::string_view pRest, const OrvAmcReadSettings& pSettings)
{
    int lFrame = 0;
    if (!ParseInteger(pToken, lFrame) || !NextToken(pRest).empty())
    {
        Fail("Bad frame number (" + Quote(pToken) + ")");
        return false;
    }
    if (mInFrames && lFrame <= mFrameNumber)
    {
        Fail("Frame number " + std::to_string(lFrame) + " does not follow frame " +
                                        std::to_string(mFrameNumber));
        return false;
    }
    if (!mInFrames)
    {
        mResult.mFirstFrame = lFrame;
        mFirstFrameStart = mBytesRead;
    }
    else if (mResult.mFrameCount == 1 && pSettings.mSampleValues)
    {
        ReserveKeys();
        StartPipeline(pSettings);
    }
    mInFrames = true;
    mFrameNumber = lFrame;
    // In 64 bits: frame numbers may lie anywhere in the int range, so their distance may not.
    mFrameTime = orvsdk::OrvTime::FromFrame(
        static_cast<double>(static_cast<int64_t>(mFrameNumber) - static_cast<int64_t>(mResult.mFirstFrame)),
        pSettings.mFramesPerSecond);
    mResult.mLastFrame = lFrame;
    ++mResult.mFrameCount;
    mLineInFrame = 0;
    return true;
}

bool OrvAmcReader::HandleBoneLine(std::string_view pName, std::string_view pRest, const OrvAmcReadSettings& pSettings)
{
    const LineSlot lSlot = ResolveBone(pName);
    orvsdk::OrvAsfNode* lBone = lSlot.mBone;
    if (!lBone) return true;
    const int lExpected = ExpectedValueCount(*lBone);
    double lValues[kMaxValues];
    int lCount = 0;
    const char* const lEnd = pRest.data() + pRest.size();
    for (const char* p = SkipBlanks(pRest.data(), lEnd); p != lEnd && *p != '#'; p = SkipBlanks(p, lEnd), ++lCount)
    {
        if (lCount >= lExpected)
        {
            p = TokenEnd(p, lEnd);
            continue;
        }
        // Numbers are read in place; a token the short path does not take goes to from_chars.
        const char* lTokenEnd = ReadShortDecimal(p, lEnd, lValues[lCount]);
        if (!lTokenEnd || (lTokenEnd != lEnd && !IsBlank(*lTokenEnd)))
        {
            lTokenEnd = TokenEnd(p, lEnd);
            const std::string_view lToken(p, static_cast<size_t>(lTokenEnd - p));
            if (!ParseWithFromChars(lToken, lValues[lCount]))
            {
                Fail("Not a number (" + Quote(lToken) + ")");
                return false;
            }
        }
        p = lTokenEnd;
    }
    if (lCount != lExpected)
    {
        Fail("Bone " + Quote(pName) + " takes " + std::to_string(lExpected) +
                                        " values, the line holds " + std::to_string(lCount));
        return false;
    }
    if (pSettings.mBoneLine)
        pSettings.mBoneLine(static_cast<int64_t>(mFrameNumber) - static_cast<int64_t>(mResult.mFirstFrame), *lBone,
                            lValues, lCount);
    if (mPipeline)
        mPipeline->Add(*lBone, lSlot.mShare, mFrameTime, lValues, lCount);
    else if (pSettings.mSampleValues)
        lBone->AddSampleFromDOF(lValues, mFrameTime, mTranslationFactor, mRotationFactor, pSettings.mUseRotationOffset,
                                pSettings.mUsePreRotation);
    return true;
}

int OrvAmcReader::ExpectedValueCount(const orvsdk::OrvAsfNode& pBone) const
{
    return mAllJointsThreeDof && pBone.mDofCount < 3 ? 3 : pBone.mDofCount;
}

void OrvAmcReader::ReserveKeys() const
{
    // The first frame's size tells roughly how many frames the file holds (within a few per cent
    // in real files): the curves make room for them at once, plus a margin, so that they grow
    // without copying their keys, and without touching twice the memory the keys need.
    const uint64_t lFrameBytes = mBytesRead - mFirstFrameStart;
    if (mSize <= mFirstFrameStart || lFrameBytes == 0) return;
    const uint64_t lFrames = (mSize - mFirstFrameStart) / lFrameBytes + 1;
    const uint64_t lRoom = lFrames + lFrames / 16 + 2;
    if (lRoom > static_cast<uint64_t>(std::numeric_limits<int>::max())) return;
    for (const auto& lEntry : mBones)
    {
        orvsdk::OrvAsfNode* lBone = lEntry.second.mBone;
        for (int j = 0; j < 3; ++j)
        {
            if (lBone->mTranslationCurve[j]) lBone->mTranslationCurve[j]->KeyReserve(static_cast<int>(lRoom));
            if (lBone->mRotationCurve[j]) lBone->mRotationCurve[j]->KeyReserve(static_cast<int>(lRoom));
        }
    }
}

OrvAmcReader::LineSlot OrvAmcReader::ResolveBone(std::string_view pName)
{
    // Files list the bones in the same order in every frame: try the bone of the same line slot in
    // the previous frame before the name index.
    const size_t lSlot = mLineInFrame++;
    if (lSlot < mLinePrediction.size() && mLinePrediction[lSlot].mName == pName) return mLinePrediction[lSlot];
    const LineSlot lFound = LookUpBone(pName);
    if (lSlot >= mLinePrediction.size() && lSlot < kMaxPredictedLines) mLinePrediction.resize(lSlot + 1);
    if (lSlot < mLinePrediction.size()) mLinePrediction[lSlot] = lFound;
    return lFound;
}

OrvAmcReader::LineSlot OrvAmcReader::LookUpBone(std::string_view pName)
{
    const auto lFound = mBones.find(pName);
    if (lFound != mBones.end()) return lFound->second;
    // An unknown name: warned about once, and remembered by its own copy so that its later lines
    // are skipped without a lookup. Past kMaxUnknownBones names a new one is not remembered: each
    // of its lines counts as a warning again (beyond the kept ones by then).
    std::string lName(pName);
    auto lUnknown = mUnknownBones.find(lName);
    if (lUnknown == mUnknownBones.end() && mUnknownBones.size() >= kMaxUnknownBones)
    {
        mDiagnostics.Warning(mLineNumber, [pName] { return UnknownBoneText(pName); });
        return {};
    }
    if (lUnknown == mUnknownBones.end())
    {
        lUnknown = mUnknownBones.insert(std::move(lName)).first;
        mDiagnostics.Warning(mLineNumber, [&] { return UnknownBoneText(pName); });
    }
    return {std::string_view(*lUnknown), nullptr, 0};
}

void OrvAmcReader::IndexBones(orvsdk::OrvAsfNode* pRoot)
{
    // The first bone met depth-first wins a duplicated name, like the skeleton's own search.
    mBones.clear();
    std::vector<orvsdk::OrvAsfNode*> lPending{pRoot};
    while (!lPending.empty())
    {
        orvsdk::OrvAsfNode* lBone = lPending.back();
        lPending.pop_back();
        const std::string_view lName(lBone->mName);
        mBones.emplace(lName, LineSlot{lName, lBone, static_cast<int>(mBones.size())});
        for (int i = lBone->mChildren.GetCount() - 1; i >= 0; --i) lPending.push_back(lBone->mChildren[i]);
    }
}

void OrvAmcReader::StartPipeline(const OrvAmcReadSettings& pSettings)
{
    // Threads pay off from a few hundred frames on; the first frame, already sampled here, tells
    // the frame size.
    const unsigned lCores = std::max(std::thread::hardware_concurrency(), 1u);
    const int lThreads = pSettings.mThreads > 0 ? pSettings.mThreads : static_cast<int>(lCores);
    const uint64_t lFrameBytes = mBytesRead - mFirstFrameStart;
    const bool lLong = mSize == 0 || (mSize > mFirstFrameStart && lFrameBytes > 0 &&
                                      (mSize - mFirstFrameStart) / lFrameBytes >= kParallelFrames);
    if (lThreads <= 1 || !lLong) return;
    OrvAmcSampleFactors lFactors;
    lFactors.mTranslationFactor = mTranslationFactor;
    lFactors.mRotationFactor = mRotationFactor;
    lFactors.mUseRotationOffset = pSettings.mUseRotationOffset;
    lFactors.mUsePreRotation = pSettings.mUsePreRotation;
    mPipeline = std::make_unique<OrvAmcSamplingPipeline>(lThreads, lFactors);
}

void OrvAmcReader::Fail(std::string pText)
{
    mDiagnostics.Error(mLineNumber, std::move(pText));
}

} // namespace orvasf
