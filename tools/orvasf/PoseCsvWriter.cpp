#include "tools/orvasf/PoseCsvWriter.h"

#include "orvsdk/host/scene/OrvNode.h"
#include "orvsdk/host/core/OrvTime.h"
#include "tools/orvasf/OutputText.h"

#include <charconv>
#include <cmath>
#include <string>

namespace orvasf::tool {

namespace {

// Appends pValue with four decimals; to_chars ignores the process locale. Values that round to
// zero print as 0.0000, never -0.0000.
void AppendFixed(std::string& pText, double pValue)
{
    if (std::fabs(pValue) < 0.00005) pValue = 0.0;
    char lBuffer[64];
    const auto lResult = std::to_chars(lBuffer, lBuffer + sizeof lBuffer, pValue, std::chars_format::fixed, 4);
    pText.append(lBuffer, lResult.ptr);
}

// A CSV field: quoted when it holds a comma, a quote or a line break, quotes doubled.
void AppendField(std::string& pText, const char* pField)
{
    const std::string_view lField(pField);
    if (lField.find_first_of(",\"\r\n") == std::string_view::npos)
    {
        pText += lField;
        return;
    }
    pText += '"';
    for (char lChar : lField)
    {
        if (lChar == '"') pText += '"';
        pText += lChar;
    }
    pText += '"';
}

std::string FrameRows(const std::vector<orvsdk::OrvNode*>& pNodes, int pFrame, double pFramesPerSecond)
{
    const orvsdk::OrvTime lTime = orvsdk::OrvTime::FromFrame(pFrame, pFramesPerSecond);
    std::string lRows;
    for (orvsdk::OrvNode* lNode : pNodes)
    {
        const orvsdk::OrvVector4 lPosition = lNode->EvaluateGlobalTransform(lTime).GetT();
        lRows += std::to_string(pFrame);
        lRows += ',';
        AppendField(lRows, lNode->GetName());
        for (int i = 0; i < 3; ++i)
        {
            lRows += ',';
            AppendFixed(lRows, lPosition[i]);
        }
        lRows += '\n';
    }
    return lRows;
}

} // namespace

bool WritePoseCsv(const std::vector<orvsdk::OrvNode*>& pNodes, const std::vector<FrameRange>& pFrames,
                  double pFramesPerSecond, OutputText& pOutput)
{
    bool lWritten = pOutput.Write("frame,joint,x,y,z\n");
    for (const FrameRange& lRange : pFrames)
        for (int lFrame = lRange.mFirst; lFrame <= lRange.mLast && lWritten; ++lFrame)
            lWritten = pOutput.Write(FrameRows(pNodes, lFrame, pFramesPerSecond));
    return lWritten;
}

} // namespace orvasf::tool
