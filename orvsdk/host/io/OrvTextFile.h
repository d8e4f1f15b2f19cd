#ifndef ORVSDK_HOST_IO_ORVTEXTFILE_H
#define ORVSDK_HOST_IO_ORVTEXTFILE_H

#include "orvsdk/host/OrvHostExport.h"
#include "orvsdk/host/io/OrvDiagnostics.h"

#include <cstdarg>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <string>
#include <vector>

namespace orvsdk {

/// One keyword of a keyword table. Tables are static arrays ending with a record whose keyword
/// is "". A keyword's code is its index. The match counter is kept for layout compatibility;
/// OrvTextFile never writes it (see OrvTextFile::GetTokenCount).
struct TextToken
{
    const char* keyword; ///< the keyword; "" ends the table
    int32_t count;       ///< match counter, never written
};

/// Line-oriented text file with keyword tables, typed reads, indented printing and messages.
///
/// Reading: Open takes the whole input into memory once (a private copy); lines and tokens are
/// then found in place, with no allocation per line or per token. A token is a run of bytes none
/// of which is a delimiter. The comment string begins a comment wherever a token would begin, and
/// the comment runs to the end of the line. Lines end with LF or CRLF. Keyword matching is
/// case-insensitive (ASCII); a table entry that is exactly ":" matches any token beginning with
/// ':' that no earlier entry matched.
///
/// The input must be ASCII or an ASCII-compatible 8-bit text: a UTF-8 byte order mark at its start
/// is skipped; a line holding a NUL byte (comments included) is refused with the error
/// kOrvNulByteMessage, and the first line of a text that starts with a UTF-16 byte order mark with
/// kOrvUtf16Message. A refused line is reported when line walking reaches it, at its line number, and
/// ends the walk there as the end of the input would.
///
/// Writing: Create opens a temporary file beside the target; Close replaces the target with it
/// only when every write succeeded, so a failed or interrupted write never touches an existing
/// target. Numbers are always printed with '.' as the decimal point, whatever the process locale.
///
/// An instance is used by one thread at a time; different instances share nothing.
class ORVHOST_API OrvTextFile
{
public:
    ///@{
    /// pFileType names the kind of file in messages ("ASF"); pDelimiters and pComment are the
    /// lexical rules above. pSkipEmptyLines: FirstLine/NextLine pass over lines holding no token.
    /// pEchoMessages: every warning and error is also printed on standard error as it is reported.
    OrvTextFile(const char* pFileType, const char* pDelimiters, const char* pComment, bool pSkipEmptyLines,
                bool pEchoMessages);
    virtual ~OrvTextFile();
    OrvTextFile(const OrvTextFile&) = delete;
    OrvTextFile& operator=(const OrvTextFile&) = delete;
    ///@}

    /// Opens pPath for reading; false (with an error message naming the file and the system's
    /// reason) when it cannot be read whole, for example a missing file or a directory.
    bool Open(const char* pPath);
    /// Reads from pSize bytes at pText (copied; the caller keeps its buffer). pName stands for the
    /// file name in messages.
    bool Open(const char* pText, size_t pSize, const char* pName = "<memory>");
    /// Opens pPath for writing through a temporary file beside it; false (with an error) when the
    /// temporary file cannot be created.
    bool Create(const char* pPath);
    /// Ends reading or writing. When writing: flushes, and renames the temporary file over the
    /// target; false when any write, the flush or the rename failed, in which case the temporary
    /// file is removed and the target left as it was. Safe to call more than once.
    bool Close();
    /// The target path of a temporary file Create makes (the target's path followed by ".tmp" and
    /// six letters or digits), or "" when pPath is not named like one. A process killed between
    /// Create and Close leaves such a file behind; nothing else removes it.
    static std::string TargetOfTemporary(const std::string& pPath);

    ///@{
    /// Line walking. FirstLine makes the first line current (false when there is none); NextLine
    /// the next one. Both make the current token the line's first token; with pSkipEmptyLines
    /// they pass over lines holding no token. Once no line is left, or on reaching a refused line
    /// (which draws its error each time it is reached), they return false and mEndOfFile is true.
    /// Cost: constant per line besides the line's own bytes.
    bool FirstLine();
    bool NextLine();
    ///@}

    /// False while an input is open and line walking has not passed its last line (or a refused one).
    bool mEndOfFile = true;
    /// The current token, NUL-terminated; "" when the current line holds no further token.
    char* mCurrentToken;

    ///@{
    /// Keyword tables. InitTokens clears this file's match counters for pTable. Check returns the
    /// index of the entry matching the current token (table order, first match wins), or -1 when
    /// none matches or no token is left; it consumes nothing. Handle does the same, and on a
    /// match consumes the token and raises this file's counter for the entry.
    void InitTokens(const TextToken* pTable);
    int Check(const TextToken* pTable) const;
    int Handle(const TextToken* pTable);
    ///@}
    /// How often Handle matched entry pIndex of pTable since InitTokens(pTable) on this file.
    int GetTokenCount(const TextToken* pTable, int pIndex) const;

    ///@{
    /// Typed reads of the next tokens of the current line. Each returns true and consumes its
    /// tokens only when all of them read; on failure the target is unchanged and the current token
    /// stays. A number must be the whole token, parsed independently of the locale; "inf", "-inf"
    /// and "+inf" are accepted, "nan" and out-of-range values such as 1e400 are not. pScale
    /// multiplies every number read.
    /// GetString copies the token into pBuffer (pSize > 0 bytes with the terminator); a longer
    /// token is truncated to pSize - 1 bytes and draws a warning naming it.
    bool GetString(char* pBuffer, int pSize);
    bool GetDouble(double& pValue, double pScale);
    bool GetInteger(int& pValue);
    bool GetVector(double* pValues, double pScale);  ///< three numbers
    bool GetPair(double* pValues, double pScale);    ///< two numbers
    ///@}
    /// Two numbers like GetPair, except that one beyond the finite range (such as 1e400 or
    /// -1e309) reads as the infinity of its sign instead of failing; one too small to represent
    /// (such as 1e-400) still fails.
    bool GetPairOverflowToInfinity(double* pValues, double pScale);

    /// Writes 2 * pLevel spaces, then the printf-formatted text (C locale). Returns false once any
    /// write has failed; the failure also makes Close return false.
    bool Print(int pLevel, const char* pFormat, ...) __attribute__((format(printf, 3, 4)));
    /// Writes pSize bytes at pBytes as they are (binary data, NUL bytes included). Returns false
    /// once any write has failed, like Print.
    bool Write(const void* pBytes, size_t pSize);

    ///@{
    /// Report a warning or an error on the current line (line 0 before the first line);
    /// printf-style, formatted in the C locale, a final line end dropped. The message goes to this
    /// file's diagnostics (see OrvDiagnostics for what is kept) and, with pEchoMessages, is printed
    /// on standard error as "FILE:LINE: warning: TEXT" or "FILE:LINE: error: TEXT".
    void Warning(const char* pFormat, ...) __attribute__((format(printf, 2, 3)));
    void Error(const char* pFormat, ...) __attribute__((format(printf, 2, 3)));
    ///@}

    ///@{
    /// The messages of the file last opened or created, in the order reported, with their counts.
    const std::vector<OrvMessage>& GetMessages() const { return mDiagnostics.GetMessages(); }
    int GetErrorCount() const { return mDiagnostics.GetErrorCount(); }
    int GetWarningCount() const { return mDiagnostics.GetWarningCount(); }
    ///@}
    /// The file name given to Open or Create.
    const char* GetFileName() const { return mFileName.c_str(); }
    /// 1-based number of the current line; 0 before FirstLine.
    int GetLineNumber() const { return mLineNumber; }

private:
    // This file's match counters for one keyword table.
    struct TableCounters
    {
        const TextToken* mTable;
        std::vector<int> mCounts;
    };

    void Report(OrvMessage::EKind pKind, const char* pFormat, va_list pArgs);
    void ResetInput();
    void ExamineInput();
    size_t InputSize() const;
    void ReleaseLineEnd();
    bool LoadLine();
    bool RefuseLine();
    bool EndWalk();
    char* FindToken(char* pFrom, char*& pEnd);
    char* TokenAfter(char* pEnd, char*& pNewEnd);
    void ConsumeToken();
    bool ReadNumbers(double* pValues, int pCount, double pScale, bool pOverflowToInfinity);
    TableCounters* FindCounters(const TextToken* pTable);
    const TableCounters* FindCounters(const TextToken* pTable) const;
    bool FinishOutput();
    static int MatchKeyword(const TextToken* pTable, const char* pToken);

    std::string mFileType;
    bool mDelimiter[256];      // indexed by byte value; NUL is always one (tokens end in place)
    std::string mComment;
    bool mSkipEmptyLines;

    std::string mFileName;
    std::vector<char> mText;    // the whole input plus a NUL; tokens are terminated in place
    size_t mFirstLine = 0;      // offset of the first line: past a UTF-8 byte order mark
    size_t mRefusedAt = 0;      // offset of the first byte that refuses its line; the input size when none
    const char* mRefusal = nullptr;  // the error text for that line
    size_t mNextLine = 0;       // offset of the line after the current one
    char* mLineEnd = nullptr;   // end of the current line's content, NUL while the line is current
    char mLineEndByte = '\0';   // the byte that NUL replaced at mLineEnd
    char* mTokenEnd = nullptr;  // terminator of mCurrentToken (mLineEnd when no token is left)
    int mLineNumber = 0;
    char mEmpty[1] = {'\0'};

    std::vector<TableCounters> mCounters;
    OrvDiagnostics mDiagnostics;

    std::string mTargetPath;
    std::string mTempPath;
    std::FILE* mOutput = nullptr;
    bool mWriteFailed = false;
    int mWriteErrno = 0;        // errno of the first failed write
};

} // namespace orvsdk

#endif
