// Host node hierarchies built from a skeleton, fresh or merged onto an existing hierarchy.
#include "orvsdk/skeleton/OrvAsfNode.h"
#include "orvsdk/skeleton/OrvAsfScene.h"

#include "orvsdk/host/OrvNode.h"
#include "orvsdk/host/OrvScene.h"
#include "orvsdk/host/OrvSkeleton.h"
#include "orvsdk/host/OrvString.h"

namespace orvsdk {

namespace {

// A host node in pScene carrying a new limb-node skeleton attribute.
OrvNode* CreateSkeletonNode(OrvScene* pScene, const char* pName)
{
    OrvNode* lNode = OrvNode::Create(pScene, pName);
    OrvSkeleton* lSkeleton = OrvSkeleton::Create(pScene, "");
    lSkeleton->SetSkeletonType(OrvSkeleton::eLimbNode);
    lNode->SetNodeAttribute(lSkeleton);
    return lNode;
}

// The end node of a leaf bone: placed at the bone's end, in the bone's own frame.
void AddEndNode(const OrvAsfNode& pBone, OrvNode* pBoneNode, bool pUseRotationOffset)
{
    char lName[1024];
    ORVSDK_sprintf(lName, sizeof(lName), "%s%s", pBone.mName, "_End");
    OrvNode* lEnd = CreateSkeletonNode(pBone.mScene, lName);
    const OrvVector4 lOffset = pBone.mAxisMatrixInverse.MultT(pBone.mPosition);
    if (pUseRotationOffset)
        lEnd->SetRotationOffset(OrvNode::eSourcePivot, lOffset);
    else
        lEnd->LclTranslation.Set(lOffset.Buffer(), eOrvDouble3, true);
    pBoneNode->AddChild(lEnd);
}

} // namespace

OrvNode* OrvAsfNode::ASFToORV(OrvScene* pScene, const char* pTakeName, bool pUseLimits, bool pUseRotationOffset,
                              bool pUsePreRotation)
{
    mScene = pScene;
    OrvNode* lNode = CreateSkeletonNode(pScene, mName);
    SetCurves(lNode, pTakeName);
    SetDoFs(lNode, pUseRotationOffset, pUsePreRotation);
    if (pUseLimits) SetLimits(lNode, pUseRotationOffset, pUsePreRotation);
    const int lChildCount = mChildren.GetCount();
    for (int i = 0; i < lChildCount; ++i)
        lNode->AddChild(mChildren[i]->ASFToORV(pScene, pTakeName, pUseLimits, pUseRotationOffset, pUsePreRotation));
    if (lChildCount == 0 && mLength > 0.0) AddEndNode(*this, lNode, pUseRotationOffset);
    return lNode;
}

void OrvAsfNode::MergeASFToORV(OrvScene* pScene, OrvNode* pParent, const char* pTakeName, bool pUseLimits,
                               bool pUseRotationOffset, bool pUsePreRotation)
{
    OrvNode* lMatch = pParent->FindChild(mName, false, false);
    if (!lMatch || !lMatch->GetSkeleton())
    {
        pParent->AddChild(ASFToORV(pScene, pTakeName, pUseLimits, pUseRotationOffset, pUsePreRotation));
        return;
    }
    SetCurves(lMatch, pTakeName);
    const int lChildCount = mChildren.GetCount();
    for (int i = 0; i < lChildCount; ++i)
        mChildren[i]->MergeASFToORV(pScene, lMatch, pTakeName, pUseLimits, pUseRotationOffset, pUsePreRotation);
}

OrvNode* OrvAsfScene::ASFToORV(OrvScene* pScene, const char* pTakeName, bool pUseLimits, bool pUseRotationOffset,
                               bool pUsePreRotation)
{
    return mRoot->ASFToORV(pScene, pTakeName, pUseLimits, pUseRotationOffset, pUsePreRotation);
}

void OrvAsfScene::MergeASFToORV(OrvScene* pScene, OrvNode* pNode, const char* pTakeName, bool pUseLimits,
                                bool pUseRotationOffset, bool pUsePreRotation)
{
    OrvNode* lMatch = pNode->FindChild(mRoot->mName, true, false);
    if (lMatch && lMatch->GetParent())
    {
        mRoot->MergeASFToORV(pScene, lMatch->GetParent(), pTakeName, pUseLimits, pUseRotationOffset, pUsePreRotation);
        return;
    }
    pNode->AddChild(mRoot->ASFToORV(pScene, pTakeName, pUseLimits, pUseRotationOffset, pUsePreRotation));
}

} // namespace orvsdk
