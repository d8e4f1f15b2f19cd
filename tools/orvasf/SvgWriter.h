#ifndef ORVASF_TOOLS_ORVASF_SVGWRITER_H
#define ORVASF_TOOLS_ORVASF_SVGWRITER_H

#include <string>
#include <string_view>
#include <vector>

namespace orvasf::tool {

// A point of an SVG picture, in pixels, y pointing down.
struct SvgPoint
{
    double mX;
    double mY;
};

// Builds the text of an SVG picture element by element, in memory.
//
// An element starts with Begin, takes its attributes, and ends as a leaf ("<line .../>"), as a
// parent whose children follow until Close ("<g ...>...</g>"), or with text content
// ("<text ...>TEXT</text>"). Attribute values and text are escaped for XML (& < > " ') and
// made valid UTF-8 without control characters, so any joint or file name fits; numbers have two
// digits after the point whatever the locale. Costs the size of the text.
class SvgWriter
{
  public:
    // Starts the picture: the XML declaration and an <svg> of pWidth x pHeight pixels.
    SvgWriter(double pWidth, double pHeight);

    // Starts element pName (a literal: the writer keeps the pointer until the element ends).
    SvgWriter& Begin(const char* pName);
    SvgWriter& Attribute(const char* pName, std::string_view pValue);
    SvgWriter& Attribute(const char* pName, double pValue);
    // Begins a line from pFrom to pTo: the element and its x1, y1, x2 and y2.
    SvgWriter& BeginLine(const SvgPoint& pFrom, const SvgPoint& pTo);
    // The attribute points="x,y x,y ..." of a polyline.
    SvgWriter& Points(const std::vector<SvgPoint>& pPoints);

    // Ends the element begun last as "/>".
    void Leaf();
    // Ends the start tag of the element begun last; its children follow until Close.
    void Open();
    // Ends the element begun last with pText as its content.
    void Text(std::string_view pText);
    // Closes the innermost open element.
    void Close();

    // The whole picture, every open element closed; the writer is spent.
    std::string Finish();

  private:
    std::string mText;
    const char* mBegun = nullptr;
    std::vector<const char*> mOpen;
};

// Appends pText to pOut escaped for XML text and attribute values: & < > " ' as entities,
// bytes that are not valid UTF-8 and control characters other than tab and line ends as U+FFFD.
void AppendXmlEscaped(std::string& pOut, std::string_view pText);

} // namespace orvasf::tool

#endif
