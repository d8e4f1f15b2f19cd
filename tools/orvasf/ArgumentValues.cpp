#include "tools/orvasf/ArgumentValues.h"

#include <algorithm>
#include <cctype>
#include <charconv>
#include <cmath>
#include <filesystem>

namespace orvasf::tool {

namespace {

// Splits pText at commas; empty pieces are kept so that the caller can refuse them.
std::vector<std::string_view> SplitAtCommas(std::string_view pText)
{
    std::vector<std::string_view> lPieces;
    for (;;)
    {
        const size_t lComma = pText.find(',');
        lPieces.push_back(pText.substr(0, lComma));
        if (lComma == std::string_view::npos) return lPieces;
        pText.remove_prefix(lComma + 1);
    }
}

// A whole piece of decimal digits read as a non-negative int.
std::optional<int> ParseIndex(std::string_view pText)
{
    if (pText.empty() || pText.front() < '0' || pText.front() > '9') return std::nullopt;
    int lValue = 0;
    const auto lResult = std::from_chars(pText.data(), pText.data() + pText.size(), lValue);
    if (lResult.ec != std::errc() || lResult.ptr != pText.data() + pText.size()) return std::nullopt;
    return lValue;
}

std::optional<double> ParseFinite(std::string_view pText)
{
    if (!pText.empty() && pText.front() == '+') pText.remove_prefix(1);
    double lValue = 0.0;
    const auto lResult = std::from_chars(pText.data(), pText.data() + pText.size(), lValue);
    if (pText.empty() || lResult.ec != std::errc() || lResult.ptr != pText.data() + pText.size() ||
        !std::isfinite(lValue))
        return std::nullopt;
    return lValue;
}

} // namespace

std::optional<std::vector<FrameRange>> ParseFrameList(std::string_view pText)
{
    std::vector<FrameRange> lRanges;
    for (std::string_view lPiece : SplitAtCommas(pText))
    {
        const size_t lDash = lPiece.find('-');
        const std::optional<int> lFirst = ParseIndex(lPiece.substr(0, lDash));
        const std::optional<int> lLast = lDash == std::string_view::npos ? lFirst : ParseIndex(lPiece.substr(lDash + 1));
        if (!lFirst || !lLast || *lLast < *lFirst) return std::nullopt;
        lRanges.push_back({*lFirst, *lLast});
    }
    return lRanges;
}

std::optional<orvsdk::OrvVector4> ParseScale(std::string_view pText)
{
    const std::vector<std::string_view> lPieces = SplitAtCommas(pText);
    if (lPieces.size() != 3) return std::nullopt;
    orvsdk::OrvVector4 lScale;
    for (int i = 0; i < 3; ++i)
    {
        const std::optional<double> lValue = ParseFinite(lPieces[i]);
        if (!lValue) return std::nullopt;
        lScale[i] = *lValue;
    }
    return lScale;
}

std::string LowerCaseExtension(const std::string& pPath)
{
    std::string lExtension = std::filesystem::path(pPath).extension().string();
    std::transform(lExtension.begin(), lExtension.end(), lExtension.begin(),
                   [](unsigned char pChar) { return static_cast<char>(std::tolower(pChar)); });
    return lExtension;
}

} // namespace orvasf::tool
