#include "orvsdk/host/OrvAnimCurve.h"

#include "orvsdk/host/OrvAnimCurveKey.h"
#include "orvsdk/host/OrvScene.h"

#include <algorithm>

namespace orvsdk {

const OrvClassId OrvAnimCurve::ClassId = {"OrvAnimCurve", &OrvObject::ClassId};

OrvAnimCurve* OrvAnimCurve::Create(OrvObject* pContainer, const char* pName)
{
    return OrvScene::CreateObject<OrvAnimCurve>(pContainer, pName);
}

int OrvAnimCurve::KeyAdd(OrvTime pTime, OrvAnimCurveKey& pKey, int* pLast)
{
    if (!pKey.IsValid()) return -1;
    const float lValue = pKey.GetValue();
    size_t lIndex;
    if (mKeys.empty() || mKeys.back().mTime < pTime)
    {
        // The common case while sampling: keys arrive in time order.
        lIndex = mKeys.size();
        mKeys.push_back({pTime, lValue});
    }
    else
    {
        auto lAt = std::lower_bound(mKeys.begin(), mKeys.end(), pTime,
                                    [](const Key& pKeyAt, OrvTime pWanted) { return pKeyAt.mTime < pWanted; });
        if (lAt->mTime == pTime)
            lAt->mValue = lValue;
        else
            lAt = mKeys.insert(lAt, {pTime, lValue});
        lIndex = static_cast<size_t>(lAt - mKeys.begin());
    }
    const int lResult = static_cast<int>(lIndex);
    if (pLast) *pLast = lResult;
    return lResult;
}

float OrvAnimCurve::KeyGetValue(int pIndex) const
{
    return pIndex >= 0 && pIndex < KeyGetCount() ? mKeys[static_cast<size_t>(pIndex)].mValue : 0.0f;
}

OrvTime OrvAnimCurve::KeyGetTime(int pIndex) const
{
    return pIndex >= 0 && pIndex < KeyGetCount() ? mKeys[static_cast<size_t>(pIndex)].mTime : OrvTime();
}

void OrvAnimCurve::KeySetValue(int pIndex, float pValue)
{
    if (pIndex >= 0 && pIndex < KeyGetCount()) mKeys[static_cast<size_t>(pIndex)].mValue = pValue;
}

bool OrvAnimCurve::KeyRemove(int pIndex)
{
    if (pIndex < 0 || pIndex >= KeyGetCount()) return false;
    mKeys.erase(mKeys.begin() + pIndex);
    return true;
}

float OrvAnimCurve::Evaluate(OrvTime pTime) const
{
    if (mKeys.empty()) return 0.0f;
    const auto lAfter = std::upper_bound(mKeys.begin(), mKeys.end(), pTime,
                                         [](OrvTime pWanted, const Key& pKeyAt) { return pWanted < pKeyAt.mTime; });
    if (lAfter == mKeys.begin()) return mKeys.front().mValue;
    if (lAfter == mKeys.end()) return mKeys.back().mValue;
    const Key& lBefore = *(lAfter - 1);
    const double lSpan = static_cast<double>(lAfter->mTime.Get() - lBefore.mTime.Get());
    const double lFraction = static_cast<double>(pTime.Get() - lBefore.mTime.Get()) / lSpan;
    const double lValue = lBefore.mValue + (static_cast<double>(lAfter->mValue) - lBefore.mValue) * lFraction;
    return static_cast<float>(lValue);
}

} // namespace orvsdk
