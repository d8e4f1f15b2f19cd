#include "orvsdk/host/filter/OrvRotationCurves.h"

#include "orvsdk/host/anim/OrvAnimCurve.h"
#include "orvsdk/host/core/OrvStatus.h"

#include <cmath>

namespace orvsdk {

namespace {

bool Fail(OrvStatus* pStatus, const char* pMessage)
{
    if (pStatus) pStatus->SetError(pMessage);
    return false;
}

bool SameKeyTimes(const OrvAnimCurve& pA, const OrvAnimCurve& pB)
{
    if (pA.KeyGetCount() != pB.KeyGetCount()) return false;
    for (int i = 0; i < pA.KeyGetCount(); ++i)
        if (pA.KeyGetTime(i) != pB.KeyGetTime(i)) return false;
    return true;
}

} // namespace

bool OrvRotationCurves::Check(OrvAnimCurve** pCurves, int pCount, OrvStatus* pStatus)
{
    if (!pCurves || pCount != 3) return Fail(pStatus, "rotation filters need exactly three curves (X, Y, Z)");
    if (!pCurves[0] || !pCurves[1] || !pCurves[2]) return Fail(pStatus, "a rotation curve is null");
    if (!SameKeyTimes(*pCurves[0], *pCurves[1]) || !SameKeyTimes(*pCurves[0], *pCurves[2]))
        return Fail(pStatus, "the rotation curves' keys are not at the same times");
    return true;
}

int OrvRotationCurves::GetKeyCount() const
{
    return mCurves[0]->KeyGetCount();
}

OrvVector4 OrvRotationCurves::GetKey(int pIndex) const
{
    return OrvVector4(mCurves[0]->KeyGetValue(pIndex), mCurves[1]->KeyGetValue(pIndex), mCurves[2]->KeyGetValue(pIndex));
}

void OrvRotationCurves::SetKey(int pIndex, const OrvVector4& pAngles)
{
    for (int lAxis = 0; lAxis < 3; ++lAxis) mCurves[lAxis]->KeySetValue(pIndex, static_cast<float>(pAngles[lAxis]));
}

OrvVector4 OrvRotationCurves::Wrapped(const OrvVector4& pAngles, const OrvVector4& pReference)
{
    OrvVector4 lWrapped = pAngles;
    for (int i = 0; i < 3; ++i)
        lWrapped[i] += 360.0 * std::round((pReference[i] - pAngles[i]) / 360.0);
    return lWrapped;
}

OrvVector4 OrvRotationCurves::ClosestEquivalent(const OrvVector4& pSequence, const OrvVector4& pReference)
{
    const OrvVector4 lDirect = Wrapped(pSequence, pReference);
    const OrvVector4 lAlternative =
        Wrapped(OrvVector4(pSequence[0] + 180.0, 180.0 - pSequence[1], pSequence[2] + 180.0), pReference);
    return Distance2(lAlternative, pReference) < Distance2(lDirect, pReference) ? lAlternative : lDirect;
}

double OrvRotationCurves::Distance2(const OrvVector4& pA, const OrvVector4& pB)
{
    double lSum = 0.0;
    for (int i = 0; i < 3; ++i) lSum += (pA[i] - pB[i]) * (pA[i] - pB[i]);
    return lSum;
}

} // namespace orvsdk
