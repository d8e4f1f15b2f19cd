#include "orvsdk/host/io/OrvNumberText.h"

#include <algorithm>
#include <charconv>

namespace orvsdk {

namespace {

// Appends [pBegin, pEnd) without its minus sign when the digits are all zeros ("-0.0000").
void AppendWithoutNegativeZero(std::string& pText, const char* pBegin, const char* pEnd)
{
    if (*pBegin == '-' && std::all_of(pBegin + 1, pEnd, [](char c) { return c == '0' || c == '.'; })) ++pBegin;
    pText.append(pBegin, pEnd);
}

} // namespace

void OrvAppendGeneral(std::string& pText, double pValue, int pSignificantDigits)
{
    char lText[40];
    const std::to_chars_result lResult =
        std::to_chars(lText, lText + sizeof lText, pValue, std::chars_format::general, pSignificantDigits);
    AppendWithoutNegativeZero(pText, lText, lResult.ptr);
}

void OrvAppendFixed(std::string& pText, double pValue, int pDecimals)
{
    // Up to 309 integer digits, the point and 17 decimals.
    char lText[340];
    const std::to_chars_result lResult =
        std::to_chars(lText, lText + sizeof lText, pValue, std::chars_format::fixed, pDecimals);
    AppendWithoutNegativeZero(pText, lText, lResult.ptr);
}

} // namespace orvsdk
