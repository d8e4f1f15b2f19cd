#include "orvsdk/host/anim/OrvAnimCurve.h"

#include "orvsdk/host/anim/OrvAnimCurveKey.h"
#include "orvsdk/host/scene/OrvScene.h"

#include <algorithm>
#include <new>

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
    if (mTimes.empty() || mTimes.back() < pTime)
    {
        // The common case while sampling: keys arrive in time order.
        lIndex = mTimes.size();
        mTimes.push_back(pTime);
        mValues.push_back(lValue);
    }
    else
    {
        lIndex = static_cast<size_t>(std::lower_bound(mTimes.begin(), mTimes.end(), pTime) - mTimes.begin());
        if (mTimes[lIndex] == pTime)
        {
            mValues[lIndex] = lValue;
        }
        else
        {
            mTimes.insert(mTimes.begin() + static_cast<std::ptrdiff_t>(lIndex), pTime);
            mValues.insert(mValues.begin() + static_cast<std::ptrdiff_t>(lIndex), lValue);
        }
    }
    const int lResult = static_cast<int>(lIndex);
    if (pLast) *pLast = lResult;
    return lResult;
}

void OrvAnimCurve::KeyReserve(int pCount)
{
    if (pCount <= 0) return;
    try
    {
        mTimes.reserve(static_cast<size_t>(pCount));
        mValues.reserve(static_cast<size_t>(pCount));
    }
    catch (const std::bad_alloc&)
    {
        // A hint only: the keys still fit as they come.
    }
}

float OrvAnimCurve::KeyGetValue(int pIndex) const
{
    return pIndex >= 0 && pIndex < KeyGetCount() ? mValues[static_cast<size_t>(pIndex)] : 0.0f;
}

OrvTime OrvAnimCurve::KeyGetTime(int pIndex) const
{
    return pIndex >= 0 && pIndex < KeyGetCount() ? mTimes[static_cast<size_t>(pIndex)] : OrvTime();
}

void OrvAnimCurve::KeySetValue(int pIndex, float pValue)
{
    if (pIndex >= 0 && pIndex < KeyGetCount()) mValues[static_cast<size_t>(pIndex)] = pValue;
}

bool OrvAnimCurve::KeyRemove(int pIndex)
{
    if (pIndex < 0 || pIndex >= KeyGetCount()) return false;
    mTimes.erase(mTimes.begin() + pIndex);
    mValues.erase(mValues.begin() + pIndex);
    return true;
}

float OrvAnimCurve::Evaluate(OrvTime pTime) const
{
    if (mTimes.empty()) return 0.0f;
    return Interpolate(pTime, static_cast<size_t>(std::upper_bound(mTimes.begin(), mTimes.end(), pTime) - mTimes.begin()));
}

float OrvAnimCurve::EvaluateFromHint(OrvTime pTime, int& pHint) const
{
    if (mTimes.empty()) return 0.0f;
    const size_t lCount = mTimes.size();
    // From the guess, step over at most two keys (playback in order); anything else searches.
    size_t lAfter = static_cast<size_t>(pHint);
    bool lFound = pHint >= 0 && lAfter <= lCount && (lAfter == 0 || !(pTime < mTimes[lAfter - 1]));
    for (int lStep = 0; lFound && lAfter < lCount && !(pTime < mTimes[lAfter]); ++lStep, ++lAfter)
        lFound = lStep < 2;
    if (!lFound)
        lAfter = static_cast<size_t>(std::upper_bound(mTimes.begin(), mTimes.end(), pTime) - mTimes.begin());
    pHint = static_cast<int>(lAfter);
    return Interpolate(pTime, lAfter);
}

float OrvAnimCurve::Interpolate(OrvTime pTime, size_t pAfter) const
{
    if (pAfter == 0) return mValues.front();
    if (pAfter == mTimes.size()) return mValues.back();
    const size_t lBefore = pAfter - 1;
    // At a key's own time the blend below gives that key's value: skip its division.
    if (pTime == mTimes[lBefore]) return mValues[lBefore];
    const double lSpan = static_cast<double>(mTimes[pAfter].Get() - mTimes[lBefore].Get());
    const double lFraction = static_cast<double>(pTime.Get() - mTimes[lBefore].Get()) / lSpan;
    const double lValue = mValues[lBefore] + (static_cast<double>(mValues[pAfter]) - mValues[lBefore]) * lFraction;
    return static_cast<float>(lValue);
}

} // namespace orvsdk
