// Pruning of a bone tree: dummy bones (no degree of freedom) and unanimated end sites.

#include "orvsdk/host/anim/OrvAnimCurveNode.h"
#include "orvsdk/skeleton/OrvAsfNode.h"

#include <vector>

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

// Removes pParent's child at pIndex when it has no degree of freedom, its children handed up.
void RemoveIfDummy(OrvAsfNode& pParent, int pIndex, bool pUseRotationOffset, bool pUsePreRotation)
{
    OrvAsfNode* lChild = pParent.mChildren[pIndex];
    if (lChild->mDofCount != 0) return;
    if (!HandUpChildren(pParent, *lChild, pUseRotationOffset, pUsePreRotation)) return;
    lChild->mChildren.Release();
    pParent.mChildren.RemoveAt(pIndex);
    OrvAsfNode::Destroy(lChild);
}

void RemoveEndSiteChildren(OrvAsfNode& pBone)
{
    for (int i = pBone.mChildren.GetCount() - 1; i >= 0; --i)
    {
        OrvAsfNode* lChild = pBone.mChildren[i];
        if (!IsEndSite(*lChild)) continue;
        pBone.mChildren.RemoveAt(i);
        OrvAsfNode::Destroy(lChild);
    }
}

} // namespace

void OrvAsfNode::RemoveDummy(bool pUseRotationOffset, bool pUsePreRotation)
{
    // Post-order with an explicit stack instead of recursion. Each frame holds a bone and the
    // index of the child it is at, counting from the last child to the first; a child is judged
    // once its own subtree is simplified, so a dummy's children are never dummies when they are
    // handed up. Handed-up children land behind the index and are not visited again.
    struct Frame
    {
        OrvAsfNode* mBone;
        int mChild;
    };
    std::vector<Frame> lFrames{Frame{this, mChildren.GetCount() - 1}};
    for (;;)
    {
        const Frame lTop = lFrames.back();
        if (lTop.mChild >= 0)
        {
            OrvAsfNode* lChild = lTop.mBone->mChildren[lTop.mChild];
            lFrames.push_back(Frame{lChild, lChild->mChildren.GetCount() - 1});
            continue;
        }
        lFrames.pop_back();
        if (lFrames.empty()) return;
        Frame& lParent = lFrames.back();
        RemoveIfDummy(*lParent.mBone, lParent.mChild, pUseRotationOffset, pUsePreRotation);
        --lParent.mChild;
    }
}

void OrvAsfNode::RemoveEndSite()
{
    // Removal among a bone's children comes before the walk reaches them, so a bone left
    // childless by it stays.
    VisitPreOrder([](OrvAsfNode* pBone) {
        RemoveEndSiteChildren(*pBone);
        return false;
    });
}

} // namespace orvsdk
