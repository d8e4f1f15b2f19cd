// An existing skeleton bound by bone names to a host node hierarchy.
#include "orvsdk/skeleton/OrvAsfScene.h"

#include "orvsdk/host/OrvNode.h"
#include "orvsdk/skeleton/OrvAsfNode.h"

namespace orvsdk {

bool OrvAsfScene::MergeORVToASF(OrvNode* pRoot)
{
    if (!mRoot) return false;
    mRoot->GetCurveNodePointers(pRoot);
    return RecursiveMerge(pRoot, mRoot, mRoot);
}

bool OrvAsfScene::RecursiveMerge(OrvNode* pNode, OrvAsfNode* pBone, OrvAsfNode* pMatchedAncestor)
{
    const int lChildCount = pBone->mChildren.GetCount();
    for (int i = 0; i < lChildCount; ++i)
    {
        OrvAsfNode* lBone = pBone->mChildren[i];
        OrvNode* lMatch = pNode->FindChild(lBone->mName, true, false);
        if (!lMatch)
        {
            RecursiveMerge(pNode, lBone, pMatchedAncestor);
            continue;
        }
        lBone->mParentAxisMatrix = pMatchedAncestor->mAxisMatrix;
        lBone->mParentAxisMatrixInverse = pMatchedAncestor->mAxisMatrixInverse;
        lBone->GetCurveNodePointers(lMatch);
        RecursiveMerge(lMatch, lBone, lBone);
    }
    return true;
}

} // namespace orvsdk
