#include "orvsdk/host/io/OrvNumberText.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdint>

namespace orvsdk {

namespace {

// Powers of ten that doubles hold exactly.
constexpr double kPowersOfTen[] = {1e0, 1e1, 1e2, 1e3, 1e4, 1e5, 1e6, 1e7, 1e8, 1e9};
constexpr uint64_t kWholePowersOfTen[] = {1, 10, 100, 1000, 10000, 100000, 1000000, 10000000, 100000000, 1000000000};
// Decimals and significant digits the short path below serves.
constexpr int kShortPathDigits = 9;

// Appends [pBegin, pEnd) without its minus sign when the digits are all zeros ("-0.0000").
void AppendWithoutNegativeZero(std::string& pText, const char* pBegin, const char* pEnd)
{
    if (*pBegin == '-' && std::all_of(pBegin + 1, pEnd, [](char c) { return c == '0' || c == '.'; })) ++pBegin;
    pText.append(pBegin, pEnd);
}

// pMagnitude (not negative) times 10^pDecimals, rounded to the nearest whole number as its exact
// decimal expansion rounds. The product carries a rounding error of at most 6e-8 below 1e9, so
// its fraction tells the rounding direction unless it lies near one half: false there, for
// products of 1e9 or more, and for NaN, where the caller takes the general path.
bool ScaledToWhole(double pMagnitude, int pDecimals, uint64_t& pWhole)
{
    const double lScaled = pMagnitude * kPowersOfTen[pDecimals];
    if (!(lScaled < 1e9)) return false;
    const double lFloor = std::floor(lScaled);
    const double lFraction = lScaled - lFloor;
    if (std::fabs(lFraction - 0.5) < 1e-6) return false;
    pWhole = static_cast<uint64_t>(lFloor) + (lFraction > 0.5 ? 1 : 0);
    return true;
}

// Appends pWhole / 10^pDecimals with pDecimals digits after the point, '-' first when pNegative
// and pWhole is not zero; without trailing zeros (nor a bare point) when pTrimZeros.
void AppendScaled(std::string& pText, uint64_t pWhole, int pDecimals, bool pNegative, bool pTrimZeros)
{
    char lDigits[24];
    char* lEnd = lDigits + sizeof lDigits;
    char* p = lEnd;
    for (int i = 0; i < pDecimals; ++i, pWhole /= 10) *--p = static_cast<char>('0' + pWhole % 10);
    if (pDecimals > 0) *--p = '.';
    do
    {
        *--p = static_cast<char>('0' + pWhole % 10);
        pWhole /= 10;
    } while (pWhole > 0);
    if (pTrimZeros && pDecimals > 0)
    {
        while (lEnd[-1] == '0') --lEnd;
        if (lEnd[-1] == '.') --lEnd;
    }
    const bool lZero = std::all_of(p, lEnd, [](char c) { return c == '0' || c == '.'; });
    if (pNegative && !lZero) pText += '-';
    pText.append(p, lEnd);
}

// The exponent e of pMagnitude's leading digit (10^e <= pMagnitude < 10^(e+1)) for e within
// [0, kShortPathDigits - 1], -1 for [0.1, 1); -2 otherwise. The double nearest 0.1 lies above a
// tenth, so no double between a tenth and it is misplaced.
int LeadingExponent(double pMagnitude)
{
    if (!(pMagnitude >= 0.1) || !(pMagnitude < kPowersOfTen[kShortPathDigits])) return -2;
    int lExponent = -1;
    while (lExponent + 1 < kShortPathDigits && pMagnitude >= kPowersOfTen[lExponent + 1]) ++lExponent;
    return lExponent;
}

} // namespace

void OrvAppendGeneral(std::string& pText, double pValue, int pSignificantDigits)
{
    // Short path: "%.*g" prints X, the exponent of the value rounded to the precision, in plain
    // form with precision - 1 - X decimals, trailing zeros removed, when -4 <= X < precision.
    // Taken when the rounding keeps the leading digit's place (X is then the exponent read
    // before rounding) and the decimals are few enough for an exact scaling.
    const double lMagnitude = std::fabs(pValue);
    const int lExponent = LeadingExponent(lMagnitude);
    const int lDecimals = pSignificantDigits - 1 - lExponent;
    uint64_t lWhole = 0;
    if (pSignificantDigits <= kShortPathDigits && lExponent >= -1 && lExponent < pSignificantDigits &&
        lDecimals <= kShortPathDigits && ScaledToWhole(lMagnitude, lDecimals, lWhole) &&
        lWhole < kWholePowersOfTen[pSignificantDigits])
    {
        AppendScaled(pText, lWhole, lDecimals, pValue < 0.0, true);
        return;
    }
    if (pValue == 0.0)
    {
        pText += '0';
        return;
    }
    char lText[40];
    const std::to_chars_result lResult =
        std::to_chars(lText, lText + sizeof lText, pValue, std::chars_format::general, pSignificantDigits);
    AppendWithoutNegativeZero(pText, lText, lResult.ptr);
}

void OrvAppendFixed(std::string& pText, double pValue, int pDecimals)
{
    uint64_t lWhole = 0;
    if (pDecimals <= kShortPathDigits && ScaledToWhole(std::fabs(pValue), pDecimals, lWhole))
    {
        AppendScaled(pText, lWhole, pDecimals, pValue < 0.0, false);
        return;
    }
    // Up to 309 integer digits, the point and 17 decimals.
    char lText[340];
    const std::to_chars_result lResult =
        std::to_chars(lText, lText + sizeof lText, pValue, std::chars_format::fixed, pDecimals);
    AppendWithoutNegativeZero(pText, lText, lResult.ptr);
}

} // namespace orvsdk
