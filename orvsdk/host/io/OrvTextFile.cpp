#include "orvsdk/host/io/OrvTextFile.h"

#include <cctype>
#include <cerrno>
#include <charconv>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <new>
#include <system_error>

#include <fcntl.h>
#include <locale.h>
#include <sys/stat.h>
#include <unistd.h>

namespace orvsdk {

namespace {

// Longest token text quoted in a message; longer tokens are cut and marked with "...".
constexpr int kQuotedTokenLength = 256;

// A temporary file of Create is named after its target: the target's path, this suffix and
// kTemporaryLetters letters or digits that mkostemp picks.
constexpr const char* kTemporarySuffix = ".tmp";
constexpr size_t kTemporaryLetters = 6;

std::string SystemReason(int pErrno)
{
    return std::error_code(pErrno, std::generic_category()).message();
}

// Makes this thread format numbers in the C locale while the object lives.
class CLocaleScope
{
public:
    CLocaleScope() : mPrevious(uselocale(CLocale())) {}
    ~CLocaleScope() { uselocale(mPrevious); }
    CLocaleScope(const CLocaleScope&) = delete;
    CLocaleScope& operator=(const CLocaleScope&) = delete;

private:
    // Created once per process and never changed; (locale_t)0 leaves the locale alone.
    static locale_t CLocale()
    {
        static const locale_t sCLocale = newlocale(LC_ALL_MASK, "C", static_cast<locale_t>(0));
        return sCLocale;
    }

    locale_t mPrevious;
};

std::string FormatInCLocale(const char* pFormat, va_list pArgs)
{
    CLocaleScope lLocale;
    va_list lArgs;
    va_copy(lArgs, pArgs);
    const int lLength = std::vsnprintf(nullptr, 0, pFormat, lArgs);
    va_end(lArgs);
    if (lLength <= 0) return std::string();
    std::string lText(static_cast<size_t>(lLength), '\0');
    std::vsnprintf(&lText[0], lText.size() + 1, pFormat, pArgs);
    return lText;
}

bool EqualsIgnoringCase(const char* pKeyword, const char* pToken)
{
    for (;; ++pKeyword, ++pToken)
    {
        unsigned char lA = static_cast<unsigned char>(*pKeyword);
        unsigned char lB = static_cast<unsigned char>(*pToken);
        if (lA >= 'A' && lA <= 'Z') lA = static_cast<unsigned char>(lA - 'A' + 'a');
        if (lB >= 'A' && lB <= 'Z') lB = static_cast<unsigned char>(lB - 'A' + 'a');
        if (lA != lB) return false;
        if (lA == '\0') return true;
    }
}

// from_chars does not take a leading '+'; skip one unless a sign follows it.
const char* SkipPlus(const char* pBegin, const char* pEnd)
{
    if (pEnd - pBegin > 1 && pBegin[0] == '+' && pBegin[1] != '+' && pBegin[1] != '-') return pBegin + 1;
    return pBegin;
}

// The infinity of pToken's sign when the number it spells lies beyond the finite range; false
// when it is too small to represent. from_chars reports both as out of range; strtod tells them
// apart, returning an infinite HUGE_VAL only on overflow. pToken must end with a NUL.
bool ParseOverflow(const char* pToken, double& pValue)
{
    CLocaleScope lLocale;
    const double lValue = std::strtod(pToken, nullptr);
    if (!std::isinf(lValue)) return false;
    pValue = lValue;
    return true;
}

// The whole of [pBegin, pEnd) (NUL-terminated) as a finite or infinite double; NaN fails, and
// so do out-of-range values unless pOverflowToInfinity lets an overflow read as an infinity.
bool ParseDouble(const char* pBegin, const char* pEnd, bool pOverflowToInfinity, double& pValue)
{
    double lValue = 0.0;
    const char* lBegin = SkipPlus(pBegin, pEnd);
    const std::from_chars_result lResult = std::from_chars(lBegin, pEnd, lValue);
    if (lResult.ptr != pEnd) return false;
    if (lResult.ec == std::errc::result_out_of_range && pOverflowToInfinity) return ParseOverflow(lBegin, pValue);
    if (lResult.ec != std::errc() || std::isnan(lValue)) return false;
    pValue = lValue;
    return true;
}

bool ParseInteger(const char* pBegin, const char* pEnd, int& pValue)
{
    int lValue = 0;
    const char* lBegin = SkipPlus(pBegin, pEnd);
    const std::from_chars_result lResult = std::from_chars(lBegin, pEnd, lValue);
    if (lResult.ec != std::errc() || lResult.ptr != pEnd) return false;
    pValue = lValue;
    return true;
}

// Permission bits for a new target: those of the file it replaces, else the usual 0666 less the
// process umask (read without changing it, as umask() would for every thread).
mode_t TargetMode(const char* pTarget)
{
    struct stat lStat;
    if (stat(pTarget, &lStat) == 0) return lStat.st_mode & 07777;
    mode_t lUmask = 022;
    if (std::FILE* lStatus = std::fopen("/proc/self/status", "r"))
    {
        char lLine[128];
        unsigned lValue = 0;
        while (std::fgets(lLine, sizeof lLine, lStatus))
            if (std::sscanf(lLine, "Umask: %o", &lValue) == 1) lUmask = static_cast<mode_t>(lValue);
        std::fclose(lStatus);
    }
    return 0666 & ~lUmask;
}

} // namespace

OrvTextFile::OrvTextFile(const char* pFileType, const char* pDelimiters, const char* pComment, bool pSkipEmptyLines,
                         bool pEchoMessages)
    : mCurrentToken(mEmpty)
    , mFileType(pFileType ? pFileType : "")
    , mDelimiter{}
    , mComment(pComment ? pComment : "")
    , mSkipEmptyLines(pSkipEmptyLines)
    , mDiagnostics(pEchoMessages)
{
    mDelimiter[0] = true;
    for (const char* lByte = pDelimiters ? pDelimiters : ""; *lByte; ++lByte)
        mDelimiter[static_cast<unsigned char>(*lByte)] = true;
}

OrvTextFile::~OrvTextFile()
{
    Close();
}

// ---- Opening and closing -------------------------------------------------------------------

bool OrvTextFile::Open(const char* pPath)
{
    Close();
    mFileName = pPath ? pPath : "";
    mDiagnostics.Reset(mFileName);
    const int lFile = ::open(mFileName.c_str(), O_RDONLY | O_CLOEXEC);
    if (lFile < 0)
    {
        Error("Can't open %s file %s: %s\n", mFileType.c_str(), mFileName.c_str(), SystemReason(errno).c_str());
        return false;
    }
    int lErrno = 0;
    struct stat lStat;
    if (fstat(lFile, &lStat) != 0)
        lErrno = errno;
    else if (S_ISDIR(lStat.st_mode))
        lErrno = EISDIR;
    try
    {
        // The size is only a first guess: files in /proc or pipes report 0 and grow while read.
        size_t lUsed = 0;
        mText.resize(lErrno == 0 && lStat.st_size > 0 ? static_cast<size_t>(lStat.st_size) + 1 : 65536);
        while (lErrno == 0)
        {
            if (lUsed == mText.size()) mText.resize(mText.size() * 2);
            const ssize_t lRead = ::read(lFile, mText.data() + lUsed, mText.size() - lUsed);
            if (lRead == 0) break;
            if (lRead < 0 && errno != EINTR) lErrno = errno;
            if (lRead > 0) lUsed += static_cast<size_t>(lRead);
        }
        mText.resize(lUsed + 1);
        mText[lUsed] = '\0';
    }
    catch (const std::bad_alloc&)
    {
        lErrno = ENOMEM;
    }
    ::close(lFile);
    if (lErrno != 0)
    {
        ResetInput();
        Error("Can't read %s file %s: %s\n", mFileType.c_str(), mFileName.c_str(), SystemReason(lErrno).c_str());
        return false;
    }
    ExamineInput();
    mEndOfFile = false;
    return true;
}

bool OrvTextFile::Open(const char* pText, size_t pSize, const char* pName)
{
    Close();
    mFileName = pName ? pName : "";
    mDiagnostics.Reset(mFileName);
    try
    {
        mText.assign(pText, pText + pSize);
        mText.push_back('\0');
    }
    catch (const std::bad_alloc&)
    {
        ResetInput();
        Error("Can't read %s file %s: %s\n", mFileType.c_str(), mFileName.c_str(), SystemReason(ENOMEM).c_str());
        return false;
    }
    ExamineInput();
    mEndOfFile = false;
    return true;
}

bool OrvTextFile::Create(const char* pPath)
{
    Close();
    mFileName = pPath ? pPath : "";
    mDiagnostics.Reset(mFileName);
    mTargetPath = mFileName;
    mTempPath = mTargetPath + kTemporarySuffix + "XXXXXX";
    const int lFile = mkostemp(&mTempPath[0], O_CLOEXEC);
    if (lFile < 0)
    {
        Error("Can't create %s file %s: %s\n", mFileType.c_str(), mTargetPath.c_str(), SystemReason(errno).c_str());
        return false;
    }
    mOutput = fdopen(lFile, "w");
    if (!mOutput || fchmod(lFile, TargetMode(mTargetPath.c_str())) != 0)
    {
        const int lErrno = errno;
        if (mOutput)
            std::fclose(mOutput);
        else
            ::close(lFile);
        mOutput = nullptr;
        ::unlink(mTempPath.c_str());
        Error("Can't create %s file %s: %s\n", mFileType.c_str(), mTargetPath.c_str(), SystemReason(lErrno).c_str());
        return false;
    }
    mWriteFailed = false;
    mWriteErrno = 0;
    return true;
}

std::string OrvTextFile::TargetOfTemporary(const std::string& pPath)
{
    const size_t lSuffixSize = std::strlen(kTemporarySuffix) + kTemporaryLetters;
    if (pPath.size() <= lSuffixSize) return std::string();
    const size_t lTargetSize = pPath.size() - lSuffixSize;
    if (pPath.compare(lTargetSize, std::strlen(kTemporarySuffix), kTemporarySuffix) != 0) return std::string();
    for (size_t i = pPath.size() - kTemporaryLetters; i < pPath.size(); ++i)
        if (!std::isalnum(static_cast<unsigned char>(pPath[i]))) return std::string();
    return pPath.substr(0, lTargetSize);
}

bool OrvTextFile::Close()
{
    ResetInput();
    if (!mOutput) return true;
    return FinishOutput();
}

// Flushes the temporary file to disk and puts it in the target's place; on any failure removes
// it and leaves the target as it was.
bool OrvTextFile::FinishOutput()
{
    auto lCheck = [this](bool pSucceeded) {
        if (!pSucceeded && !mWriteFailed)
        {
            mWriteFailed = true;
            mWriteErrno = errno;
        }
    };
    lCheck(std::fflush(mOutput) == 0);
    lCheck(fsync(fileno(mOutput)) == 0);
    lCheck(std::fclose(mOutput) == 0);
    mOutput = nullptr;
    if (!mWriteFailed) lCheck(std::rename(mTempPath.c_str(), mTargetPath.c_str()) == 0);
    if (!mWriteFailed) return true;
    ::unlink(mTempPath.c_str());
    Error("Can't write %s file %s: %s\n", mFileType.c_str(), mTargetPath.c_str(), SystemReason(mWriteErrno).c_str());
    return false;
}

// Drops the input and returns line walking to its state before any Open.
void OrvTextFile::ResetInput()
{
    std::vector<char>().swap(mText);
    mFirstLine = 0;
    mRefusedAt = 0;
    mRefusal = nullptr;
    mNextLine = 0;
    mLineEnd = nullptr;
    mTokenEnd = nullptr;
    mCurrentToken = mEmpty;
    mLineNumber = 0;
    mEndOfFile = true;
}

// Finds where the first line begins and the first byte that refuses its line, once per input,
// so that line walking pays one comparison per line for it. Tokens are later terminated in
// place with NULs, which must not count.
void OrvTextFile::ExamineInput()
{
    const size_t lSize = InputSize();
    const OrvTextStart lStart = OrvExamineTextStart(mText.data(), lSize);
    mFirstLine = lStart.mMarkSize;
    mRefusal = lStart.mRefusal ? lStart.mRefusal : kOrvNulByteMessage;
    mRefusedAt = lStart.mRefusal ? 0 : OrvFindNulByte(mText.data(), lSize);
}

// Bytes of input, without the NUL that Open adds behind them.
size_t OrvTextFile::InputSize() const
{
    return mText.empty() ? 0 : mText.size() - 1;
}

// ---- Lines and tokens ----------------------------------------------------------------------

bool OrvTextFile::FirstLine()
{
    ReleaseLineEnd();
    mNextLine = mFirstLine;
    mLineNumber = 0;
    return NextLine();
}

bool OrvTextFile::NextLine()
{
    while (LoadLine())
        if (!mSkipEmptyLines || *mCurrentToken != '\0') return true;
    return false;
}

// Puts back the byte that terminates the current line, so the text can be walked again.
void OrvTextFile::ReleaseLineEnd()
{
    if (mLineEnd) *mLineEnd = mLineEndByte;
    mLineEnd = nullptr;
}

// Makes the line at mNextLine current, terminated by a NUL in place of its LF (or the CR of a
// CRLF), and finds its first token. False at the end of the input and at a refused line.
bool OrvTextFile::LoadLine()
{
    ReleaseLineEnd();
    const size_t lSize = InputSize();
    if (mNextLine >= lSize) return EndWalk();
    char* lStart = mText.data() + mNextLine;
    char* lEnd = static_cast<char*>(std::memchr(lStart, '\n', lSize - mNextLine));
    if (lEnd)
    {
        mNextLine = static_cast<size_t>(lEnd - mText.data()) + 1;
        if (lEnd > lStart && lEnd[-1] == '\r') --lEnd;
    }
    else
    {
        lEnd = mText.data() + lSize;
        mNextLine = lSize;
    }
    ++mLineNumber;
    if (mRefusedAt < static_cast<size_t>(lEnd - mText.data())) return RefuseLine();
    mLineEnd = lEnd;
    mLineEndByte = *lEnd;
    *lEnd = '\0';
    mEndOfFile = false;
    mCurrentToken = FindToken(lStart, mTokenEnd);
    return true;
}

// Reports the current line as refused and ends the walk there: what follows it is not read.
bool OrvTextFile::RefuseLine()
{
    Error("%s\n", mRefusal);
    mNextLine = InputSize();
    return EndWalk();
}

bool OrvTextFile::EndWalk()
{
    mCurrentToken = mEmpty;
    mTokenEnd = nullptr;
    mEndOfFile = true;
    return false;
}

// The first token at or after pFrom on the current line, NUL-terminated in place, with its
// terminator in pEnd; mEmpty (and pEnd at the line end) when a comment or the line end comes
// first. The token scan needs no bound: the line end holds a NUL, which is a delimiter.
char* OrvTextFile::FindToken(char* pFrom, char*& pEnd)
{
    char* lByte = pFrom;
    while (lByte < mLineEnd && mDelimiter[static_cast<unsigned char>(*lByte)]) ++lByte;
    const bool lComment = !mComment.empty() && *lByte == mComment[0] &&
                          static_cast<size_t>(mLineEnd - lByte) >= mComment.size() &&
                          std::memcmp(lByte, mComment.data(), mComment.size()) == 0;
    if (lByte == mLineEnd || lComment)
    {
        pEnd = mLineEnd;
        return mEmpty;
    }
    char* lStart = lByte;
    while (!mDelimiter[static_cast<unsigned char>(*lByte)]) ++lByte;
    *lByte = '\0';
    pEnd = lByte;
    return lStart;
}

// The token that follows the one ending at pEnd.
char* OrvTextFile::TokenAfter(char* pEnd, char*& pNewEnd)
{
    if (pEnd == mLineEnd)
    {
        pNewEnd = mLineEnd;
        return mEmpty;
    }
    return FindToken(pEnd + 1, pNewEnd);
}

void OrvTextFile::ConsumeToken()
{
    mCurrentToken = TokenAfter(mTokenEnd, mTokenEnd);
}

// ---- Keyword tables ------------------------------------------------------------------------

int OrvTextFile::MatchKeyword(const TextToken* pTable, const char* pToken)
{
    if (*pToken == '\0') return -1;
    for (int i = 0; pTable[i].keyword[0] != '\0'; ++i)
    {
        const char* lKeyword = pTable[i].keyword;
        const bool lCatchAll = lKeyword[0] == ':' && lKeyword[1] == '\0' && pToken[0] == ':';
        if (lCatchAll || EqualsIgnoringCase(lKeyword, pToken)) return i;
    }
    return -1;
}

OrvTextFile::TableCounters* OrvTextFile::FindCounters(const TextToken* pTable)
{
    for (TableCounters& lCounters : mCounters)
        if (lCounters.mTable == pTable) return &lCounters;
    return nullptr;
}

const OrvTextFile::TableCounters* OrvTextFile::FindCounters(const TextToken* pTable) const
{
    for (const TableCounters& lCounters : mCounters)
        if (lCounters.mTable == pTable) return &lCounters;
    return nullptr;
}

void OrvTextFile::InitTokens(const TextToken* pTable)
{
    size_t lSize = 0;
    while (pTable[lSize].keyword[0] != '\0') ++lSize;
    TableCounters* lCounters = FindCounters(pTable);
    if (!lCounters)
    {
        mCounters.push_back(TableCounters{pTable, {}});
        lCounters = &mCounters.back();
    }
    lCounters->mCounts.assign(lSize, 0);
}

int OrvTextFile::Check(const TextToken* pTable) const
{
    return MatchKeyword(pTable, mCurrentToken);
}

int OrvTextFile::Handle(const TextToken* pTable)
{
    const int lIndex = MatchKeyword(pTable, mCurrentToken);
    if (lIndex < 0) return -1;
    if (!FindCounters(pTable)) InitTokens(pTable);
    ++FindCounters(pTable)->mCounts[static_cast<size_t>(lIndex)];
    ConsumeToken();
    return lIndex;
}

int OrvTextFile::GetTokenCount(const TextToken* pTable, int pIndex) const
{
    const TableCounters* lCounters = FindCounters(pTable);
    if (!lCounters || pIndex < 0 || static_cast<size_t>(pIndex) >= lCounters->mCounts.size()) return 0;
    return lCounters->mCounts[static_cast<size_t>(pIndex)];
}

// ---- Typed reads ---------------------------------------------------------------------------

bool OrvTextFile::GetString(char* pBuffer, int pSize)
{
    if (*mCurrentToken == '\0' || pSize <= 0) return false;
    const size_t lLength = static_cast<size_t>(mTokenEnd - mCurrentToken);
    const size_t lKept = lLength < static_cast<size_t>(pSize) ? lLength : static_cast<size_t>(pSize) - 1;
    std::memcpy(pBuffer, mCurrentToken, lKept);
    pBuffer[lKept] = '\0';
    if (lKept < lLength)
    {
        const bool lCut = lLength > static_cast<size_t>(kQuotedTokenLength);
        Warning("Name too long, truncated to %d bytes (%.*s%s)\n", pSize - 1, kQuotedTokenLength, mCurrentToken,
                lCut ? "..." : "");
    }
    ConsumeToken();
    return true;
}

bool OrvTextFile::GetInteger(int& pValue)
{
    if (*mCurrentToken == '\0' || !ParseInteger(mCurrentToken, mTokenEnd, pValue)) return false;
    ConsumeToken();
    return true;
}

bool OrvTextFile::GetDouble(double& pValue, double pScale)
{
    return ReadNumbers(&pValue, 1, pScale, false);
}

bool OrvTextFile::GetVector(double* pValues, double pScale)
{
    return ReadNumbers(pValues, 3, pScale, false);
}

bool OrvTextFile::GetPair(double* pValues, double pScale)
{
    return ReadNumbers(pValues, 2, pScale, false);
}

bool OrvTextFile::GetPairOverflowToInfinity(double* pValues, double pScale)
{
    return ReadNumbers(pValues, 2, pScale, true);
}

// Reads pCount numbers from the current token on; stores and consumes them only when all read.
bool OrvTextFile::ReadNumbers(double* pValues, int pCount, double pScale, bool pOverflowToInfinity)
{
    double lValues[3];
    char* lToken = mCurrentToken;
    char* lEnd = mTokenEnd;
    for (int i = 0; i < pCount; ++i)
    {
        if (i > 0) lToken = TokenAfter(lEnd, lEnd);
        if (*lToken == '\0' || !ParseDouble(lToken, lEnd, pOverflowToInfinity, lValues[i])) return false;
    }
    for (int i = 0; i < pCount; ++i) pValues[i] = lValues[i] * pScale;
    mCurrentToken = TokenAfter(lEnd, mTokenEnd);
    return true;
}

// ---- Writing -------------------------------------------------------------------------------

bool OrvTextFile::Print(int pLevel, const char* pFormat, ...)
{
    if (!mOutput || mWriteFailed) return false;
    static const char sIndent[] = "                                                                ";
    CLocaleScope lLocale;
    bool lWritten = true;
    for (size_t lLeft = pLevel > 0 ? 2 * static_cast<size_t>(pLevel) : 0; lLeft > 0 && lWritten;)
    {
        const size_t lChunk = lLeft < sizeof sIndent - 1 ? lLeft : sizeof sIndent - 1;
        lWritten = std::fwrite(sIndent, 1, lChunk, mOutput) == lChunk;
        lLeft -= lChunk;
    }
    va_list lArgs;
    va_start(lArgs, pFormat);
    lWritten = lWritten && std::vfprintf(mOutput, pFormat, lArgs) >= 0;
    va_end(lArgs);
    if (!lWritten)
    {
        mWriteFailed = true;
        mWriteErrno = errno;
    }
    return lWritten;
}

bool OrvTextFile::Write(const void* pBytes, size_t pSize)
{
    if (!mOutput || mWriteFailed) return false;
    if (std::fwrite(pBytes, 1, pSize, mOutput) == pSize) return true;
    mWriteFailed = true;
    mWriteErrno = errno;
    return false;
}

// ---- Messages ------------------------------------------------------------------------------

void OrvTextFile::Warning(const char* pFormat, ...)
{
    va_list lArgs;
    va_start(lArgs, pFormat);
    Report(OrvMessage::eWarning, pFormat, lArgs);
    va_end(lArgs);
}

void OrvTextFile::Error(const char* pFormat, ...)
{
    va_list lArgs;
    va_start(lArgs, pFormat);
    Report(OrvMessage::eError, pFormat, lArgs);
    va_end(lArgs);
}

void OrvTextFile::Report(OrvMessage::EKind pKind, const char* pFormat, va_list pArgs)
{
    const auto lText = [pFormat, &pArgs]() {
        std::string lFormatted = FormatInCLocale(pFormat, pArgs);
        if (!lFormatted.empty() && lFormatted.back() == '\n') lFormatted.pop_back();
        return lFormatted;
    };
    if (pKind == OrvMessage::eError)
        mDiagnostics.Error(mLineNumber, lText());
    else
        mDiagnostics.Warning(mLineNumber, lText);
}

} // namespace orvsdk
