#include "orvsdk/skeleton/OrvAsfNode.h"

#include "orvsdk/host/anim/OrvAnimCurve.h"
#include "orvsdk/host/core/OrvMemory.h"

#include <cstring>
#include <new>

namespace orvsdk {

namespace {

void DestroyCurve(OrvAnimCurve*& pCurve)
{
    if (!pCurve) return;
    pCurve->Destroy(false);
    pCurve = nullptr;
}

} // namespace

OrvAsfNode* OrvAsfNode::Create()
{
    void* lMemory = OrvMalloc(sizeof(OrvAsfNode));
    return lMemory ? new (lMemory) OrvAsfNode : nullptr;
}

void OrvAsfNode::Destroy(OrvAsfNode* pBone)
{
    if (!pBone) return;
    pBone->~OrvAsfNode();
    OrvFree(pBone);
}

OrvAsfNode::OrvAsfNode()
    : mName{}, mDofCount(0), mDof{}, mLimitMin{}, mLimitMax{}, mLimitMinActive{}, mLimitMaxActive{}, mAxisOrder(0),
      mLength(0.0), mParent(nullptr), mTranslationCurveNode(nullptr), mRotationCurveNode(nullptr),
      mScalingCurveNode(nullptr), mTranslationCurve{}, mRotationCurve{}, mIgnoreLimits(false), mScene(nullptr)
{
}

OrvAsfNode::~OrvAsfNode()
{
    DestroyOwnCurves();
    // The subtree is taken apart without recursion and without allocating: the walk goes down
    // through each bone's next child, and the parent links, reset on the way down, lead back up.
    // A bone is freed once its last child is gone, so only childless bones are ever destroyed.
    ReverseChildren();
    OrvAsfNode* lBone = this;
    for (;;)
    {
        const int lCount = lBone->mChildren.GetCount();
        if (lCount > 0)
        {
            OrvAsfNode* lChild = lBone->mChildren[lCount - 1];
            lBone->mChildren.RemoveAt(lCount - 1);
            lChild->DestroyOwnCurves();
            lChild->ReverseChildren();
            lChild->mParent = lBone;
            lBone = lChild;
            continue;
        }
        if (lBone == this) break;
        OrvAsfNode* lParent = lBone->mParent;
        Destroy(lBone);
        lBone = lParent;
    }
    mChildren.Release();
    mScene = nullptr;
}

void OrvAsfNode::DestroyOwnCurves()
{
    for (int k = 0; k < 3; ++k)
    {
        DestroyCurve(mTranslationCurve[k]);
        DestroyCurve(mRotationCurve[k]);
    }
}

void OrvAsfNode::ReverseChildren()
{
    for (int i = 0, j = mChildren.GetCount() - 1; i < j; ++i, --j)
    {
        OrvAsfNode* lFirst = mChildren[i];
        mChildren[i] = mChildren[j];
        mChildren[j] = lFirst;
    }
}

void OrvAsfNode::SetScene(OrvScene* pScene)
{
    mScene = pScene;
}

OrvAsfNode* OrvAsfNode::Find(const char* pName)
{
    return VisitPreOrder([pName](const OrvAsfNode* pBone) { return std::strcmp(pBone->mName, pName) == 0; });
}

OrvAsfNode* OrvAsfNode::GetChild(int pIndex)
{
    return pIndex < mChildren.GetCount() ? mChildren[pIndex] : nullptr;
}

bool OrvAsfNode::AddChild(OrvAsfNode* pBone)
{
    if (mChildren.Add(pBone) < 0) return false;
    pBone->mParent = this;
    return true;
}

void OrvAsfNode::RemoveChild(OrvAsfNode* pBone)
{
    pBone->mParent = nullptr;
    const int lIndex = mChildren.Find(pBone);
    if (lIndex >= 0) mChildren.RemoveAt(lIndex);
}

} // namespace orvsdk
