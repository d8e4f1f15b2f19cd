#include "orvsdk/skeleton/OrvAsfNode.h"

#include "orvsdk/host/OrvAnimCurve.h"
#include "orvsdk/host/OrvMemory.h"

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
    for (int k = 0; k < 3; ++k)
    {
        DestroyCurve(mTranslationCurve[k]);
        DestroyCurve(mRotationCurve[k]);
    }
    if (mChildren.HasStorage())
    {
        const int lCount = mChildren.GetCount();
        for (int i = 0; i < lCount; ++i) Destroy(mChildren[i]);
        mChildren.Release();
    }
    mScene = nullptr;
}

void OrvAsfNode::SetScene(OrvScene* pScene)
{
    mScene = pScene;
}

OrvAsfNode* OrvAsfNode::Find(const char* pName)
{
    if (std::strcmp(mName, pName) == 0) return this;
    const int lCount = mChildren.GetCount();
    for (int i = 0; i < lCount; ++i)
    {
        if (OrvAsfNode* lFound = mChildren[i]->Find(pName)) return lFound;
    }
    return nullptr;
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
