// Motion samples turned into keys on a bone's own curves.
#include "orvsdk/skeleton/OrvAsfNode.h"

#include "orvsdk/host/OrvAMatrix.h"
#include "orvsdk/host/OrvAnimCurve.h"
#include "orvsdk/host/OrvAnimCurveKey.h"
#include "orvsdk/host/OrvEuler.h"
#include "orvsdk/skeleton/OrvRotationOrder.h"

namespace orvsdk {

void OrvAsfNode::StartSamplingData()
{
    const int lChildCount = mChildren.GetCount();
    for (int i = 0; i < lChildCount; ++i) mChildren[i]->StartSamplingData();
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
        if (lCode >= 0 && lCode <= 2)
        {
            lTranslation[lCode] += pTranslationFactor * pValues[i];
        }
        else if (lCode >= 3 && lCode <= 5)
        {
            // Each later DOF rotates after the earlier ones: it multiplies from the left.
            const double lAngle = pRotationFactor * pValues[i];
            const int lAxis = 5 - lCode;
            lAngleSum[lAxis] += lAngle;
            OrvVector4 lSingle;
            lSingle[lAxis] = lAngle;
            OrvAMatrix lStep;
            lStep.SetR(lSingle);
            lMotion = lStep * lMotion;
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

    OrvVector4 lRotation;
    if (pUsePreRotation)
    {
        lRotation = lAngleSum;
    }
    else
    {
        lMotion = mParentAxisMatrixInverse * (mAxisMatrix * lMotion);
        const int lOrder = EulerOrderFromOrderBuf(mDof, mDofCount);
        const OrvVector4 lAngles = lMotion.GetR(lOrder);
        for (int j = 0; j < 3; ++j) lRotation[OrvEuler::AxisTable[lOrder][j]] = lAngles[j];
    }

    OrvAnimCurveKey lKey;
    for (int j = 0; j < 3; ++j)
    {
        lKey.Set(pTime, static_cast<float>(lTranslation[j]));
        if (mTranslationCurve[j]) mTranslationCurve[j]->KeyAdd(pTime, lKey);
    }
    for (int j = 0; j < 3; ++j)
    {
        lKey.Set(pTime, static_cast<float>(lRotation[j]));
        if (mRotationCurve[j]) mRotationCurve[j]->KeyAdd(pTime, lKey);
    }
}

} // namespace orvsdk
