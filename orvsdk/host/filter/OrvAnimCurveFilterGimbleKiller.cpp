#include "orvsdk/host/filter/OrvAnimCurveFilterGimbleKiller.h"

#include "orvsdk/host/math/OrvAMatrix.h"
#include "orvsdk/host/math/OrvEuler.h"
#include "orvsdk/host/filter/OrvRotationCurves.h"
#include "orvsdk/host/core/OrvStatus.h"

#include <cmath>

namespace orvsdk {

namespace {

// How close (degrees) the middle angle must come to +/-90 to count as gimbal lock.
const double sGimbalLockTolerance = 1e-6;

// At gimbal lock the first and last angles only count through their difference or sum: with
// the middle angle at +90 the triples (x + t, 90, z + t) all give the same rotation, at -90 the
// triples (x + t, -90, z - t). Picks, among those and their 360-degree turns, the triple
// closest to pReference; the middle angle stays as given.
OrvVector4 SplitAtGimbalLock(const OrvVector4& pAngles, const OrvVector4& pReference)
{
    const double lSign = pAngles[1] > 0.0 ? 1.0 : -1.0;
    const double lFixed = pAngles[0] - lSign * pAngles[2];
    double lExcess = (pReference[0] - lSign * pReference[2]) - lFixed;
    lExcess -= 360.0 * std::round(lExcess / 360.0);
    return OrvVector4(pReference[0] - lExcess / 2.0, pAngles[1], pReference[2] + lSign * lExcess / 2.0);
}

// The X, Y, Z triple of pAngles' rotation closest to pReference.
OrvVector4 ClosestTriple(const OrvVector4& pAngles, const OrvVector4& pReference)
{
    OrvAMatrix lRotation;
    lRotation.SetR(pAngles, OrvEuler::eOrderXYZ);
    const OrvVector4 lCanonical = lRotation.GetR(OrvEuler::eOrderXYZ);
    if (std::fabs(std::fabs(lCanonical[1]) - 90.0) <= sGimbalLockTolerance)
        return SplitAtGimbalLock(lCanonical, pReference);
    return OrvRotationCurves::ClosestEquivalent(lCanonical, pReference);
}

} // namespace

bool OrvAnimCurveFilterGimbleKiller::Apply(OrvAnimCurve** pCurves, int pCount, OrvStatus* pStatus)
{
    if (!OrvRotationCurves::Check(pCurves, pCount, pStatus)) return false;
    OrvRotationCurves lCurves(pCurves);
    OrvVector4 lPrevious = lCurves.GetKey(0);
    for (int lKey = 1; lKey < lCurves.GetKeyCount(); ++lKey)
    {
        lPrevious = ClosestTriple(lCurves.GetKey(lKey), lPrevious);
        lCurves.SetKey(lKey, lPrevious);
    }
    if (pStatus) pStatus->Clear();
    return true;
}

} // namespace orvsdk
