// Rest pose of a read skeleton: from each bone's global description (direction, length, axis
// frame) to its offset from the parent's joint and its rest translation and rotation in the
// parent's frame.

#include "orvsdk/host/math/OrvEuler.h"
#include "orvsdk/skeleton/OrvAsfNode.h"
#include "orvsdk/skeleton/OrvRotationOrder.h"

namespace orvsdk {

namespace {

void ClearXYZ(OrvVector4& pVector)
{
    for (int k = 0; k < 3; ++k) pVector[k] = 0.0;
}

// Both rest values live in the host node's pivots: they are zero here, and every bone's position
// is its own bone vector (the root's file position included).
void SetupWithoutRestValues(OrvAsfNode& pBone)
{
    ClearXYZ(pBone.mLocalRotation);
    ClearXYZ(pBone.mLocalTranslation);
    pBone.mPosition = pBone.mDirection * pBone.mLength;
    if (pBone.mParent)
        pBone.mParentOffset = pBone.mParent->mPosition;
    else
        ClearXYZ(pBone.mParentOffset);
}

void SetupBelowParent(OrvAsfNode& pBone, bool pUseRotationOffset, bool pUsePreRotation)
{
    const OrvAsfNode& lParent = *pBone.mParent;
    pBone.mPosition = pBone.mDirection * pBone.mLength;
    pBone.mParentOffset = lParent.mPosition;
    pBone.mParentAxisMatrix = lParent.mAxisMatrix;
    pBone.mParentAxisMatrixInverse = lParent.mAxisMatrixInverse;
    if (!pUseRotationOffset) pBone.mLocalTranslation = pBone.mParentAxisMatrixInverse.MultT(pBone.mParentOffset);
    if (!pUsePreRotation) pBone.SetLocalRotationFrom(pBone.mParentAxisMatrixInverse * pBone.mAxisMatrix);
}

// The root keeps its file position; its frame is its global frame.
void SetupRoot(OrvAsfNode& pRoot, bool pUseRotationOffset, bool pUsePreRotation)
{
    if (!pUseRotationOffset) pRoot.mLocalTranslation = pRoot.mPosition;
    if (!pUsePreRotation) pRoot.SetLocalRotationFrom(pRoot.mAxisMatrix);
}

void SetupBone(OrvAsfNode& pBone, bool pUseRotationOffset, bool pUsePreRotation)
{
    if (pUseRotationOffset && pUsePreRotation)
        SetupWithoutRestValues(pBone);
    else if (pBone.mParent)
        SetupBelowParent(pBone, pUseRotationOffset, pUsePreRotation);
    else
        SetupRoot(pBone, pUseRotationOffset, pUsePreRotation);
}

} // namespace

void OrvAsfNode::SetupPosition(bool pUseRotationOffset, bool pUsePreRotation)
{
    // Pre-order: each bone reads its parent's finished position and frame.
    VisitPreOrder([pUseRotationOffset, pUsePreRotation](OrvAsfNode* pBone) {
        SetupBone(*pBone, pUseRotationOffset, pUsePreRotation);
        return false;
    });
}

void OrvAsfNode::SetLocalRotationFrom(const OrvAMatrix& pRelativeFrame)
{
    const int lOrder = EulerOrderFromOrderBuf(mDof, mDofCount);
    const OrvVector4 lAngles = pRelativeFrame.GetR(lOrder);
    OrvVector4 lRotation = lAngles;
    for (int k = 0; k < 3; ++k) lRotation[OrvEuler::AxisTable[lOrder][k]] = lAngles[k];
    mLocalRotation = lRotation;
}

} // namespace orvsdk
