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

template <typename TChannels>
OrvVector4 ValueAt(const TChannels& pChannels, OrvTime pTime)
{
    double lValue[3];
    for (int i = 0; i < 3; ++i)
        lValue[i] = pChannels.mCurve[i] ? pChannels.mCurve[i]->Evaluate(pTime) : pChannels.mValue[i];
    return OrvVector4(lValue[0], lValue[1], lValue[2]);
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
}

OrvPoseEvaluator::NodeRecipe OrvPoseEvaluator::Resolve(OrvNode& pNode, OrvAnimStack* pStack) const
{
    NodeRecipe lRecipe;
    lRecipe.mTranslation = ResolveChannels<Channels>(pNode.LclTranslation, pStack);
    lRecipe.mRotation = ResolveChannels<Channels>(pNode.LclRotation, pStack);
    lRecipe.mScaling = ResolveChannels<Channels>(pNode.LclScaling, pStack);
    lRecipe.mRotationOffset = pNode.GetRotationOffset(OrvNode::eSourcePivot);
    if (!pNode.GetRotationActive()) return lRecipe;
    OrvEuler::EOrder lOrder = OrvEuler::eOrderXYZ;
    pNode.GetRotationOrder(OrvNode::eSourcePivot, lOrder);
    if (lOrder >= OrvEuler::eOrderXYZ && lOrder <= OrvEuler::eOrderZYX) lRecipe.mOrder = lOrder;
    lRecipe.mPreRotation.SetR(pNode.GetPreRotation(OrvNode::eSourcePivot), OrvEuler::eOrderXYZ);
    OrvAMatrix lPostRotation;
    lPostRotation.SetR(pNode.GetPostRotation(OrvNode::eSourcePivot), OrvEuler::eOrderXYZ);
    lRecipe.mPostRotationInverse = lPostRotation.Inverse();
    return lRecipe;
}

// The node's formula, operation for operation: T(translation + offset) * Rpre * R * inverse(Rpost)
// * S, multiplied from the left.
OrvAMatrix OrvPoseEvaluator::LocalTransform(const NodeRecipe& pRecipe, OrvTime pTime) const
{
    return Compose(pRecipe, ValueAt(pRecipe.mTranslation, pTime), ValueAt(pRecipe.mRotation, pTime),
                   ValueAt(pRecipe.mScaling, pTime));
}

OrvAMatrix OrvPoseEvaluator::Compose(const NodeRecipe& pRecipe, const OrvVector4& pTranslation,
                                     const OrvVector4& pRotation, const OrvVector4& pScaling)
{
    OrvAMatrix lTranslation;
    lTranslation.SetT(pTranslation + pRecipe.mRotationOffset);
    OrvAMatrix lRotation;
    lRotation.SetRInOrder(pRotation, pRecipe.mOrder);
    OrvAMatrix lScaling;
    lScaling.SetS(pScaling);
    return lTranslation * pRecipe.mPreRotation * lRotation * pRecipe.mPostRotationInverse * lScaling;
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
    for (size_t i = 0; i < mRecipes.size(); ++i)
    {
        const NodeRecipe& lRecipe = mRecipes[i];
        pLocals[i] = Compose(lRecipe, lRest(lRecipe.mTranslation), lRest(lRecipe.mRotation), lRest(lRecipe.mScaling));
    }
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
        if (mParents[i] >= 0)
            pGlobals[i] = pGlobals[mParents[i]] * lLocal;
        else
            pGlobals[i] = mRootParent ? mRootParent->EvaluateGlobalTransform(pTime) * lLocal : lLocal;
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
