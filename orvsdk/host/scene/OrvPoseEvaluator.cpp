#include "orvsdk/host/scene/OrvPoseEvaluator.h"

#include "orvsdk/host/anim/OrvAnimCurve.h"
#include "orvsdk/host/anim/OrvAnimCurveNode.h"
#include "orvsdk/host/math/OrvEuler.h"
#include "orvsdk/host/scene/OrvNode.h"

namespace orvsdk {

namespace {

// The per-channel sources of pProperty: a curve with keys where one drives the channel, else the
// channel's value, else (no curve node) the property's value; as OrvNode evaluates them.
template <typename TChannels>
TChannels ResolveChannels(OrvProperty& pProperty, OrvAnimStack* pStack)
{
    TChannels lChannels;
    pProperty.Get(lChannels.mValue, eOrvDouble3);
    OrvAnimCurveNode* lCurveNode = pProperty.GetCurveNode(pStack, false);
    if (!lCurveNode) return lChannels;
    for (unsigned lChannel = 0; lChannel < 3; ++lChannel)
    {
        const OrvAnimCurve* lCurve = lCurveNode->GetCurve(lChannel);
        if (lCurve && lCurve->KeyGetCount() > 0)
            lChannels.mCurve[lChannel] = lCurve;
        else
            lCurveNode->GetChannel(lChannel).Get(&lChannels.mValue[lChannel], eOrvDouble);
    }
    return lChannels;
}

// Whether a curve drives any channel of pChannels.
template <typename TChannels>
bool IsAnimated(const TChannels& pChannels)
{
    return pChannels.mCurve[0] || pChannels.mCurve[1] || pChannels.mCurve[2];
}

} // namespace

OrvPoseEvaluator::OrvPoseEvaluator(OrvNode* pRoot, OrvAnimStack* pStack) : mRootParent(pRoot->GetParent())
{
    // Pre-order with an explicit stack, so the hierarchy's depth does not matter.
    std::vector<std::pair<OrvNode*, int>> lPending{{pRoot, -1}};
    while (!lPending.empty())
    {
        const auto [lNode, lParent] = lPending.back();
        lPending.pop_back();
        const int lIndex = static_cast<int>(mNodes.size());
        mNodes.push_back(lNode);
        mParents.push_back(lParent);
        mRecipes.push_back(Resolve(*lNode, pStack));
        for (int i = lNode->GetChildCount() - 1; i >= 0; --i) lPending.emplace_back(lNode->GetChild(i), lIndex);
    }
    mCurveHints = std::make_unique<std::atomic<int>[]>(static_cast<size_t>(mCurveCount));
    for (OrvNode* lAncestor = mRootParent; lAncestor && mRootParentIsStatic; lAncestor = lAncestor->GetParent())
    {
        // The ancestors' global transforms come from the scene's current stack.
        mRootParentIsStatic = !IsAnimated(ResolveChannels<Channels>(lAncestor->LclTranslation, nullptr)) &&
                              !IsAnimated(ResolveChannels<Channels>(lAncestor->LclRotation, nullptr)) &&
                              !IsAnimated(ResolveChannels<Channels>(lAncestor->LclScaling, nullptr));
    }
    if (mRootParent && mRootParentIsStatic) mRootParentGlobal = mRootParent->EvaluateGlobalTransform(OrvTime());
}

OrvPoseEvaluator::NodeRecipe OrvPoseEvaluator::Resolve(OrvNode& pNode, OrvAnimStack* pStack)
{
    NodeRecipe lRecipe;
    lRecipe.mTranslation = ResolveChannels<Channels>(pNode.LclTranslation, pStack);
    lRecipe.mRotation = ResolveChannels<Channels>(pNode.LclRotation, pStack);
    lRecipe.mScaling = ResolveChannels<Channels>(pNode.LclScaling, pStack);
    for (Channels* lChannels : {&lRecipe.mTranslation, &lRecipe.mRotation, &lRecipe.mScaling})
        for (int i = 0; i < 3; ++i)
            if (lChannels->mCurve[i]) lChannels->mHint[i] = mCurveCount++;
    lRecipe.mRotationOffset = pNode.GetRotationOffset(OrvNode::eSourcePivot);
    lRecipe.mHasScaling = IsAnimated(lRecipe.mScaling) || lRecipe.mScaling.mValue[0] != 1.0 ||
                          lRecipe.mScaling.mValue[1] != 1.0 || lRecipe.mScaling.mValue[2] != 1.0;
    if (pNode.GetRotationActive())
    {
        OrvEuler::EOrder lOrder = OrvEuler::eOrderXYZ;
        pNode.GetRotationOrder(OrvNode::eSourcePivot, lOrder);
        if (lOrder >= OrvEuler::eOrderXYZ && lOrder <= OrvEuler::eOrderZYX) lRecipe.mOrder = lOrder;
        lRecipe.mPreRotation.SetR(pNode.GetPreRotation(OrvNode::eSourcePivot), OrvEuler::eOrderXYZ);
        OrvAMatrix lPostRotation;
        lPostRotation.SetR(pNode.GetPostRotation(OrvNode::eSourcePivot), OrvEuler::eOrderXYZ);
        lRecipe.mPostRotationInverse = lPostRotation.Inverse();
        lRecipe.mHasPreRotation = lRecipe.mPreRotation != OrvAMatrix();
        lRecipe.mHasPostRotation = lRecipe.mPostRotationInverse != OrvAMatrix();
    }
    if (!IsAnimated(lRecipe.mTranslation) && !IsAnimated(lRecipe.mRotation) && !IsAnimated(lRecipe.mScaling))
    {
        lRecipe.mLocal = LocalTransform(lRecipe, OrvTime());
        lRecipe.mIsStatic = true;
    }
    return lRecipe;
}

OrvVector4 OrvPoseEvaluator::ValueAt(const Channels& pChannels, OrvTime pTime) const
{
    double lValue[3];
    for (int i = 0; i < 3; ++i)
    {
        if (!pChannels.mCurve[i])
        {
            lValue[i] = pChannels.mValue[i];
            continue;
        }
        std::atomic<int>& lSharedHint = mCurveHints[static_cast<size_t>(pChannels.mHint[i])];
        int lHint = lSharedHint.load(std::memory_order_relaxed);
        lValue[i] = pChannels.mCurve[i]->EvaluateFromHint(pTime, lHint);
        lSharedHint.store(lHint, std::memory_order_relaxed);
    }
    return OrvVector4(lValue[0], lValue[1], lValue[2]);
}

// The node's formula T(translation + offset) * Rpre * R * inverse(Rpost) * S, multiplied from the
// left as the node does. The translation matrix only sets the last column, and the identity
// factors change nothing, so both are left out of the products.
template <typename TValueOf>
OrvAMatrix OrvPoseEvaluator::Compose(const NodeRecipe& pRecipe, const TValueOf& pValueOf)
{
    OrvAMatrix lLocal;
    lLocal.SetRInOrder(pValueOf(pRecipe.mRotation), pRecipe.mOrder);
    if (pRecipe.mHasPreRotation) lLocal = pRecipe.mPreRotation.MultAffine(lLocal);
    if (pRecipe.mHasPostRotation) lLocal = lLocal.MultAffine(pRecipe.mPostRotationInverse);
    if (pRecipe.mHasScaling)
    {
        OrvAMatrix lScaling;
        lScaling.SetS(pValueOf(pRecipe.mScaling));
        lLocal = lLocal.MultAffine(lScaling);
    }
    lLocal.SetT(pValueOf(pRecipe.mTranslation) + pRecipe.mRotationOffset);
    return lLocal;
}

OrvAMatrix OrvPoseEvaluator::LocalTransform(const NodeRecipe& pRecipe, OrvTime pTime) const
{
    if (pRecipe.mIsStatic) return pRecipe.mLocal;
    return Compose(pRecipe, [this, pTime](const Channels& pChannels) { return ValueAt(pChannels, pTime); });
}

OrvAMatrix OrvPoseEvaluator::RootParentGlobal(OrvTime pTime) const
{
    if (!mRootParent || mRootParentIsStatic) return mRootParentGlobal;
    return mRootParent->EvaluateGlobalTransform(pTime);
}

void OrvPoseEvaluator::EvaluateLocals(OrvTime pTime, OrvAMatrix* pLocals) const
{
    for (size_t i = 0; i < mRecipes.size(); ++i) pLocals[i] = LocalTransform(mRecipes[i], pTime);
}

void OrvPoseEvaluator::EvaluateRestLocals(OrvAMatrix* pLocals) const
{
    // A channel driven by a curve keeps its property's own value in mValue.
    const auto lRest = [](const Channels& pChannels) {
        return OrvVector4(pChannels.mValue[0], pChannels.mValue[1], pChannels.mValue[2]);
    };
    for (size_t i = 0; i < mRecipes.size(); ++i) pLocals[i] = Compose(mRecipes[i], lRest);
}

OrvVector4 OrvPoseEvaluator::EvaluateLocalTranslation(int pIndex, OrvTime pTime) const
{
    return ValueAt(mRecipes[static_cast<size_t>(pIndex)].mTranslation, pTime);
}

void OrvPoseEvaluator::EvaluateGlobals(OrvTime pTime, OrvAMatrix* pGlobals) const
{
    for (size_t i = 0; i < mRecipes.size(); ++i)
    {
        const OrvAMatrix lLocal = LocalTransform(mRecipes[i], pTime);
        const int lParent = mParents[i];
        pGlobals[i] = lParent >= 0 ? pGlobals[lParent].MultAffine(lLocal) : RootParentGlobal(pTime).MultAffine(lLocal);
    }
}
void OrvPoseEvaluator::EvaluatePositions(OrvTime pTime, OrvAMatrix* pScratch, double* pPositions) const
{
    EvaluateGlobals(pTime, pScratch);
    for (size_t i = 0; i < mNodes.size(); ++i)
        for (int lAxis = 0; lAxis < 3; ++lAxis) pPositions[3 * i + lAxis] = pScratch[i](lAxis, 3);
}

void OrvPoseEvaluator::EvaluatePositionFrames(int pFirst, int pCount, double pFramesPerSecond,
                                              double* pPositions) const
{
    std::vector<OrvAMatrix> lScratch(mNodes.size());
    const size_t lStride = 3 * mNodes.size();
    for (int lFrame = 0; lFrame < pCount; ++lFrame)
        EvaluatePositions(OrvTime::FromFrame(pFirst + lFrame, pFramesPerSecond), lScratch.data(),
                          pPositions + lStride * static_cast<size_t>(lFrame));
}

} // namespace orvsdk
