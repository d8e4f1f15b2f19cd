#include "orvsdk/host/filter/OrvAnimCurveFilterConstantKeyReducer.h"

#include "orvsdk/host/anim/OrvAnimCurve.h"
#include "orvsdk/host/anim/OrvAnimCurveKey.h"
#include "orvsdk/host/core/OrvStatus.h"

#include <cmath>
#include <vector>

namespace orvsdk {

namespace {

struct KeyCopy
{
    OrvTime mTime;
    float mValue;
};

bool IsConstant(const std::vector<KeyCopy>& pKeys, double pTolerance)
{
    for (const KeyCopy& lKey : pKeys)
        if (std::fabs(static_cast<double>(lKey.mValue) - pKeys.front().mValue) > pTolerance) return false;
    return true;
}

// The keys that stay: the first and the last, and every key that differs from the last kept key
// or from the next key by more than pTolerance.
std::vector<KeyCopy> KeptKeys(const std::vector<KeyCopy>& pKeys, double pTolerance)
{
    const auto lEqual = [pTolerance](float pA, float pB) {
        return std::fabs(static_cast<double>(pA) - static_cast<double>(pB)) <= pTolerance;
    };
    std::vector<KeyCopy> lKept;
    lKept.reserve(pKeys.size());
    lKept.push_back(pKeys.front());
    for (size_t i = 1; i + 1 < pKeys.size(); ++i)
        if (!lEqual(pKeys[i].mValue, lKept.back().mValue) || !lEqual(pKeys[i].mValue, pKeys[i + 1].mValue))
            lKept.push_back(pKeys[i]);
    lKept.push_back(pKeys.back());
    return lKept;
}

} // namespace

bool OrvAnimCurveFilterConstantKeyReducer::Apply(OrvAnimCurve** pCurves, int pCount, OrvStatus* pStatus)
{
    if ((!pCurves && pCount != 0) || pCount < 0)
    {
        if (pStatus) pStatus->SetError("the constant-key reducer needs an array of curves");
        return false;
    }
    for (int i = 0; i < pCount; ++i)
    {
        if (!pCurves[i])
        {
            if (pStatus) pStatus->SetError("a curve given to the constant-key reducer is null");
            return false;
        }
    }
    // The record used to rebuild curves is made before any curve changes, so that a failed
    // allocation leaves every curve as it was.
    OrvAnimCurveKey lRecord;
    if (!lRecord.IsValid())
    {
        if (pStatus) pStatus->SetError("out of memory for a key record");
        return false;
    }
    for (int i = 0; i < pCount; ++i) Reduce(*pCurves[i], lRecord);
    if (pStatus) pStatus->Clear();
    return true;
}

void OrvAnimCurveFilterConstantKeyReducer::Reduce(OrvAnimCurve& pCurve, OrvAnimCurveKey& pRecord) const
{
    const int lCount = pCurve.KeyGetCount();
    if (lCount == 0) return;
    std::vector<KeyCopy> lKeys;
    lKeys.reserve(static_cast<size_t>(lCount));
    for (int i = 0; i < lCount; ++i) lKeys.push_back({pCurve.KeyGetTime(i), pCurve.KeyGetValue(i)});

    // Rebuild the curve from the kept keys: appending in time order costs constant time per key.
    const std::vector<KeyCopy> lKept = IsConstant(lKeys, mTolerance) ? std::vector<KeyCopy>() : KeptKeys(lKeys, mTolerance);
    if (lKept.size() == lKeys.size()) return;
    pCurve.KeyClear();
    for (const KeyCopy& lKey : lKept)
    {
        pRecord.Set(lKey.mTime, lKey.mValue);
        pCurve.KeyAdd(lKey.mTime, pRecord);
    }
}

} // namespace orvsdk
