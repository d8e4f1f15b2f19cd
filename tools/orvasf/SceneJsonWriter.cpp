#include "tools/orvasf/SceneJsonWriter.h"

#include "driver/OrvImportDriver.h"
#include "orvsdk/host/anim/OrvAnimCurve.h"
#include "orvsdk/host/anim/OrvAnimStack.h"
#include "orvsdk/host/scene/OrvNode.h"
#include "orvsdk/host/scene/OrvScene.h"
#include "orvsdk/host/scene/OrvSkeleton.h"
#include "tools/orvasf/HostSceneWalk.h"
#include "tools/orvasf/OutputText.h"

#include <charconv>
#include <nlohmann/json.hpp>

namespace orvasf::tool {

namespace {

// Keeps the members in the order written: name and parent first.
using json = nlohmann::ordered_json;

const char* const sOrderNames[6] = {"XYZ", "XZY", "YZX", "YXZ", "ZXY", "ZYX"};
const char* const sSkeletonTypeNames[4] = {"root", "limb", "limbNode", "effector"};
const char* const sChannelNames[3] = {"X", "Y", "Z"};

// The double whose shortest decimal form is the float's, so that 16.9f prints as 16.9 and not
// as 16.899999618530273.
double ShortestDouble(float pValue)
{
    char lText[32];
    const auto lWritten = std::to_chars(lText, lText + sizeof lText, pValue);
    double lValue = static_cast<double>(pValue);
    std::from_chars(lText, lWritten.ptr, lValue);
    return lValue;
}

// Compact text; bytes that are not UTF-8 (Latin-1 names) become U+FFFD instead of failing.
std::string Dump(const json& pValue)
{
    return pValue.dump(-1, ' ', false, json::error_handler_t::replace);
}

json Triple(const orvsdk::OrvVector4& pValue)
{
    return json::array({pValue[0], pValue[1], pValue[2]});
}

json Triple(const orvsdk::OrvVectorTemplate3<double>& pValue)
{
    return json::array({pValue[0], pValue[1], pValue[2]});
}

json PropertyValue(const orvsdk::OrvProperty& pProperty)
{
    double lValue[3] = {0.0, 0.0, 0.0};
    pProperty.Get(lValue, orvsdk::eOrvDouble3);
    return json::array({lValue[0], lValue[1], lValue[2]});
}

json Limits(const orvsdk::OrvLimits& pLimits)
{
    bool lMin[3];
    bool lMax[3];
    pLimits.GetMinActive(lMin[0], lMin[1], lMin[2]);
    pLimits.GetMaxActive(lMax[0], lMax[1], lMax[2]);
    return json{{"active", pLimits.GetActive()},
                {"minActive", json::array({lMin[0], lMin[1], lMin[2]})},
                {"maxActive", json::array({lMax[0], lMax[1], lMax[2]})},
                {"min", Triple(pLimits.GetMin())},
                {"max", Triple(pLimits.GetMax())}};
}

json Attribute(const orvsdk::OrvNode& pNode)
{
    if (const orvsdk::OrvSkeleton* lSkeleton = pNode.GetSkeleton())
    {
        const int lType = lSkeleton->GetSkeletonType();
        return json{{"type", "skeleton"},
                    {"skeletonType", lType >= 0 && lType < 4 ? json(sSkeletonTypeNames[lType]) : json(lType)}};
    }
    if (pNode.GetNodeAttribute()) return json{{"type", "other"}};
    return nullptr;
}

json RotationOrder(const orvsdk::OrvNode& pNode)
{
    orvsdk::OrvEuler::EOrder lOrder = orvsdk::OrvEuler::eOrderXYZ;
    pNode.GetRotationOrder(orvsdk::OrvNode::eSourcePivot, lOrder);
    return lOrder >= 0 && lOrder < 6 ? json(sOrderNames[lOrder]) : json(static_cast<int>(lOrder));
}

json NodeObject(const orvsdk::OrvNode& pNode)
{
    const orvsdk::OrvNode* lParent = pNode.GetParent();
    const orvsdk::OrvNode::EPivotSet lPivot = orvsdk::OrvNode::eSourcePivot;
    return json{{"name", pNode.GetName()},
                {"parent", lParent ? json(lParent->GetName()) : json(nullptr)},
                {"attribute", Attribute(pNode)},
                {"translation", PropertyValue(pNode.LclTranslation)},
                {"rotation", PropertyValue(pNode.LclRotation)},
                {"scaling", PropertyValue(pNode.LclScaling)},
                {"rotationActive", pNode.GetRotationActive()},
                {"rotationOrder", RotationOrder(pNode)},
                {"rotationOffset", Triple(pNode.GetRotationOffset(lPivot))},
                {"preRotation", Triple(pNode.GetPreRotation(lPivot))},
                {"postRotation", Triple(pNode.GetPostRotation(lPivot))},
                {"translationLimits", Limits(pNode.GetTranslationLimits())},
                {"rotationLimits", Limits(pNode.GetRotationLimits())}};
}

json CurveObject(const CurveBinding& pBinding)
{
    json lKeys = json::array();
    const orvsdk::OrvAnimCurve& lCurve = *pBinding.mCurve;
    for (int i = 0; i < lCurve.KeyGetCount(); ++i)
        lKeys.push_back(json::array({lCurve.KeyGetTime(i).GetSecondDouble(), ShortestDouble(lCurve.KeyGetValue(i))}));
    return json{{"name", lCurve.GetName()},
                {"node", pBinding.mNode->GetName()},
                {"property", pBinding.mProperty},
                {"channel", sChannelNames[pBinding.mChannel]},
                {"keys", std::move(lKeys)}};
}

// Writes pItems' lines as the members of a JSON array, one per line.
template <typename T, typename F>
bool WriteArray(const std::vector<T>& pItems, F pToJson, OutputText& pOutput)
{
    bool lWritten = pOutput.Write("[");
    for (size_t i = 0; i < pItems.size() && lWritten; ++i)
        lWritten = pOutput.Write(i == 0 ? "\n  " : ",\n  ") && pOutput.Write(Dump(pToJson(pItems[i])));
    return lWritten && pOutput.Write("\n]");
}

} // namespace

bool WriteSceneJson(const OrvImportResult& pImport, OutputText& pOutput)
{
    const std::vector<orvsdk::OrvNode*> lNodes = CollectNodes(pImport.mRoot);
    const std::vector<CurveBinding> lCurves = CollectCurves(lNodes, pImport.mTake);
    const std::string lHead = "{\n\"scene\": " + Dump(pImport.mScene->GetName()) + ",\n\"take\": " +
                              Dump(pImport.mTake->GetName()) + ",\n\"framesPerSecond\": " +
                              Dump(pImport.mFramesPerSecond) +
                              ",\n\"nodes\": ";
    return pOutput.Write(lHead) &&
           WriteArray(lNodes, [](const orvsdk::OrvNode* pNode) { return NodeObject(*pNode); }, pOutput) &&
           pOutput.Write(",\n\"curves\": ") && WriteArray(lCurves, CurveObject, pOutput) && pOutput.Write("\n}\n");
}

} // namespace orvasf::tool
