#include "orvsdk/host/filter/OrvAnimCurveFilterUnroll.h"

#include "orvsdk/host/filter/OrvRotationCurves.h"
#include "orvsdk/host/core/OrvStatus.h"

namespace orvsdk {

namespace {

// The X, Y, Z angles pAngles in the sequence of pOrder, and back.
OrvVector4 ToSequence(const OrvVector4& pAngles, const int* pAxes)
{
    return OrvVector4(pAngles[pAxes[0]], pAngles[pAxes[1]], pAngles[pAxes[2]]);
}

OrvVector4 FromSequence(const OrvVector4& pSequence, const int* pAxes)
{
    OrvVector4 lAngles;
    for (int k = 0; k < 3; ++k) lAngles[pAxes[k]] = pSequence[k];
    return lAngles;
}

} // namespace

bool OrvAnimCurveFilterUnroll::Apply(OrvAnimCurve** pCurves, int pCount, OrvStatus* pStatus)
{
    if (mOrder < OrvEuler::eOrderXYZ || mOrder > OrvEuler::eOrderZYX)
    {
        if (pStatus) pStatus->SetError("unroll needs a rotation order from 0 to 5");
        return false;
    }
    if (!OrvRotationCurves::Check(pCurves, pCount, pStatus)) return false;
    const int* lAxes = OrvEuler::AxisTable[mOrder];
    OrvRotationCurves lCurves(pCurves);
    OrvVector4 lPrevious = ToSequence(lCurves.GetKey(0), lAxes);
    for (int lKey = 1; lKey < lCurves.GetKeyCount(); ++lKey)
    {
        lPrevious = OrvRotationCurves::ClosestEquivalent(ToSequence(lCurves.GetKey(lKey), lAxes), lPrevious);
        lCurves.SetKey(lKey, FromSequence(lPrevious, lAxes));
    }
    if (pStatus) pStatus->Clear();
    return true;
}

} // namespace orvsdk
