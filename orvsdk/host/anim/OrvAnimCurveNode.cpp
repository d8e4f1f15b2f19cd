#include "orvsdk/host/anim/OrvAnimCurveNode.h"

#include "orvsdk/host/anim/OrvAnimCurve.h"
#include "orvsdk/host/scene/OrvScene.h"

#include <cstring>

namespace orvsdk {

const OrvClassId OrvAnimCurveNode::ClassId = {"OrvAnimCurveNode", &OrvObject::ClassId};

OrvAnimCurveNode::OrvAnimCurveNode(OrvScene& pScene, const char* pName)
    : OrvObject(pScene, pName),
      mChannels{{this, "X", eOrvDouble}, {this, "Y", eOrvDouble}, {this, "Z", eOrvDouble}},
      mInvalidChannel(this, "", eOrvUndefined, nullptr, false)
{
}

OrvAnimCurveNode* OrvAnimCurveNode::Create(OrvObject* pContainer, const char* pName)
{
    return OrvScene::CreateObject<OrvAnimCurveNode>(pContainer, pName);
}

OrvProperty& OrvAnimCurveNode::GetChannel(unsigned pChannel)
{
    return pChannel < kChannelCount ? mChannels[pChannel] : mInvalidChannel;
}

const OrvProperty& OrvAnimCurveNode::GetChannel(unsigned pChannel) const
{
    return pChannel < kChannelCount ? mChannels[pChannel] : mInvalidChannel;
}

OrvAnimCurve* OrvAnimCurveNode::GetCurve(unsigned pChannel, unsigned pIndex, const char* pName) const
{
    if (pChannel >= kChannelCount) return nullptr;
    const OrvProperty& lChannel = mChannels[pChannel];
    const int lCount = lChannel.GetSrcObjectCount<OrvAnimCurve>();
    unsigned lMatch = 0;
    for (int i = 0; i < lCount; ++i)
    {
        OrvAnimCurve* lCurve = lChannel.GetSrcObject<OrvAnimCurve>(i);
        if (pName && std::strcmp(lCurve->GetName(), pName) != 0) continue;
        if (lMatch++ == pIndex) return lCurve;
    }
    return nullptr;
}

int OrvAnimCurveNode::GetCurveCount(unsigned pChannel) const
{
    return pChannel < kChannelCount ? mChannels[pChannel].GetSrcObjectCount<OrvAnimCurve>() : 0;
}

bool OrvAnimCurveNode::ConnectToChannel(OrvAnimCurve* pCurve, unsigned pChannel, bool pInFront)
{
    if (!pCurve || pChannel >= kChannelCount) return false;
    return Connect(*pCurve, mChannels[pChannel], pInFront);
}

bool OrvAnimCurveNode::DisconnectFromChannel(OrvAnimCurve* pCurve, unsigned pChannel)
{
    if (!pCurve || pChannel >= kChannelCount) return false;
    return Disconnect(*pCurve, mChannels[pChannel]);
}

bool OrvAnimCurveNode::IsAnimated(bool /*pRecurse*/) const
{
    for (unsigned lChannel = 0; lChannel < kChannelCount; ++lChannel)
    {
        const int lCount = GetCurveCount(lChannel);
        for (int i = 0; i < lCount; ++i)
            if (GetCurve(lChannel, static_cast<unsigned>(i))->KeyGetCount() > 0) return true;
    }
    return false;
}

OrvProperty* OrvAnimCurveNode::GetAnimatedProperty() const
{
    for (int i = 0; i < GetDstPropertyCount(); ++i)
        if (!GetDstProperty(i)->IsRoot()) return GetDstProperty(i);
    return nullptr;
}

} // namespace orvsdk
