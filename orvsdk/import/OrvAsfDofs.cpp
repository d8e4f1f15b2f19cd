// Rotation settings and limits of a bone's host node.
#include "orvsdk/skeleton/OrvAsfNode.h"

#include "orvsdk/host/math/OrvAMatrix.h"
#include "orvsdk/host/scene/OrvLimits.h"
#include "orvsdk/host/scene/OrvNode.h"
#include "orvsdk/skeleton/OrvRotationOrder.h"

namespace orvsdk {

namespace {

// DOF codes of the host's X, Y, Z slots for each kind of limit.
const int sTranslationCodes[3] = {0, 1, 2};
const int sRotationCodes[3] = {5, 4, 3};

bool AnyLimitActive(const OrvAsfNode& pBone, const int pCodes[3])
{
    for (int a = 0; a < 3; ++a)
        if (pBone.mLimitMinActive[pCodes[a]] || pBone.mLimitMaxActive[pCodes[a]]) return true;
    return false;
}

// Copies the bone's limits of three DOF codes into the host limits; an inactive bound goes as 0.
void ApplyLimits(const OrvAsfNode& pBone, const int pCodes[3], OrvLimits& pLimits)
{
    const bool* lMinActive = pBone.mLimitMinActive;
    const bool* lMaxActive = pBone.mLimitMaxActive;
    pLimits.SetActive(true);
    pLimits.SetMinActive(lMinActive[pCodes[0]], lMinActive[pCodes[1]], lMinActive[pCodes[2]]);
    pLimits.SetMaxActive(lMaxActive[pCodes[0]], lMaxActive[pCodes[1]], lMaxActive[pCodes[2]]);
    OrvVectorTemplate3<double> lMin;
    OrvVectorTemplate3<double> lMax;
    for (int a = 0; a < 3; ++a)
    {
        lMin[a] = lMinActive[pCodes[a]] ? pBone.mLimitMin[pCodes[a]] : 0.0;
        lMax[a] = lMaxActive[pCodes[a]] ? pBone.mLimitMax[pCodes[a]] : 0.0;
    }
    pLimits.SetMin(lMin);
    pLimits.SetMax(lMax);
}

} // namespace

void OrvAsfNode::SetDoFs(OrvNode* pNode, bool pUseRotationOffset, bool pUsePreRotation)
{
    OrvAMatrix lParentPart;
    if (mParent)
        lParentPart = mParent->mAxisMatrix.Inverse();
    else if (pUseRotationOffset)
        mParentOffset = mRotationOffset;
    const OrvVector4 lOffset = lParentPart.MultT(mParentOffset);
    const OrvVector4 lRestOrientation = (lParentPart * mAxisMatrix).GetR(0);
    const int lOrder = EulerOrderFromOrderBuf(mDof, mDofCount);
    pNode->SetRotationActive(true);
    pNode->SetRotationOrder(OrvNode::eSourcePivot, static_cast<OrvEuler::EOrder>(lOrder));
    if (pUseRotationOffset) pNode->SetRotationOffset(OrvNode::eSourcePivot, lOffset);
    if (pUsePreRotation) pNode->SetPreRotation(OrvNode::eSourcePivot, lRestOrientation);
}

void OrvAsfNode::SetLimits(OrvNode* pNode, bool pUseRotationOffset, bool pUsePreRotation)
{
    if (pUseRotationOffset && AnyLimitActive(*this, sTranslationCodes))
        ApplyLimits(*this, sTranslationCodes, pNode->GetTranslationLimits());
    if (pUsePreRotation && AnyLimitActive(*this, sRotationCodes))
        ApplyLimits(*this, sRotationCodes, pNode->GetRotationLimits());
}

} // namespace orvsdk
