// An existing skeleton bound by bone names to a host node hierarchy.
#include "orvsdk/skeleton/OrvAsfScene.h"

#include "orvsdk/host/scene/OrvNode.h"
#include "orvsdk/skeleton/OrvAsfNode.h"

#include <vector>

namespace orvsdk {

bool OrvAsfScene::MergeORVToASF(OrvNode* pRoot)
{
    if (!mRoot) return false;
    mRoot->GetCurveNodePointers(pRoot);
    return RecursiveMerge(pRoot, mRoot, mRoot);
}

bool OrvAsfScene::RecursiveMerge(OrvNode* pNode, OrvAsfNode* pBone, OrvAsfNode* pMatchedAncestor)
{
    // Bones in pre-order, as a recursive walk would take them, each with the node below which its
    // name is looked for and the nearest bone above it that found a node. An explicit stack, so
    // the skeleton's depth does not matter.
    struct Binding
    {
        OrvAsfNode* mBone;
        OrvNode* mNode;
        OrvAsfNode* mMatchedAncestor;
    };
    std::vector<Binding> lPending;
    auto lPushChildren = [&lPending](OrvAsfNode* pParent, OrvNode* pParentNode, OrvAsfNode* pAncestor) {
        for (int i = pParent->mChildren.GetCount() - 1; i >= 0; --i)
            lPending.push_back({pParent->mChildren[i], pParentNode, pAncestor});
    };
    lPushChildren(pBone, pNode, pMatchedAncestor);
    while (!lPending.empty())
    {
        const Binding lBinding = lPending.back();
        lPending.pop_back();
        OrvAsfNode* lBone = lBinding.mBone;
        OrvNode* lMatch = lBinding.mNode->FindChild(lBone->mName, true, false);
        if (!lMatch)
        {
            lPushChildren(lBone, lBinding.mNode, lBinding.mMatchedAncestor);
            continue;
        }
        lBone->mParentAxisMatrix = lBinding.mMatchedAncestor->mAxisMatrix;
        lBone->mParentAxisMatrixInverse = lBinding.mMatchedAncestor->mAxisMatrixInverse;
        lBone->GetCurveNodePointers(lMatch);
        lPushChildren(lBone, lMatch, lBone);
    }
    return true;
}

} // namespace orvsdk
