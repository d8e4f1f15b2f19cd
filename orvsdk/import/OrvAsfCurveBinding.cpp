// Curve creation on bones, hand-over of a bone's curves to a host node, and caching of a host
// node's pivots and curve nodes in a bone.
#include "orvsdk/skeleton/OrvAsfNode.h"

#include "orvsdk/host/anim/OrvAnimCurve.h"
#include "orvsdk/host/anim/OrvAnimCurveNode.h"
#include "orvsdk/host/anim/OrvAnimLayer.h"
#include "orvsdk/host/anim/OrvAnimStack.h"
#include "orvsdk/host/scene/OrvNode.h"
#include "orvsdk/host/scene/OrvScene.h"
#include "orvsdk/host/core/OrvString.h"
#include "orvsdk/skeleton/OrvAsfDof.h"

namespace orvsdk {

namespace {

const char* const sTranslationSuffixes[3] = {"_tx", "_ty", "_tz"};
const char* const sRotationSuffixes[3] = {"_rx", "_ry", "_rz"};

void CreateCurves(OrvScene* pScene, const char* pBoneName, const char* const pSuffixes[3], OrvAnimCurve* pCurves[3])
{
    for (int j = 0; j < 3; ++j) pCurves[j] = OrvAnimCurve::Create(pScene, OrvString(pBoneName) + pSuffixes[j]);
}

// Writes the rest value into each channel of the property's curve node in pStack, replaces the
// channel's first curve with the bone's and makes the bone forget its curves. Without a curve
// node the curves stay with the bone.
void HandOverCurves(OrvProperty& pProperty, OrvAnimStack* pStack, const OrvVector4& pRest, OrvAnimCurve* pCurves[3])
{
    OrvAnimCurveNode* lCurveNode = pProperty.GetCurveNode(pStack, true);
    if (!lCurveNode) return;
    for (unsigned j = 0; j < 3; ++j)
    {
        OrvProperty& lChannel = lCurveNode->GetChannel(j);
        if (lChannel.IsValid())
        {
            const double lValue = pRest[static_cast<int>(j)];
            lChannel.Set(&lValue, eOrvDouble, true);
        }
        if (OrvAnimCurve* lOld = lCurveNode->GetCurve(j, 0, nullptr))
        {
            lCurveNode->DisconnectFromChannel(lOld, j);
            lOld->Destroy(false);
        }
        lCurveNode->ConnectToChannel(pCurves[j], j, true);
        pCurves[j] = nullptr;
    }
}

// Records pScene in pBone and creates the bone's own curves (not its children's).
void CreateBoneCurves(OrvAsfNode& pBone, OrvScene* pScene)
{
    pBone.mScene = pScene;
    bool lHasTranslation = false;
    bool lHasRotation = false;
    for (int i = 0; i < pBone.mDofCount; ++i)
    {
        if (IsTranslationDof(pBone.mDof[i])) lHasTranslation = true;
        if (IsRotationDof(pBone.mDof[i])) lHasRotation = true;
    }
    if (lHasTranslation) CreateCurves(pScene, pBone.mName, sTranslationSuffixes, pBone.mTranslationCurve);
    if (lHasRotation) CreateCurves(pScene, pBone.mName, sRotationSuffixes, pBone.mRotationCurve);
}

} // namespace

void OrvAsfNode::CreateDataFromDOF(OrvScene* pScene)
{
    VisitPreOrder([pScene](OrvAsfNode* pBone) {
        CreateBoneCurves(*pBone, pScene);
        return false;
    });
}

void OrvAsfNode::SetCurves(OrvNode* pNode, const char* pTakeName)
{
    OrvAnimStack* lStack = static_cast<OrvAnimStack*>(
        mScene->RootProperty.FindSrcObject(OrvCriteria::ObjectType(OrvAnimStack::ClassId), pTakeName, 0));
    pNode->LclTranslation.Set(mLocalTranslation.Buffer(), eOrvDouble3, true);
    if (mTranslationCurve[0]) HandOverCurves(pNode->LclTranslation, lStack, mLocalTranslation, mTranslationCurve);
    pNode->LclRotation.Set(mLocalRotation.Buffer(), eOrvDouble3, true);
    if (mRotationCurve[0]) HandOverCurves(pNode->LclRotation, lStack, mLocalRotation, mRotationCurve);
}

void OrvAsfNode::GetCurveNodePointers(OrvNode* pNode)
{
    if (!pNode) return;
    if (!mScene)
        mScene = static_cast<OrvScene*>(pNode->RootProperty.GetDstObject(OrvCriteria::ObjectType(OrvScene::ClassId), 0));
    OrvAnimLayer* lLayer = nullptr;
    if (mScene && mScene->GetCurrentAnimationStack())
        lLayer = static_cast<OrvAnimLayer*>(mScene->GetCurrentAnimationStack()->RootProperty.GetSrcObject(
            OrvCriteria::ObjectType(OrvAnimLayer::ClassId), 0));
    mRotationOffset = pNode->GetRotationOffset(OrvNode::eSourcePivot);
    mPreRotation = pNode->GetPreRotation(OrvNode::eSourcePivot);
    mPostRotation = pNode->GetPostRotation(OrvNode::eSourcePivot);
    mTranslationCurveNode = pNode->LclTranslation.GetCurveNode(lLayer, false);
    mRotationCurveNode = pNode->LclRotation.GetCurveNode(lLayer, false);
    mScalingCurveNode = pNode->LclScaling.GetCurveNode(lLayer, false);
}

} // namespace orvsdk
