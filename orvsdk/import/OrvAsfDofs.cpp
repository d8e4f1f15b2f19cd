// Rotation settings and limits of a bone's host node.
#include "orvsdk/skeleton/OrvAsfNode.h"

#include "orvsdk/host/math/OrvAMatrix.h"
#include "orvsdk/host/scene/OrvLimits.h"
#include "orvsdk/host/scene/OrvNode.h"
#include "orvsdk/skeleton/OrvAsfDof.h"
#include "orvsdk/skeleton/OrvRotationOrder.h"

namespace orvsdk {

namespace {

bool AnyLimitActive(const OrvAsfNode& pBone, OrvAsfDofOnAxis pDofOnAxis)
{
    for (int a = 0; a < 3; ++a)
        if (pBone.mLimitMinActive[pDofOnAxis(a)] || pBone.mLimitMaxActive[pDofOnAxis(a)]) return true;
    return false;
}

// Copies the bone's limits of one kind into the host limits; an inactive bound goes as 0.
void ApplyLimits(const OrvAsfNode& pBone, OrvAsfDofOnAxis pDofOnAxis, OrvLimits& pLimits)
{
    const bool* lMinActive = pBone.mLimitMinActive;
    const bool* lMaxActive = pBone.mLimitMaxActive;
    const int lCodes[3] = {pDofOnAxis(0), pDofOnAxis(1), pDofOnAxis(2)};
    pLimits.SetActive(true);
    pLimits.SetMinActive(lMinActive[lCodes[0]], lMinActive[lCodes[1]], lMinActive[lCodes[2]]);
    pLimits.SetMaxActive(lMaxActive[lCodes[0]], lMaxActive[lCodes[1]], lMaxActive[lCodes[2]]);
    OrvVectorTemplate3<double> lMin;
    OrvVectorTemplate3<double> lMax;
    for (int a = 0; a < 3; ++a)
    {
        lMin[a] = lMinActive[lCodes[a]] ? pBone.mLimitMin[lCodes[a]] : 0.0;
        lMax[a] = lMaxActive[lCodes[a]] ? pBone.mLimitMax[lCodes[a]] : 0.0;
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
    if (pUseRotationOffset && AnyLimitActive(*this, TranslationDofOnAxis))
        ApplyLimits(*this, TranslationDofOnAxis, pNode->GetTranslationLimits());
    if (pUsePreRotation && AnyLimitActive(*this, RotationDofOnAxis))
        ApplyLimits(*this, RotationDofOnAxis, pNode->GetRotationLimits());
}

} // namespace orvsdk
