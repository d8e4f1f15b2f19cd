// Host node hierarchies built from a skeleton, fresh or merged onto an existing hierarchy.
#include "orvsdk/skeleton/OrvAsfNode.h"
#include "orvsdk/skeleton/OrvAsfScene.h"

#include "orvsdk/host/scene/OrvNode.h"
#include "orvsdk/host/scene/OrvScene.h"
#include "orvsdk/host/scene/OrvSkeleton.h"
#include "orvsdk/host/core/OrvString.h"

#include <utility>
#include <vector>

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

// The arguments of a node building, the same for every bone.
struct NodeBuilding
{
    OrvScene* mScene;
    const char* mTakeName;
    bool mUseLimits;
    bool mUseRotationOffset;
    bool mUsePreRotation;
};

// The host node of pBone alone, with its curves, rotation settings and limits; no children yet.
OrvNode* CreateBoneNode(OrvAsfNode& pBone, const NodeBuilding& pBuilding)
{
    pBone.mScene = pBuilding.mScene;
    OrvNode* lNode = CreateSkeletonNode(pBuilding.mScene, pBone.mName);
    pBone.SetCurves(lNode, pBuilding.mTakeName);
    pBone.SetDoFs(lNode, pBuilding.mUseRotationOffset, pBuilding.mUsePreRotation);
    if (pBuilding.mUseLimits) pBone.SetLimits(lNode, pBuilding.mUseRotationOffset, pBuilding.mUsePreRotation);
    return lNode;
}

// A bone whose node is built, and the index of its next child to build.
struct BuildStep
{
    OrvAsfNode* mBone;
    OrvNode* mNode;
    int mNextChild;
};

} // namespace

OrvNode* OrvAsfNode::ASFToORV(OrvScene* pScene, const char* pTakeName, bool pUseLimits, bool pUseRotationOffset,
                              bool pUsePreRotation)
{
    // Nodes are made in pre-order; a node joins its parent once its whole subtree is built, so
    // the parent has no parent yet and the attachment never walks up a long chain. The explicit
    // stack holds the path from this bone down to the bone being built.
    const NodeBuilding lBuilding{pScene, pTakeName, pUseLimits, pUseRotationOffset, pUsePreRotation};
    std::vector<BuildStep> lPath{{this, CreateBoneNode(*this, lBuilding), 0}};
    for (;;)
    {
        BuildStep& lStep = lPath.back();
        if (lStep.mNextChild < lStep.mBone->mChildren.GetCount())
        {
            OrvAsfNode* lChild = lStep.mBone->mChildren[lStep.mNextChild++];
            lPath.push_back({lChild, CreateBoneNode(*lChild, lBuilding), 0});
            continue;
        }
        if (lStep.mNextChild == 0 && lStep.mBone->mLength > 0.0)
            AddEndNode(*lStep.mBone, lStep.mNode, pUseRotationOffset);
        OrvNode* lBuilt = lStep.mNode;
        lPath.pop_back();
        if (lPath.empty()) return lBuilt;
        lPath.back().mNode->AddChild(lBuilt);
    }
}

void OrvAsfNode::MergeASFToORV(OrvScene* pScene, OrvNode* pParent, const char* pTakeName, bool pUseLimits,
                               bool pUseRotationOffset, bool pUsePreRotation)
{
    // Pre-order, each bone with the host node under which its own node is looked for.
    std::vector<std::pair<OrvAsfNode*, OrvNode*>> lPending{{this, pParent}};
    while (!lPending.empty())
    {
        OrvAsfNode* lBone = lPending.back().first;
        OrvNode* lParent = lPending.back().second;
        lPending.pop_back();
        OrvNode* lMatch = lParent->FindChild(lBone->mName, false, false);
        if (!lMatch || !lMatch->GetSkeleton())
        {
            lParent->AddChild(lBone->ASFToORV(pScene, pTakeName, pUseLimits, pUseRotationOffset, pUsePreRotation));
            continue;
        }
        lBone->SetCurves(lMatch, pTakeName);
        for (int i = lBone->mChildren.GetCount() - 1; i >= 0; --i) lPending.emplace_back(lBone->mChildren[i], lMatch);
    }
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
