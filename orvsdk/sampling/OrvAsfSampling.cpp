// Motion samples turned into keys on a bone's own curves.
#include "orvsdk/skeleton/OrvAsfNode.h"

#include "orvsdk/host/math/OrvAMatrix.h"
#include "orvsdk/host/anim/OrvAnimCurve.h"
#include "orvsdk/host/anim/OrvAnimCurveKey.h"
#include "orvsdk/host/math/OrvEuler.h"
#include "orvsdk/skeleton/OrvAsfDof.h"
#include "orvsdk/skeleton/OrvRotationOrder.h"

namespace orvsdk {

namespace {

// Sets pKey to each value of pValues in turn and adds it at pTime to the curve of that channel,
// when there is one.
void AddKeys(OrvAnimCurve* const pCurves[3], const OrvVector4& pValues, OrvTime& pTime, OrvAnimCurveKey& pKey)
{
    for (int j = 0; j < 3; ++j)
    {
        pKey.Set(pTime, static_cast<float>(pValues[j]));
        if (pCurves[j]) pCurves[j]->KeyAdd(pTime, pKey);
    }
}

// pDegrees (within [-180, 180]) moved to 180 when it would be stored as -180: decomposed angles
// lie in (-180, 180], and a half-turn must not flip sign with the last bit of a rounding error.
double HalfTurnAsPositive(double pDegrees)
{
    return static_cast<float>(pDegrees) == -180.0f ? pDegrees + 360.0 : pDegrees;
}

} // namespace

void OrvAsfNode::StartSamplingData()
{
    // Nothing to prepare: the keys go straight onto the curves CreateDataFromDOF made.
}

void OrvAsfNode::AddSampleFromDOF(double* pValues, OrvTime& pTime, double pTranslationFactor, double pRotationFactor,
                                  bool pUseRotationOffset, bool pUsePreRotation)
{
    OrvVector4 lTranslation;
    OrvVector4 lAngleSum;
    OrvAMatrix lMotion;
    for (int i = 0; i < mDofCount; ++i)
    {
        const int lCode = mDof[i];
        if (IsTranslationDof(lCode))
        {
            lTranslation[DofAxis(lCode)] += pTranslationFactor * pValues[i];
        }
        else if (IsRotationDof(lCode))
        {
            // Each later DOF rotates after the earlier ones: it multiplies from the left.
            const double lAngle = pRotationFactor * pValues[i];
            const int lAxis = DofAxis(lCode);
            lAngleSum[lAxis] += lAngle;
            // Pre-rotation keys are the plain sums: only the decomposition needs the matrix.
            if (!pUsePreRotation) lMotion.PreRotate(lAxis, lAngle);
        }
    }

    if (pUseRotationOffset)
    {
        lTranslation = mAxisMatrix.MultT(lTranslation);
        if (mParent) lTranslation = mParent->mAxisMatrixInverse.MultT(lTranslation);
    }
    else
    {
        lTranslation = mParentAxisMatrixInverse.MultT(mParentOffset + mAxisMatrix.MultT(lTranslation));
    }

    // The keys are read from the vectors in place: copying a vector just filled element by
    // element would stall on the wide load.
    OrvVector4 lDecomposed;
    if (!pUsePreRotation)
    {
        // GetR reads the rotation part only.
        lMotion = mParentAxisMatrixInverse.MultR(mAxisMatrix.MultR(lMotion));
        const int lOrder = EulerOrderFromOrderBuf(mDof, mDofCount);
        const OrvVector4 lAngles = lMotion.GetRotationAngles(lOrder);
        for (int j = 0; j < 3; ++j) lDecomposed[OrvEuler::AxisTable[lOrder][j]] = HalfTurnAsPositive(lAngles[j]);
    }
    const OrvVector4& lRotation = pUsePreRotation ? lAngleSum : lDecomposed;

    // One key record serves the six keys; its data lives on the stack, so a call allocates nothing.
    OrvAnimCurveKeyImpl lKeyData;
    OrvAnimCurveKey lKey(lKeyData);
    AddKeys(mTranslationCurve, lTranslation, pTime, lKey);
    AddKeys(mRotationCurve, lRotation, pTime, lKey);
}

} // namespace orvsdk
