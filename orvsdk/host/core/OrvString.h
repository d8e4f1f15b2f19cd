#ifndef ORVSDK_HOST_CORE_ORVSTRING_H
#define ORVSDK_HOST_CORE_ORVSTRING_H

#include "orvsdk/host/OrvHostExport.h"

#include <cstddef>
#include <string>

namespace orvsdk {

/// Host text value: an owned, NUL-terminated byte string.
class OrvString
{
public:
    ///@{
    /// An empty string, or a copy of pText (null counts as empty).
    OrvString() = default;
    OrvString(const char* pText) : mText(pText ? pText : "") {}  // NOLINT: implicit by design
    explicit OrvString(std::string pText) : mText(std::move(pText)) {}
    ///@}

    ///@{
    /// The text; valid until the string changes or dies.
    const char* Buffer() const { return mText.c_str(); }
    operator const char*() const { return mText.c_str(); }  // NOLINT: the module passes strings as text
    size_t GetLen() const { return mText.size(); }
    bool IsEmpty() const { return mText.empty(); }
    ///@}

    ///@{
    /// Byte-wise comparison.
    bool operator==(const OrvString& pOther) const { return mText == pOther.mText; }
    bool operator!=(const OrvString& pOther) const { return mText != pOther.mText; }
    ///@}

private:
    std::string mText;
};

/// Concatenation of a string and a text (null counts as empty).
ORVHOST_API OrvString operator+(const OrvString& pLeft, const char* pRight);

/// snprintf with a guaranteed terminator: writes at most pSize bytes including the NUL (nothing
/// when pSize is 0) and returns the length the full text would have had, or -1 on a format error.
ORVHOST_API int ORVSDK_sprintf(char* pBuffer, size_t pSize, const char* pFormat, ...)
    __attribute__((format(printf, 3, 4)));

} // namespace orvsdk

#endif
