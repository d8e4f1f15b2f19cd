#include "orvsdk/host/io/OrvDiagnostics.h"

#include <cstdio>
#include <cstring>
#include <limits>
#include <string_view>

namespace orvsdk {

std::string OrvFormatMessage(const OrvMessage& pMessage)
{
    std::string lText = pMessage.mFile;
    if (pMessage.mLine > 0) lText += ":" + std::to_string(pMessage.mLine);
    lText += pMessage.mKind == OrvMessage::eError ? ": error: " : ": warning: ";
    return lText + pMessage.mText;
}

void OrvDiagnostics::Reset(std::string pFileName)
{
    mFileName = std::move(pFileName);
    mMessages.clear();
    mErrorCount = 0;
    mWarningCount = 0;
}

void OrvDiagnostics::Error(int pLine, std::string pText)
{
    if (mErrorCount < std::numeric_limits<int>::max()) ++mErrorCount;
    Keep(OrvMessage::eError, pLine, std::move(pText));
}

// Counts a warning; true when it is one of the kept ones. The first one past the cap leaves the
// note kTooManyWarnings instead (on the line of the warning it stands for), later ones nothing.
bool OrvDiagnostics::CountWarning(int pLine)
{
    if (mWarningCount < std::numeric_limits<int>::max()) ++mWarningCount;
    if (mWarningCount <= kMaxKeptWarnings) return true;
    if (mWarningCount == kMaxKeptWarnings + 1) Keep(OrvMessage::eWarning, pLine, kTooManyWarnings);
    return false;
}

void OrvDiagnostics::Keep(OrvMessage::EKind pKind, int pLine, std::string pText)
{
    mMessages.push_back(OrvMessage{pKind, mFileName, pLine, std::move(pText)});
    if (mEcho) std::fprintf(stderr, "%s\n", OrvFormatMessage(mMessages.back()).c_str());
}

OrvTextStart OrvExamineTextStart(const char* pBytes, size_t pSize)
{
    const std::string_view lStart(pBytes, pSize);
    OrvTextStart lResult;
    if (lStart.substr(0, 3) == "\xEF\xBB\xBF") lResult.mMarkSize = 3;
    const std::string_view lTwo = lStart.substr(0, 2);
    if (lTwo == "\xFF\xFE" || lTwo == "\xFE\xFF") lResult.mRefusal = kOrvUtf16Message;
    return lResult;
}

size_t OrvFindNulByte(const char* pBytes, size_t pSize)
{
    const void* lNul = std::memchr(pBytes, '\0', pSize);
    return lNul ? static_cast<size_t>(static_cast<const char*>(lNul) - pBytes) : pSize;
}

} // namespace orvsdk
