// End of a sampling run: curves of one key or none are dropped, the rotation filter and the
// constant-key reducer run as the host scene's settings ask.
#include "orvsdk/skeleton/OrvAsfNode.h"

#include "orvsdk/host/anim/OrvAnimCurve.h"
#include "orvsdk/host/filter/OrvAnimCurveFilter.h"
#include "orvsdk/host/filter/OrvAnimCurveFilterConstantKeyReducer.h"
#include "orvsdk/host/filter/OrvAnimCurveFilterGimbleKiller.h"
#include "orvsdk/host/filter/OrvAnimCurveFilterUnroll.h"
#include "orvsdk/host/scene/OrvGlobalSettings.h"
#include "orvsdk/host/scene/OrvScene.h"
#include "orvsdk/skeleton/OrvRotationOrder.h"

namespace orvsdk {

namespace {

enum ERotationFilter
{
    eGimbalKiller = 1,
    eUnroll = 2
};

void DestroyCurves(OrvAnimCurve* pCurves[3])
{
    for (int j = 0; j < 3; ++j)
    {
        pCurves[j]->Destroy(false);
        pCurves[j] = nullptr;
    }
}

// Runs the constant-key reducer on the three curves of one kind; a channel left without keys
// keeps its first key's value (from before the reduction) as its rest value.
void ReduceConstantKeys(OrvAnimCurve* pCurves[3], OrvVector4& pRest)
{
    double lFirst[3];
    for (int j = 0; j < 3; ++j)
        lFirst[j] = pCurves[j]->KeyGetCount() > 0 ? static_cast<double>(pCurves[j]->KeyGetValue(0)) : pRest[j];
    OrvAnimCurveFilterConstantKeyReducer lReducer;
    OrvAnimCurveFilter& lFilter = lReducer;
    lFilter.Apply(pCurves, 3, nullptr);
    for (int j = 0; j < 3; ++j)
        if (pCurves[j]->KeyGetCount() == 0) pRest[j] = lFirst[j];
}

// Ends the sampling run of pBone alone.
void FlushBoneCurves(OrvAsfNode& pBone)
{
    // Curves exist only after CreateDataFromDOF, which gave the bone its scene; without one the
    // host defaults (no filter, no reducer) apply.
    OrvGlobalSettings lDefaults;
    const OrvGlobalSettings& lSettings = pBone.mScene ? pBone.mScene->GetGlobalSettings() : lDefaults;

    if (pBone.mTranslationCurve[0])
    {
        if (pBone.mTranslationCurve[0]->KeyGetCount() <= 1)
            DestroyCurves(pBone.mTranslationCurve);
        else if (lSettings.GetUseConstantKeyReducer())
            ReduceConstantKeys(pBone.mTranslationCurve, pBone.mLocalTranslation);
    }
    if (pBone.mRotationCurve[0])
    {
        if (pBone.mRotationCurve[0]->KeyGetCount() <= 1)
        {
            DestroyCurves(pBone.mRotationCurve);
        }
        else
        {
            if (lSettings.GetRotationFilterToApply() == eUnroll)
            {
                OrvAnimCurveFilterUnroll lUnroll;
                lUnroll.SetRotationOrder(
                    static_cast<OrvEuler::EOrder>(EulerOrderFromOrderBuf(pBone.mDof, pBone.mDofCount)));
                lUnroll.Apply(pBone.mRotationCurve, 3, nullptr);
            }
            else if (lSettings.GetRotationFilterToApply() == eGimbalKiller)
            {
                OrvAnimCurveFilterGimbleKiller lKiller;
                lKiller.Apply(pBone.mRotationCurve, 3, nullptr);
            }
            if (lSettings.GetUseConstantKeyReducer()) ReduceConstantKeys(pBone.mRotationCurve, pBone.mLocalRotation);
        }
    }
}

} // namespace

void OrvAsfNode::StopSamplingData()
{
    VisitPreOrder([](OrvAsfNode* pBone) {
        FlushBoneCurves(*pBone);
        return false;
    });
}

} // namespace orvsdk
