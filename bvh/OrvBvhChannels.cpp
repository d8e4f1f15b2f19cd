#include "bvh/OrvBvhChannels.h"

namespace orvasf {

namespace {

const char* const sChannelNames[eBvhChannelCount] = {"Xposition", "Yposition", "Zposition",
                                                     "Xrotation", "Yrotation", "Zrotation"};

char LowerAscii(char pChar)
{
    return pChar >= 'A' && pChar <= 'Z' ? static_cast<char>(pChar - 'A' + 'a') : pChar;
}

bool EqualsIgnoringCase(const char* pLeft, const char* pRight)
{
    for (; *pLeft && *pRight; ++pLeft, ++pRight)
        if (LowerAscii(*pLeft) != LowerAscii(*pRight)) return false;
    return *pLeft == *pRight;
}

} // namespace

const char* BvhChannelName(int pChannel)
{
    return sChannelNames[pChannel];
}

int BvhChannelFromName(const char* pName)
{
    for (int lChannel = 0; lChannel < eBvhChannelCount; ++lChannel)
        if (EqualsIgnoringCase(pName, sChannelNames[lChannel])) return lChannel;
    return -1;
}

orvsdk::OrvEuler::EOrder HostOrderFromBvhAxes(const int* pAxes, int pCount)
{
    // The applied sequence is the listed axes reversed, followed by the unused axes.
    int lSequence[3];
    int lUsed = 0;
    bool lTaken[3] = {false, false, false};
    for (int i = pCount - 1; i >= 0; --i)
    {
        lSequence[lUsed++] = pAxes[i];
        lTaken[pAxes[i]] = true;
    }
    for (int lAxis = 0; lAxis < 3; ++lAxis)
        if (!lTaken[lAxis]) lSequence[lUsed++] = lAxis;

    for (int lOrder = orvsdk::OrvEuler::eOrderXYZ; lOrder <= orvsdk::OrvEuler::eOrderZYX; ++lOrder)
    {
        const int* lAxes = orvsdk::OrvEuler::AxisTable[lOrder];
        if (lAxes[0] == lSequence[0] && lAxes[1] == lSequence[1]) return static_cast<orvsdk::OrvEuler::EOrder>(lOrder);
    }
    return orvsdk::OrvEuler::eOrderXYZ;
}

void BvhAxesFromHostOrder(orvsdk::OrvEuler::EOrder pOrder, int pAxes[3])
{
    const int* lSequence = orvsdk::OrvEuler::AxisTable[pOrder];
    for (int i = 0; i < 3; ++i) pAxes[i] = lSequence[2 - i];
}

} // namespace orvasf
