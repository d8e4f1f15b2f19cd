#include "tools/orvasf/PoseCsvWriter.h"

#include "orvsdk/host/core/OrvTime.h"
#include "orvsdk/host/io/OrvNumberText.h"
#include "orvsdk/host/scene/OrvNode.h"
#include "orvsdk/host/scene/OrvPoseEvaluator.h"
#include "tools/orvasf/OutputText.h"

#include <string>

namespace orvasf::tool {

namespace {

// The rows of one frame, replacing pRows; pGlobals is the evaluator's working room.
void FrameRows(const orvsdk::OrvPoseEvaluator& pEvaluator, int pFrame, double pFramesPerSecond, int pDecimals,
               std::vector<orvsdk::OrvAMatrix>& pGlobals, std::string& pRows)
{
    pEvaluator.EvaluateGlobals(orvsdk::OrvTime::FromFrame(pFrame, pFramesPerSecond), pGlobals.data());
    pRows.clear();
    const std::string lFrame = std::to_string(pFrame);
    const std::vector<orvsdk::OrvNode*>& lNodes = pEvaluator.GetNodes();
    for (size_t lNode = 0; lNode < lNodes.size(); ++lNode)
    {
        pRows += lFrame;
        pRows += ',';
        AppendCsvField(pRows, lNodes[lNode]->GetName());
        for (int i = 0; i < 3; ++i)
        {
            pRows += ',';
            orvsdk::OrvAppendFixed(pRows, pGlobals[lNode](i, 3), pDecimals);
        }
        pRows += '\n';
    }
}

} // namespace

void AppendCsvField(std::string& pText, std::string_view pField)
{
    if (pField.find_first_of(",\"\r\n") == std::string_view::npos)
    {
        pText += pField;
        return;
    }
    pText += '"';
    for (char lChar : pField)
    {
        if (lChar == '"') pText += '"';
        pText += lChar;
    }
    pText += '"';
}

bool WritePoseCsv(const orvsdk::OrvPoseEvaluator& pEvaluator, const std::vector<FrameRange>& pFrames,
                  double pFramesPerSecond, int pDecimals, OutputText& pOutput)
{
    std::vector<orvsdk::OrvAMatrix> lGlobals(static_cast<size_t>(pEvaluator.GetNodeCount()));
    std::string lRows;
    bool lWritten = pOutput.Write("frame,joint,x,y,z\n");
    for (const FrameRange& lRange : pFrames)
        for (int lFrame = lRange.mFirst; lFrame <= lRange.mLast && lWritten; ++lFrame)
        {
            FrameRows(pEvaluator, lFrame, pFramesPerSecond, pDecimals, lGlobals, lRows);
            lWritten = pOutput.Write(lRows);
        }
    return lWritten;
}

} // namespace orvasf::tool
