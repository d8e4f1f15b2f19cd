// Pruning of a bone tree: dummy bones (no degree of freedom) and unanimated end sites.

#include "orvsdk/host/OrvAnimCurveNode.h"
#include "orvsdk/skeleton/OrvAsfNode.h"

namespace orvsdk {

namespace {

// Re-links a bone handed up from a removed dummy to the dummy's parent pParent: the parent frame
// and the offset now reach from pParent's joint, and the rest values follow as the set-up
// computes them.
void RelinkHandedUpBone(OrvAsfNode& pBone, const OrvAsfNode& pDummy, OrvAsfNode& pParent, bool pUseRotationOffset,
                        bool pUsePreRotation)
{
    pBone.mParentAxisMatrix = pDummy.mParentAxisMatrix;
    pBone.mParentAxisMatrixInverse = pDummy.mParentAxisMatrixInverse;
    pBone.mParentOffset = pDummy.mParentOffset + pBone.mParentOffset;
    pBone.mParent = &pParent;
    if (!pUseRotationOffset) pBone.mLocalTranslation = pBone.mParentAxisMatrixInverse.MultT(pBone.mParentOffset);
    if (!pUsePreRotation) pBone.SetLocalRotationFrom(pBone.mParentAxisMatrixInverse * pBone.mAxisMatrix);
}

// Appends pDummy's children to pParent's, last child first, and re-links them. When pParent's
// array cannot take them all, the entries already appended are taken back and false is
// returned: nothing has changed then.
bool HandUpChildren(OrvAsfNode& pParent, OrvAsfNode& pDummy, bool pUseRotationOffset, bool pUsePreRotation)
{
    const int lFirstAppended = pParent.mChildren.GetCount();
    for (int j = pDummy.mChildren.GetCount() - 1; j >= 0; --j)
    {
        if (pParent.mChildren.Add(pDummy.mChildren[j]) >= 0) continue;
        while (pParent.mChildren.GetCount() > lFirstAppended)
            pParent.mChildren.RemoveAt(pParent.mChildren.GetCount() - 1);
        return false;
    }
    for (int i = lFirstAppended; i < pParent.mChildren.GetCount(); ++i)
        RelinkHandedUpBone(*pParent.mChildren[i], pDummy, pParent, pUseRotationOffset, pUsePreRotation);
    return true;
}

bool IsAnimated(const OrvAnimCurveNode* pCurveNode)
{
    return pCurveNode && pCurveNode->IsAnimated(true);
}

bool IsEndSite(const OrvAsfNode& pBone)
{
    return pBone.mChildren.GetCount() == 0 && pBone.mLength == 0.0 && !IsAnimated(pBone.mTranslationCurveNode) &&
           !IsAnimated(pBone.mRotationCurveNode);
}

} // namespace

void OrvAsfNode::RemoveDummy(bool pUseRotationOffset, bool pUsePreRotation)
{
    // From the last child to the first, each child's subtree simplified before the child is
    // judged, so a dummy's own children are never dummies when they are handed up.
    for (int i = mChildren.GetCount() - 1; i >= 0; --i)
    {
        OrvAsfNode* lChild = mChildren[i];
        lChild->RemoveDummy(pUseRotationOffset, pUsePreRotation);
        if (lChild->mDofCount != 0) continue;
        if (!HandUpChildren(*this, *lChild, pUseRotationOffset, pUsePreRotation)) continue;
        lChild->mChildren.Release();
        mChildren.RemoveAt(i);
        Destroy(lChild);
    }
}

void OrvAsfNode::RemoveEndSite()
{
    if (!mChildren.HasStorage()) return;
    for (int i = mChildren.GetCount() - 1; i >= 0; --i)
    {
        OrvAsfNode* lChild = mChildren[i];
        if (!IsEndSite(*lChild)) continue;
        mChildren.RemoveAt(i);
        Destroy(lChild);
    }
    // Removal at this level comes first, so a bone left childless by it stays in this call.
    for (int i = mChildren.GetCount() - 1; i >= 0; --i) mChildren[i]->RemoveEndSite();
}

} // namespace orvsdk
