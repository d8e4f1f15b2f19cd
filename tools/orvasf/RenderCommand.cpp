#include "tools/orvasf/RenderCommand.h"

#include "orvsdk/host/core/OrvTime.h"
#include "orvsdk/host/io/OrvNumberText.h"
#include "orvsdk/host/scene/OrvNode.h"
#include "orvsdk/host/scene/OrvPoseEvaluator.h"
#include "tools/orvasf/ExitStatus.h"
#include "tools/orvasf/MessagePrinter.h"
#include "tools/orvasf/OutputText.h"
#include "tools/orvasf/SvgWriter.h"
#include "tools/orvasf/ToolImport.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <array>
#include <cctype>
#include <cmath>
#include <cstring>
#include <limits>
#include <optional>

namespace orvasf::tool {

namespace {

constexpr int kDefaultFigureCount = 8;
constexpr int64_t kMostFigures = 64;
constexpr int kFiguresPerRow = 8;
constexpr double kFigureHeight = 240.0;  // pixels of the tallest figure
constexpr double kWidestFigure = 320.0;
constexpr double kPadding = 20.0;
constexpr double kTitleHeight = 30.0;
constexpr double kLabelHeight = 24.0;
constexpr double kAxesHeight = 60.0;

const char* const kCentreColour = "#444444";
const char* const kLeftColour = "#1f77b4";
const char* const kRightColour = "#d62728";

// How a view projects world positions: the world axis (0 X, 1 Y, 2 Z) and sign shown to the
// right and upwards on the picture.
struct View
{
    const char* mName;
    int mRightAxis;
    double mRightSign;
    int mUpAxis;
    double mUpSign;
    const char* mRightLabel;
    const char* mUpLabel;
    bool mHasGround;  // the ground plane Y = 0 shows as a line
};

// front looks along -Z, side along +X, top down along -Y; the help and the README say so.
const std::array<View, 3> kViews{{{"front", 0, 1.0, 1, 1.0, "X \u2192", "Y \u2191", true},
                                  {"side", 2, 1.0, 1, 1.0, "Z \u2192", "Y \u2191", true},
                                  {"top", 0, 1.0, 2, -1.0, "X \u2192", "Z \u2193", false}}};

const View& ViewNamed(const std::string& pName)
{
    return *std::find_if(kViews.begin(), kViews.end(), [&pName](const View& pView) { return pName == pView.mName; });
}

enum class Side
{
    eCentre,
    eLeft,
    eRight
};

const char* const kCmuLimbs[] = {"hipjoint", "femur",  "tibia", "foot", "toes",    "clavicle",
                                 "humerus",  "radius", "wrist", "hand", "fingers", "thumb"};

bool StartsWith(const std::string& pText, const char* pPrefix)
{
    return pText.rfind(pPrefix, 0) == 0;
}

// The body side a joint name states: "Left..."/"Right..." (BVH), "l"/"r" before a CMU limb
// ("lfemur"), or "l"/"L" and "r"/"R" before a capital or an underscore ("lShldr", "L_Hip").
Side SideOf(const std::string& pName)
{
    std::string lLower = pName;
    std::transform(lLower.begin(), lLower.end(), lLower.begin(),
                   [](unsigned char pChar) { return static_cast<char>(std::tolower(pChar)); });
    if (StartsWith(lLower, "left")) return Side::eLeft;
    if (StartsWith(lLower, "right")) return Side::eRight;
    if (lLower.size() < 2 || (lLower[0] != 'l' && lLower[0] != 'r')) return Side::eCentre;
    const Side lSide = lLower[0] == 'l' ? Side::eLeft : Side::eRight;
    if (std::isupper(static_cast<unsigned char>(pName[1])) || pName[1] == '_') return lSide;
    for (const char* lLimb : kCmuLimbs)
        if (lLower.compare(1, std::strlen(lLimb), lLimb) == 0) return lSide;
    return Side::eCentre;
}

const char* ColourOf(Side pSide)
{
    return pSide == Side::eLeft ? kLeftColour : pSide == Side::eRight ? kRightColour : kCentreColour;
}

// One figure: its frame (-1 for the rest pose) and every node's projected position, in world
// units with "up" positive.
struct Figure
{
    int mFrame;
    double mSeconds;
    std::vector<SvgPoint> mPoints;
};

// The frames to draw: the list, or kDefaultFigureCount spread evenly from the first frame to the
// last, or none for a skeleton without motion. Empty with a message when the list does not fit.
std::optional<std::vector<int>> FramesToDraw(const std::string& pList, int64_t pSpan)
{
    std::vector<int> lFrames;
    if (pList.empty())
    {
        // Frame indices are ints, as in SelectFrames.
        const int64_t lSpan = std::min<int64_t>(pSpan, int64_t{std::numeric_limits<int>::max()} + 1);
        const int64_t lCount = std::min<int64_t>(kDefaultFigureCount, lSpan);
        const double lStep = lCount > 1 ? static_cast<double>(lSpan - 1) / static_cast<double>(lCount - 1) : 0.0;
        for (int64_t i = 0; i < lCount; ++i)
            lFrames.push_back(static_cast<int>(std::llround(static_cast<double>(i) * lStep)));
        return lFrames;
    }
    const std::optional<std::vector<FrameRange>> lRanges = SelectFrames(pList, pSpan);
    if (!lRanges) return std::nullopt;
    int64_t lCount = 0;
    for (const FrameRange& lRange : *lRanges) lCount += int64_t{lRange.mLast} - lRange.mFirst + 1;
    if (lCount > kMostFigures)
    {
        PrintToolError("render draws at most " + std::to_string(kMostFigures) + " frames; --frames asks for " +
                       std::to_string(lCount));
        return std::nullopt;
    }
    for (const FrameRange& lRange : *lRanges)
        for (int lFrame = lRange.mFirst; lFrame <= lRange.mLast; ++lFrame) lFrames.push_back(lFrame);
    return lFrames;
}

std::vector<Figure> PoseFigures(const orvsdk::OrvPoseEvaluator& pEvaluator, const std::vector<int>& pFrames,
                                double pFramesPerSecond, const View& pView)
{
    std::vector<orvsdk::OrvAMatrix> lScratch(static_cast<size_t>(pEvaluator.GetNodeCount()));
    std::vector<double> lPositions(lScratch.size() * 3);
    std::vector<Figure> lFigures;
    for (int lFrame : pFrames)
    {
        const orvsdk::OrvTime lTime =
            lFrame < 0 ? orvsdk::OrvTime() : orvsdk::OrvTime::FromFrame(lFrame, pFramesPerSecond);
        pEvaluator.EvaluatePositions(lTime, lScratch.data(), lPositions.data());
        Figure lFigure{lFrame, lTime.GetSecondDouble(), {}};
        for (size_t lNode = 0; lNode < lScratch.size(); ++lNode)
            lFigure.mPoints.push_back({pView.mRightSign * lPositions[lNode * 3 + pView.mRightAxis],
                                       pView.mUpSign * lPositions[lNode * 3 + pView.mUpAxis]});
        lFigures.push_back(std::move(lFigure));
    }
    return lFigures;
}

// Where the figures go: each is drawn relative to its anchor (the root across, and the ground,
// or the root in the top view, upwards), all at one scale, in cells of one size.
struct Layout
{
    double mScale = 1.0;  // pixels per world unit
    double mLeft = 0.0;   // extent of the figures around their anchors, in world units
    double mRight = 0.0;
    double mBottom = 0.0;
    double mTop = 0.0;
    double mCellWidth = 0.0;
    double mCellHeight = 0.0;
};

// A joint whose position overflowed (a motion with absurd values) is not drawn.
bool IsFinite(const SvgPoint& pPoint)
{
    return std::isfinite(pPoint.mX) && std::isfinite(pPoint.mY);
}

SvgPoint AnchorOf(const Figure& pFigure, const View& pView)
{
    const SvgPoint& lRoot = pFigure.mPoints[0];
    if (!IsFinite(lRoot)) return {0.0, 0.0};
    return {lRoot.mX, pView.mHasGround ? 0.0 : lRoot.mY};
}

Layout LayOut(const std::vector<Figure>& pFigures, const View& pView)
{
    Layout lLayout;
    for (const Figure& lFigure : pFigures)
    {
        const SvgPoint lAnchor = AnchorOf(lFigure, pView);
        for (const SvgPoint& lPoint : lFigure.mPoints)
        {
            if (!IsFinite(lPoint)) continue;
            lLayout.mLeft = std::min(lLayout.mLeft, lPoint.mX - lAnchor.mX);
            lLayout.mRight = std::max(lLayout.mRight, lPoint.mX - lAnchor.mX);
            lLayout.mBottom = std::min(lLayout.mBottom, lPoint.mY - lAnchor.mY);
            lLayout.mTop = std::max(lLayout.mTop, lPoint.mY - lAnchor.mY);
        }
    }
    const double lWidth = lLayout.mRight - lLayout.mLeft;
    const double lHeight = lLayout.mTop - lLayout.mBottom;
    if (lHeight > 0.0) lLayout.mScale = kFigureHeight / lHeight;
    if (lWidth * lLayout.mScale > kWidestFigure) lLayout.mScale = kWidestFigure / lWidth;
    lLayout.mCellWidth = std::max(lWidth * lLayout.mScale, 80.0) + 2.0 * kPadding;
    lLayout.mCellHeight = lHeight * lLayout.mScale + kPadding + kLabelHeight;
    return lLayout;
}

// The picture position of pPoint of figure pIndex.
SvgPoint Place(const Layout& pLayout, int pIndex, const SvgPoint& pAnchor, const SvgPoint& pPoint)
{
    const double lCellLeft = (pIndex % kFiguresPerRow) * pLayout.mCellWidth;
    const double lCellTop = kTitleHeight + (pIndex / kFiguresPerRow) * pLayout.mCellHeight;
    const double lFigureWidth = (pLayout.mRight - pLayout.mLeft) * pLayout.mScale;
    const double lLeft = lCellLeft + (pLayout.mCellWidth - lFigureWidth) / 2.0;
    return {lLeft + (pPoint.mX - pAnchor.mX - pLayout.mLeft) * pLayout.mScale,
            lCellTop + kPadding + (pLayout.mTop - (pPoint.mY - pAnchor.mY)) * pLayout.mScale};
}

std::string FigureLabel(const Figure& pFigure)
{
    if (pFigure.mFrame < 0) return "rest pose";
    std::string lLabel = "frame " + std::to_string(pFigure.mFrame) + "  ";
    orvsdk::OrvAppendFixed(lLabel, pFigure.mSeconds, 3);
    return lLabel + " s";
}

void DrawLine(SvgWriter& pSvg, const SvgPoint& pFrom, const SvgPoint& pTo, const char* pColour, double pWidth)
{
    pSvg.BeginLine(pFrom, pTo).Attribute("stroke", pColour).Attribute("stroke-width", pWidth).Leaf();
}

// A line from every joint at pPoints (placed in the picture) to each of its children, in the
// colour of the parent's side, or of the child's when the parent is central.
void DrawBones(SvgWriter& pSvg, const std::vector<SvgPoint>& pPoints, const std::vector<int>& pParents,
               const std::vector<Side>& pSides)
{
    for (size_t lNode = 1; lNode < pParents.size(); ++lNode)
    {
        const size_t lParent = static_cast<size_t>(pParents[lNode]);
        if (!IsFinite(pPoints[lParent]) || !IsFinite(pPoints[lNode])) continue;
        const Side lSide = pSides[lParent] != Side::eCentre ? pSides[lParent] : pSides[lNode];
        DrawLine(pSvg, pPoints[lParent], pPoints[lNode], ColourOf(lSide), 2.0);
    }
}

// A dot named after its joint at each of pPoints; the root's is a black ring.
void DrawJoints(SvgWriter& pSvg, const std::vector<SvgPoint>& pPoints, const std::vector<orvsdk::OrvNode*>& pNodes,
                const std::vector<Side>& pSides)
{
    for (size_t lNode = 0; lNode < pPoints.size(); ++lNode)
    {
        if (!IsFinite(pPoints[lNode])) continue;
        const bool lRoot = lNode == 0;
        pSvg.Begin("circle").Attribute("cx", pPoints[lNode].mX).Attribute("cy", pPoints[lNode].mY);
        pSvg.Attribute("r", lRoot ? 5.0 : 2.5).Attribute("data-joint", pNodes[lNode]->GetName());
        if (lRoot)
            pSvg.Attribute("data-root", "true").Attribute("fill", "none").Attribute("stroke", "#000000");
        else
            pSvg.Attribute("fill", ColourOf(pSides[lNode]));
        pSvg.Leaf();
    }
}

void DrawFigure(SvgWriter& pSvg, const Layout& pLayout, int pIndex, const Figure& pFigure, const View& pView,
                const orvsdk::OrvPoseEvaluator& pEvaluator, const std::vector<Side>& pSides)
{
    const SvgPoint lAnchor = AnchorOf(pFigure, pView);
    const auto lPlace = [&](const SvgPoint& pPoint) { return Place(pLayout, pIndex, lAnchor, pPoint); };
    pSvg.Begin("g")
        .Attribute("data-frame", pFigure.mFrame < 0 ? "rest" : std::to_string(pFigure.mFrame))
        .Attribute("data-seconds", pFigure.mSeconds);
    pSvg.Open();
    const double lGroundY = lPlace(lAnchor).mY;
    const double lCellLeft = (pIndex % kFiguresPerRow) * pLayout.mCellWidth;
    if (pView.mHasGround)
        DrawLine(pSvg, {lCellLeft + 4.0, lGroundY}, {lCellLeft + pLayout.mCellWidth - 4.0, lGroundY}, "#999999", 1.0);
    std::vector<SvgPoint> lPoints;
    for (const SvgPoint& lPoint : pFigure.mPoints) lPoints.push_back(lPlace(lPoint));
    DrawBones(pSvg, lPoints, pEvaluator.GetParents(), pSides);
    DrawJoints(pSvg, lPoints, pEvaluator.GetNodes(), pSides);
    const double lBottom = kTitleHeight + (pIndex / kFiguresPerRow + 1) * pLayout.mCellHeight;
    pSvg.Begin("text").Attribute("x", lCellLeft + pLayout.mCellWidth / 2.0).Attribute("y", lBottom - 6.0);
    pSvg.Attribute("text-anchor", "middle").Text(FigureLabel(pFigure));
    pSvg.Close();
}

// Two lines along the picture's right and up, named after the world axes they show, at its
// bottom left.
void DrawAxes(SvgWriter& pSvg, const View& pView, double pTop)
{
    const SvgPoint lOrigin{kPadding, pTop + kAxesHeight - 15.0};
    pSvg.Begin("g").Attribute("data-axes", pView.mName).Open();
    DrawLine(pSvg, lOrigin, {lOrigin.mX + 36.0, lOrigin.mY}, "#000000", 1.0);
    DrawLine(pSvg, lOrigin, {lOrigin.mX, lOrigin.mY - 36.0}, "#000000", 1.0);
    pSvg.Begin("text").Attribute("x", lOrigin.mX + 40.0).Attribute("y", lOrigin.mY + 4.0).Text(pView.mRightLabel);
    pSvg.Begin("text").Attribute("x", lOrigin.mX + 4.0).Attribute("y", lOrigin.mY - 38.0).Text(pView.mUpLabel);
    pSvg.Close();
}

std::string Title(const RenderCommandOptions& pOptions, const View& pView)
{
    return InputNames(pOptions.mImport) + ", " + pView.mName + " view (" + pView.mRightLabel + ", " + pView.mUpLabel +
           "); blue: left, red: right";
}

std::string FilmStrip(const RenderCommandOptions& pOptions, const View& pView, const std::vector<Figure>& pFigures,
                      const orvsdk::OrvPoseEvaluator& pEvaluator)
{
    const Layout lLayout = LayOut(pFigures, pView);
    const int lCount = static_cast<int>(pFigures.size());
    const int lRows = (lCount + kFiguresPerRow - 1) / kFiguresPerRow;
    const double lFiguresBottom = kTitleHeight + lRows * lLayout.mCellHeight;
    const double lWidth = std::max(std::min(lCount, kFiguresPerRow) * lLayout.mCellWidth, 420.0);
    SvgWriter lSvg(lWidth, lFiguresBottom + kAxesHeight);
    lSvg.Begin("rect").Attribute("width", "100%").Attribute("height", "100%").Attribute("fill", "#ffffff").Leaf();
    lSvg.Begin("text").Attribute("x", kPadding).Attribute("y", 20.0).Text(Title(pOptions, pView));

    std::vector<Side> lSides;
    for (const orvsdk::OrvNode* lNode : pEvaluator.GetNodes()) lSides.push_back(SideOf(lNode->GetName()));
    for (int i = 0; i < lCount; ++i)
        DrawFigure(lSvg, lLayout, i, pFigures[static_cast<size_t>(i)], pView, pEvaluator, lSides);
    DrawAxes(lSvg, pView, lFiguresBottom);
    return lSvg.Finish();
}

} // namespace

void AddRenderOptions(CLI::App& pCommand, RenderCommandOptions& pOptions)
{
    pCommand.add_option("--frames", pOptions.mFrames,
                        "0-based frames to draw, e.g. 0,10,20-30, at most 64 (default: 8 evenly over the motion; "
                        "the rest pose without motion)");
    pCommand
        .add_option("--view", pOptions.mView,
                    "front: X right, Y up (looking along -Z); side: Z right, Y up (looking along +X); "
                    "top: X right, Z down (looking down along -Y)")
        ->check(CLI::IsMember({"front", "side", "top"}))
        ->capture_default_str();
    pCommand.add_option("-o,--output", pOptions.mOutputPath, "SVG file to write")->required()->type_name("OUT.svg");
}

int RunRender(const RenderCommandOptions& pOptions)
{
    if (!CheckedInputFormat(pOptions.mImport, "render")) return eUsageError;
    const OrvImportResult lImport = ImportInput(pOptions.mImport);
    if (!lImport.mSucceeded) return eInputRefused;
    std::optional<std::vector<int>> lFrames = FramesToDraw(pOptions.mFrames, lImport.mFrameSpan);
    if (!lFrames) return eUsageError;
    if (lFrames->empty()) lFrames->push_back(-1);

    const View& lView = ViewNamed(pOptions.mView);
    const orvsdk::OrvPoseEvaluator lEvaluator(lImport.mRoot, lImport.mTake);
    const std::vector<Figure> lFigures = PoseFigures(lEvaluator, *lFrames, lImport.mFramesPerSecond, lView);
    OutputText lOutput("SVG");
    if (!lOutput.Open(pOptions.mOutputPath)) return eOutputFailed;
    const bool lWritten = lOutput.Write(FilmStrip(pOptions, lView, lFigures, lEvaluator));
    return lOutput.Close() && lWritten ? eSuccess : eOutputFailed;
}

} // namespace orvasf::tool
