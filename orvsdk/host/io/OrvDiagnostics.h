#ifndef ORVSDK_HOST_IO_ORVDIAGNOSTICS_H
#define ORVSDK_HOST_IO_ORVDIAGNOSTICS_H

#include "orvsdk/host/OrvHostExport.h"

#include <cstddef>
#include <string>
#include <utility>
#include <vector>

namespace orvsdk {

/// One warning or error about a file.
struct ORVHOST_API OrvMessage
{
    /// Warning or error.
    enum EKind
    {
        eWarning,
        eError
    };
    EKind mKind = eWarning; ///< warning or error
    std::string mFile; ///< the file name as the reader was given it
    int mLine = 0;     ///< 1-based; 0 when the message concerns the whole file
    std::string mText; ///< without a final line end
};

/// "FILE:LINE: warning: TEXT", "FILE:LINE: error: TEXT", or "FILE: error: TEXT" for line 0.
ORVHOST_API std::string OrvFormatMessage(const OrvMessage& pMessage);

/// The messages of one file being read or written: every error, and the first kMaxKeptWarnings
/// warnings followed by the warning kTooManyWarnings, so that a file of millions of bad lines
/// cannot fill the memory. Counts cover every message reported, kept or not. With echo on, each
/// kept message is also printed on standard error, formatted, as it is reported. Used by one
/// thread at a time.
class ORVHOST_API OrvDiagnostics
{
public:
    /// Warnings kept per file; later ones are only counted.
    static constexpr int kMaxKeptWarnings = 1000;
    /// Text of the warning kept after the last one kept.
    static constexpr const char* kTooManyWarnings = "Too many warnings, the others are not reported";

    /// No messages yet; pEcho prints each kept message on standard error too.
    explicit OrvDiagnostics(bool pEcho = false) : mEcho(pEcho) {}

    /// Forgets every message and count; later messages name pFileName.
    void Reset(std::string pFileName);

    /// Reports an error on pLine; always kept.
    void Error(int pLine, std::string pText);
    /// Reports a warning on pLine. pMakeText() gives its text (std::string) and is called only
    /// when the warning is kept, so callers pay for formatting only the warnings anyone sees.
    template <typename TMakeText>
    void Warning(int pLine, TMakeText&& pMakeText);

    /// The kept messages, in the order reported.
    const std::vector<OrvMessage>& GetMessages() const { return mMessages; }
    ///@{
    /// Errors and warnings reported since the last Reset, kept or not.
    int GetErrorCount() const { return mErrorCount; }
    int GetWarningCount() const { return mWarningCount; }
    ///@}

private:
    bool CountWarning(int pLine);
    void Keep(OrvMessage::EKind pKind, int pLine, std::string pText);

    bool mEcho;
    std::string mFileName;
    std::vector<OrvMessage> mMessages;
    int mErrorCount = 0;
    int mWarningCount = 0;
};

template <typename TMakeText>
void OrvDiagnostics::Warning(int pLine, TMakeText&& pMakeText)
{
    if (CountWarning(pLine)) Keep(OrvMessage::eWarning, pLine, std::forward<TMakeText>(pMakeText)());
}

///@{
/// Error texts of lines a text reader refuses.
inline constexpr const char* kOrvNulByteMessage = "NUL byte in line";
inline constexpr const char* kOrvUtf16Message = "File is UTF-16 text; save it as ASCII or UTF-8";
///@}

/// What the first bytes of a text say about its encoding. Readers accept ASCII and UTF-8 (whose
/// byte order mark they skip) and refuse UTF-16, whose byte order mark begins with 0xFF 0xFE or
/// 0xFE 0xFF.
struct OrvTextStart
{
    size_t mMarkSize = 0;           ///< bytes of a UTF-8 byte order mark to skip: 0 or 3
    const char* mRefusal = nullptr; ///< kOrvUtf16Message for UTF-16 text; null otherwise
};
/// What the first pSize bytes at pBytes say; reads at most three of them.
ORVHOST_API OrvTextStart OrvExamineTextStart(const char* pBytes, size_t pSize);

/// Offset of the first NUL byte among pSize bytes at pBytes; pSize when there is none.
ORVHOST_API size_t OrvFindNulByte(const char* pBytes, size_t pSize);

} // namespace orvsdk

#endif
