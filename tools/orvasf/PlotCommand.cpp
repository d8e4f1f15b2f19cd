#include "tools/orvasf/PlotCommand.h"

#include "orvsdk/host/anim/OrvAnimCurve.h"
#include "orvsdk/host/io/OrvNumberText.h"
#include "orvsdk/host/scene/OrvNode.h"
#include "tools/orvasf/ExitStatus.h"
#include "tools/orvasf/HostSceneWalk.h"
#include "tools/orvasf/MessagePrinter.h"
#include "tools/orvasf/OutputText.h"
#include "tools/orvasf/SvgWriter.h"
#include "tools/orvasf/ToolImport.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <optional>

namespace orvasf::tool {

namespace {

// The plot area inside the picture, in pixels.
constexpr double kWidth = 860.0;
constexpr double kHeight = 460.0;
constexpr double kAreaLeft = 80.0;
constexpr double kAreaTop = 40.0;
constexpr double kAreaWidth = 560.0;
constexpr double kAreaHeight = 350.0;
constexpr int kTickTarget = 6;

const char* const kChannelNames[] = {"X", "Y", "Z"};
const char* const kChannelColours[] = {"#d62728", "#2ca02c", "#1f77b4"};

// One drawn curve: its channel and its keys as (seconds, value).
struct Series
{
    unsigned mChannel;
    const char* mSet;  // "keys", or "before" / "after" the compared step
    std::vector<SvgPoint> mKeys;
    int mNotFinite = 0;  // keys left out: an infinite or undefined value cannot be drawn
};

// An axis range whose ends are multiples of its tick step.
struct Axis
{
    double mMin;
    double mMax;
    double mStep;
};

Axis NiceAxis(double pMin, double pMax)
{
    if (!(pMax > pMin))
    {
        const double lHalf = pMin == 0.0 ? 1.0 : std::abs(pMin) * 0.5;
        pMin -= lHalf;
        pMax += lHalf;
    }
    const double lRough = (pMax - pMin) / kTickTarget;
    const double lPower = std::pow(10.0, std::floor(std::log10(lRough)));
    const double lFraction = lRough / lPower;
    const double lStep = (lFraction <= 1.0 ? 1.0 : lFraction <= 2.0 ? 2.0 : lFraction <= 5.0 ? 5.0 : 10.0) * lPower;
    return {std::floor(pMin / lStep) * lStep, std::ceil(pMax / lStep) * lStep, lStep};
}

orvsdk::OrvNode* FindJoint(orvsdk::OrvNode* pRoot, const std::string& pName)
{
    for (orvsdk::OrvNode* lNode : CollectNodes(pRoot))
        if (pName == lNode->GetName()) return lNode;
    return nullptr;
}

std::string JointNames(orvsdk::OrvNode* pRoot)
{
    std::string lNames;
    for (orvsdk::OrvNode* lNode : CollectNodes(pRoot))
        lNames += (lNames.empty() ? "" : ", ") + std::string(lNode->GetName());
    return lNames;
}

// The keys of every curve on pProperty of pJoint, appended to pSeries as set pSet.
void AppendSeries(orvsdk::OrvNode* pJoint, orvsdk::OrvAnimStack* pTake, const std::string& pProperty, const char* pSet,
                  std::vector<Series>& pSeries)
{
    for (const CurveBinding& lBinding : CollectCurves({pJoint}, pTake))
    {
        if (pProperty != lBinding.mProperty) continue;
        Series lSeries{lBinding.mChannel, pSet, {}};
        for (int i = 0; i < lBinding.mCurve->KeyGetCount(); ++i)
        {
            const float lValue = lBinding.mCurve->KeyGetValue(i);
            if (std::isfinite(lValue))
                lSeries.mKeys.push_back({lBinding.mCurve->KeyGetTime(i).GetSecondDouble(), lValue});
            else
                ++lSeries.mNotFinite;
        }
        pSeries.push_back(std::move(lSeries));
    }
}

// The import settings of the run before and after the compared step: the step off, then on.
std::pair<OrvImportSettings, OrvImportSettings> ComparedSettings(const OrvImportSettings& pSettings,
                                                                 const std::string& pStep)
{
    std::pair<OrvImportSettings, OrvImportSettings> lSettings{pSettings, pSettings};
    if (pStep == "reduce")
    {
        lSettings.first.mReduceKeys = false;
        lSettings.second.mReduceKeys = true;
        return lSettings;
    }
    lSettings.first.mRotationFilter = OrvRotationFilter::eNone;
    lSettings.second.mRotationFilter =
        pStep == "gimbal" ? OrvRotationFilter::eGimbalKiller : OrvRotationFilter::eUnroll;
    return lSettings;
}

std::string Number(double pValue)
{
    std::string lText;
    orvsdk::OrvAppendGeneral(lText, pValue, 10);
    return lText;
}

SvgPoint ToPicture(const Axis& pTime, const Axis& pValue, const SvgPoint& pKey)
{
    return {kAreaLeft + (pKey.mX - pTime.mMin) / (pTime.mMax - pTime.mMin) * kAreaWidth,
            kAreaTop + (pValue.mMax - pKey.mY) / (pValue.mMax - pValue.mMin) * kAreaHeight};
}

void DrawText(SvgWriter& pSvg, double pX, double pY, const char* pAnchor, const std::string& pText)
{
    pSvg.Begin("text").Attribute("x", pX).Attribute("y", pY).Attribute("text-anchor", pAnchor).Text(pText);
}

void DrawLine(SvgWriter& pSvg, SvgPoint pFrom, SvgPoint pTo, const char* pColour, double pWidth = 1.0)
{
    pSvg.BeginLine(pFrom, pTo).Attribute("stroke", pColour).Attribute("stroke-width", pWidth).Leaf();
}

// The frame of the plot: its area (with its ranges as data attributes), grid lines, tick labels
// and axis titles.
void DrawAxes(SvgWriter& pSvg, const Axis& pTime, const Axis& pValue, const std::string& pValueTitle)
{
    pSvg.Begin("rect").Attribute("x", kAreaLeft).Attribute("y", kAreaTop).Attribute("width", kAreaWidth);
    pSvg.Attribute("height", kAreaHeight).Attribute("fill", "none").Attribute("stroke", "#000000");
    pSvg.Attribute("data-time-min", Number(pTime.mMin)).Attribute("data-time-max", Number(pTime.mMax));
    pSvg.Attribute("data-value-min", Number(pValue.mMin)).Attribute("data-value-max", Number(pValue.mMax)).Leaf();
    const double lBottom = kAreaTop + kAreaHeight;
    for (int i = 0; i <= static_cast<int>(std::lround((pTime.mMax - pTime.mMin) / pTime.mStep)); ++i)
    {
        const double lTime = pTime.mMin + i * pTime.mStep;
        const double lX = ToPicture(pTime, pValue, {lTime, 0.0}).mX;
        DrawLine(pSvg, {lX, kAreaTop}, {lX, lBottom}, "#e0e0e0");
        DrawText(pSvg, lX, lBottom + 16.0, "middle", Number(lTime));
    }
    for (int i = 0; i <= static_cast<int>(std::lround((pValue.mMax - pValue.mMin) / pValue.mStep)); ++i)
    {
        const double lValue = pValue.mMin + i * pValue.mStep;
        const double lY = ToPicture(pTime, pValue, {0.0, lValue}).mY;
        DrawLine(pSvg, {kAreaLeft, lY}, {kAreaLeft + kAreaWidth, lY}, "#e0e0e0");
        DrawText(pSvg, kAreaLeft - 6.0, lY + 4.0, "end", Number(lValue));
    }
    DrawText(pSvg, kAreaLeft + kAreaWidth / 2.0, lBottom + 36.0, "middle", "time (seconds)");
    pSvg.Begin("text").Attribute("x", 0.0).Attribute("y", 0.0).Attribute("text-anchor", "middle");
    pSvg.Attribute("transform", "translate(18 " + Number(kAreaTop + kAreaHeight / 2.0) + ") rotate(-90)")
        .Text(pValueTitle);
}

void DrawLegend(SvgWriter& pSvg, const std::string& pStep)
{
    const double lLeft = kAreaLeft + kAreaWidth + 20.0;
    pSvg.Begin("g").Attribute("data-legend", "true").Open();
    for (unsigned lChannel = 0; lChannel < 3; ++lChannel)
    {
        const double lY = kAreaTop + 10.0 + lChannel * 20.0;
        DrawLine(pSvg, {lLeft, lY}, {lLeft + 24.0, lY}, kChannelColours[lChannel], 2.5);
        DrawText(pSvg, lLeft + 30.0, lY + 4.0, "start", kChannelNames[lChannel]);
    }
    if (!pStep.empty())
    {
        pSvg.BeginLine({lLeft, kAreaTop + 80.0}, {lLeft + 24.0, kAreaTop + 80.0}).Attribute("stroke", "#000000");
        pSvg.Attribute("stroke-width", 1.5).Attribute("stroke-dasharray", "6 4").Leaf();
        DrawLine(pSvg, {lLeft, kAreaTop + 100.0}, {lLeft + 24.0, kAreaTop + 100.0}, "#000000", 1.5);
        DrawText(pSvg, lLeft + 30.0, kAreaTop + 84.0, "start", "dashed: before " + pStep);
        DrawText(pSvg, lLeft + 30.0, kAreaTop + 104.0, "start", "solid: after " + pStep);
    }
    pSvg.Close();
}

// The axes that hold every key of pSeries: its time range and its value range.
std::pair<Axis, Axis> AxesOf(const std::vector<Series>& pSeries)
{
    double lTimeMin = INFINITY, lTimeMax = -INFINITY, lValueMin = INFINITY, lValueMax = -INFINITY;
    for (const Series& lSeries : pSeries)
        for (const SvgPoint& lKey : lSeries.mKeys)
        {
            lTimeMin = std::min(lTimeMin, lKey.mX);
            lTimeMax = std::max(lTimeMax, lKey.mX);
            lValueMin = std::min(lValueMin, lKey.mY);
            lValueMax = std::max(lValueMax, lKey.mY);
        }
    if (lTimeMin > lTimeMax) return {NiceAxis(0.0, 1.0), NiceAxis(0.0, 1.0)};
    return {NiceAxis(lTimeMin, lTimeMax), NiceAxis(lValueMin, lValueMax)};
}

// What the legend says of a series it cannot show whole, or empty. A curve the key reducer
// emptied leaves the channel at the property's own value.
std::string SeriesNote(const Series& pSeries)
{
    const std::string lName = std::string(kChannelNames[pSeries.mChannel]) + " " + pSeries.mSet + ": ";
    if (pSeries.mNotFinite > 0) return lName + std::to_string(pSeries.mNotFinite) + " not finite, left out";
    return pSeries.mKeys.empty() ? lName + "no keys" : std::string();
}

void DrawSeries(SvgWriter& pSvg, const Series& pSeries, const std::string& pJoint, const Axis& pTime,
                const Axis& pValue)
{
    std::vector<SvgPoint> lPoints;
    for (const SvgPoint& lKey : pSeries.mKeys) lPoints.push_back(ToPicture(pTime, pValue, lKey));
    pSvg.Begin("polyline").Attribute("data-joint", pJoint).Attribute("data-channel", kChannelNames[pSeries.mChannel]);
    pSvg.Attribute("data-set", pSeries.mSet).Attribute("fill", "none");
    pSvg.Attribute("stroke", kChannelColours[pSeries.mChannel]).Attribute("stroke-width", 1.5);
    if (std::strcmp(pSeries.mSet, "before") == 0) pSvg.Attribute("stroke-dasharray", "6 4");
    pSvg.Points(lPoints).Leaf();
}

std::string Plot(const PlotCommandOptions& pOptions, const std::vector<Series>& pSeries)
{
    const auto [lTime, lValue] = AxesOf(pSeries);
    SvgWriter lSvg(kWidth, kHeight);
    lSvg.Begin("rect").Attribute("width", "100%").Attribute("height", "100%").Attribute("fill", "#ffffff").Leaf();
    DrawText(lSvg, kAreaLeft, 24.0, "start",
             InputNames(pOptions.mImport) + ": " + pOptions.mJoint + " " + pOptions.mChannels + " keys");
    DrawAxes(lSvg, lTime, lValue,
             pOptions.mChannels == "rotation" ? "rotation (degrees)" : "translation (scene units; cm for ASF)");
    double lNoteY = kAreaTop + 130.0;
    for (const Series& lSeries : pSeries)
    {
        if (!lSeries.mKeys.empty()) DrawSeries(lSvg, lSeries, pOptions.mJoint, lTime, lValue);
        const std::string lNote = SeriesNote(lSeries);
        if (lNote.empty()) continue;
        DrawText(lSvg, kAreaLeft + kAreaWidth + 20.0, lNoteY, "start", lNote);
        lNoteY += 20.0;
    }
    DrawLegend(lSvg, pOptions.mCompareFilter);
    return lSvg.Finish();
}

// Imports with pSettings and appends the joint's curves as set pSet. The exit status of a
// failure, or eSuccess.
int ImportSeries(const PlotCommandOptions& pOptions, InputFormat pFormat, const OrvImportSettings& pSettings,
                 const char* pSet, std::vector<Series>& pSeries)
{
    ImportOptions lImportOptions = pOptions.mImport;
    lImportOptions.mSettings = pSettings;
    const OrvImportResult lImport = ImportFiles(lImportOptions, pFormat);
    if (!lImport.mSucceeded) return eInputRefused;
    orvsdk::OrvNode* lJoint = FindJoint(lImport.mRoot, pOptions.mJoint);
    if (!lJoint)
    {
        PrintToolError("no joint \"" + pOptions.mJoint + "\" in " + pOptions.mImport.mAsfPath +
                       "; its joints are: " + JointNames(lImport.mRoot));
        return eUsageError;
    }
    AppendSeries(lJoint, lImport.mTake, pOptions.mChannels, pSet, pSeries);
    return eSuccess;
}

} // namespace

void AddPlotOptions(CLI::App& pCommand, PlotCommandOptions& pOptions)
{
    pCommand.add_option("--joint", pOptions.mJoint, "Joint (host node) whose curves are drawn")
        ->required()
        ->type_name("NAME");
    pCommand
        .add_option("--channels", pOptions.mChannels, "Curves to draw: rotation (degrees) or translation (scene units)")
        ->check(CLI::IsMember({"rotation", "translation"}))
        ->capture_default_str();
    pCommand
        .add_option("--compare-filter", pOptions.mCompareFilter,
                    "Import without and with this step (the rotation filter or the key reducer) and draw both: before "
                    "dashed, after solid")
        ->check(CLI::IsMember({"gimbal", "unroll", "reduce"}))
        ->type_name("STEP");
    pCommand.add_option("-o,--output", pOptions.mOutputPath, "SVG file to write")->required()->type_name("OUT.svg");
}

int RunPlot(const PlotCommandOptions& pOptions)
{
    const std::optional<InputFormat> lFormat = CheckedInputFormat(pOptions.mImport, "plot");
    if (!lFormat) return eUsageError;
    if (*lFormat == InputFormat::eAsf && pOptions.mImport.mMotionPath.empty())
    {
        PrintToolError("plot draws a motion's curves: give an ASF input its --motion");
        return eUsageError;
    }
    if (*lFormat != InputFormat::eAsf && !pOptions.mCompareFilter.empty())
    {
        PrintToolError("--compare-filter goes with an ASF input; BVH and glTF imports run no filter");
        return eUsageError;
    }
    std::vector<Series> lSeries;
    int lStatus = eSuccess;
    if (pOptions.mCompareFilter.empty())
        lStatus = ImportSeries(pOptions, *lFormat, pOptions.mImport.mSettings, "keys", lSeries);
    else
    {
        const auto [lBefore, lAfter] = ComparedSettings(pOptions.mImport.mSettings, pOptions.mCompareFilter);
        lStatus = ImportSeries(pOptions, *lFormat, lBefore, "before", lSeries);
        if (lStatus == eSuccess) lStatus = ImportSeries(pOptions, *lFormat, lAfter, "after", lSeries);
    }
    if (lStatus != eSuccess) return lStatus;

    OutputText lOutput("SVG");
    if (!lOutput.Open(pOptions.mOutputPath)) return eOutputFailed;
    const bool lWritten = lOutput.Write(Plot(pOptions, lSeries));
    return lOutput.Close() && lWritten ? eSuccess : eOutputFailed;
}

} // namespace orvasf::tool
