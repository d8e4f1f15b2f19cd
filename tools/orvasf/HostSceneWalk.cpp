#include "tools/orvasf/HostSceneWalk.h"

#include "orvsdk/host/anim/OrvAnimCurveNode.h"
#include "orvsdk/host/anim/OrvAnimStack.h"
#include "orvsdk/host/scene/OrvNode.h"

namespace orvasf::tool {

namespace {

void AppendSubtree(orvsdk::OrvNode* pNode, std::vector<orvsdk::OrvNode*>& pNodes)
{
    pNodes.push_back(pNode);
    for (int i = 0; i < pNode->GetChildCount(); ++i) AppendSubtree(pNode->GetChild(i), pNodes);
}

void AppendCurves(orvsdk::OrvNode* pNode, orvsdk::OrvProperty& pProperty, const char* pLabel,
                  orvsdk::OrvAnimStack* pTake, std::vector<CurveBinding>& pCurves)
{
    orvsdk::OrvAnimCurveNode* lCurveNode = pProperty.GetCurveNode(pTake, false);
    if (!lCurveNode) return;
    for (unsigned lChannel = 0; lChannel < lCurveNode->GetChannelsCount(); ++lChannel)
        for (int i = 0; i < lCurveNode->GetCurveCount(lChannel); ++i)
            pCurves.push_back({pNode, pLabel, lChannel, lCurveNode->GetCurve(lChannel, static_cast<unsigned>(i))});
}

} // namespace

std::vector<orvsdk::OrvNode*> CollectNodes(orvsdk::OrvNode* pTop)
{
    std::vector<orvsdk::OrvNode*> lNodes;
    AppendSubtree(pTop, lNodes);
    return lNodes;
}

std::vector<CurveBinding> CollectCurves(const std::vector<orvsdk::OrvNode*>& pNodes, orvsdk::OrvAnimStack* pTake)
{
    std::vector<CurveBinding> lCurves;
    for (orvsdk::OrvNode* lNode : pNodes)
    {
        AppendCurves(lNode, lNode->LclTranslation, "translation", pTake, lCurves);
        AppendCurves(lNode, lNode->LclRotation, "rotation", pTake, lCurves);
        AppendCurves(lNode, lNode->LclScaling, "scaling", pTake, lCurves);
    }
    return lCurves;
}

} // namespace orvasf::tool
