#include "tools/orvasf/SvgWriter.h"

#include "orvsdk/host/io/OrvNumberText.h"

#include <utility>

namespace orvasf::tool {

namespace {

constexpr int kDecimals = 2;
const char* const kReplacement = "\xEF\xBF\xBD";  // U+FFFD

void AppendNumber(std::string& pText, double pValue)
{
    orvsdk::OrvAppendFixed(pText, pValue, kDecimals);
}

// The length of the valid UTF-8 sequence at the start of pText, or 0 when it is not one.
size_t Utf8SequenceLength(std::string_view pText)
{
    const auto lByte = [&pText](size_t i) { return static_cast<unsigned char>(pText[i]); };
    const unsigned char lLead = lByte(0);
    const size_t lLength = lLead < 0x80           ? 1
                           : (lLead >> 5) == 0x6  ? 2
                           : (lLead >> 4) == 0xE  ? 3
                           : (lLead >> 3) == 0x1E ? 4
                                                  : 0;
    if (lLength == 0 || lLength > pText.size()) return 0;
    for (size_t i = 1; i < lLength; ++i)
        if ((lByte(i) & 0xC0) != 0x80) return 0;
    // Overlong forms, UTF-16 surrogates and code points beyond U+10FFFF are not valid.
    if (lLength == 2 && lLead < 0xC2) return 0;
    if (lLength == 3 && ((lLead == 0xE0 && lByte(1) < 0xA0) || (lLead == 0xED && lByte(1) >= 0xA0))) return 0;
    if (lLength == 4 && ((lLead == 0xF0 && lByte(1) < 0x90) || lLead > 0xF4 || (lLead == 0xF4 && lByte(1) >= 0x90)))
        return 0;
    return lLength;
}

const char* EntityOf(char pChar)
{
    switch (pChar)
    {
    case '&': return "&amp;";
    case '<': return "&lt;";
    case '>': return "&gt;";
    case '"': return "&quot;";
    case '\'': return "&apos;";
    default: return nullptr;
    }
}

} // namespace

void AppendXmlEscaped(std::string& pOut, std::string_view pText)
{
    while (!pText.empty())
    {
        const size_t lLength = Utf8SequenceLength(pText);
        const unsigned char lLead = static_cast<unsigned char>(pText.front());
        if (lLength == 0 || (lLead < 0x20 && lLead != '\t' && lLead != '\n' && lLead != '\r') || lLead == 0x7F)
            pOut += kReplacement;
        else if (const char* lEntity = EntityOf(pText.front()))
            pOut += lEntity;
        else
            pOut.append(pText.data(), lLength);
        pText.remove_prefix(lLength == 0 ? 1 : lLength);
    }
}

SvgWriter::SvgWriter(double pWidth, double pHeight)
{
    mText = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n";
    Begin("svg")
        .Attribute("xmlns", "http://www.w3.org/2000/svg")
        .Attribute("width", pWidth)
        .Attribute("height", pHeight);
    mText += " viewBox=\"0 0 ";
    AppendNumber(mText, pWidth);
    mText += ' ';
    AppendNumber(mText, pHeight);
    mText += '"';
    Attribute("font-family", "sans-serif").Attribute("font-size", 12.0);
    Open();
}

SvgWriter& SvgWriter::Begin(const char* pName)
{
    mBegun = pName;
    mText += '<';
    mText += pName;
    return *this;
}

SvgWriter& SvgWriter::Attribute(const char* pName, std::string_view pValue)
{
    mText += ' ';
    mText += pName;
    mText += "=\"";
    AppendXmlEscaped(mText, pValue);
    mText += '"';
    return *this;
}

SvgWriter& SvgWriter::Attribute(const char* pName, double pValue)
{
    std::string lNumber;
    AppendNumber(lNumber, pValue);
    return Attribute(pName, lNumber);
}

SvgWriter& SvgWriter::BeginLine(const SvgPoint& pFrom, const SvgPoint& pTo)
{
    return Begin("line")
        .Attribute("x1", pFrom.mX)
        .Attribute("y1", pFrom.mY)
        .Attribute("x2", pTo.mX)
        .Attribute("y2", pTo.mY);
}

SvgWriter& SvgWriter::Points(const std::vector<SvgPoint>& pPoints)
{
    mText += " points=\"";
    for (size_t i = 0; i < pPoints.size(); ++i)
    {
        if (i > 0) mText += ' ';
        AppendNumber(mText, pPoints[i].mX);
        mText += ',';
        AppendNumber(mText, pPoints[i].mY);
    }
    mText += '"';
    return *this;
}

void SvgWriter::Leaf()
{
    mText += "/>\n";
}

void SvgWriter::Open()
{
    mText += ">\n";
    mOpen.push_back(mBegun);
}

void SvgWriter::Text(std::string_view pText)
{
    mText += '>';
    AppendXmlEscaped(mText, pText);
    mText += "</";
    mText += mBegun;
    mText += ">\n";
}

void SvgWriter::Close()
{
    mText += "</";
    mText += mOpen.back();
    mText += ">\n";
    mOpen.pop_back();
}

std::string SvgWriter::Finish()
{
    while (!mOpen.empty()) Close();
    return std::move(mText);
}

} // namespace orvasf::tool
