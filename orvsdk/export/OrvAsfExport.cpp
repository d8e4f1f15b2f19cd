// An ASF skeleton built from a host node hierarchy: one bone per host joint, intermediate
// "Dummy" bones where sibling joints sit at different offsets.
#include "orvsdk/skeleton/OrvAsfScene.h"

#include "orvsdk/host/math/OrvAMatrix.h"
#include "orvsdk/host/core/OrvArray.h"
#include "orvsdk/host/math/OrvEuler.h"
#include "orvsdk/host/scene/OrvLimits.h"
#include "orvsdk/host/scene/OrvNode.h"
#include "orvsdk/host/core/OrvString.h"
#include "orvsdk/host/core/OrvTime.h"
#include "orvsdk/skeleton/OrvAsfDof.h"
#include "orvsdk/skeleton/OrvAsfNode.h"
#include "orvsdk/skeleton/OrvRotationOrder.h"

#include <cstring>
#include <deque>
#include <string>

namespace orvsdk {

namespace {

// Copies pFirst followed by pSecond into a bone name, truncated to fit without splitting a
// UTF-8 sequence.
void SetBoneName(OrvAsfNode& pBone, const char* pFirst, const char* pSecond)
{
    const size_t lCapacity = sizeof(pBone.mName) - 1;
    std::string lName = std::string(pFirst) + pSecond;
    if (lName.size() > lCapacity)
    {
        size_t lCut = lCapacity;
        while (lCut > 0 && (static_cast<unsigned char>(lName[lCut]) & 0xC0) == 0x80) --lCut;
        lName.resize(lCut);
    }
    std::memcpy(pBone.mName, lName.c_str(), lName.size() + 1);
}

OrvEuler::EOrder RotationOrderOf(OrvNode* pNode)
{
    OrvEuler::EOrder lOrder = OrvEuler::eOrderXYZ;
    pNode->GetRotationOrder(OrvNode::eSourcePivot, lOrder);
    return lOrder;
}

// Where pJoint's joint sits relative to its parent's joint, in the parent's frame.
OrvVector4 JointOffset(OrvNode* pJoint, bool pUseLocalTransform)
{
    const OrvVector4 lOffset = pJoint->GetRotationOffset(OrvNode::eSourcePivot);
    if (!pUseLocalTransform) return lOffset;
    return pJoint->EvaluateLocalTranslation(OrvTime(0), OrvNode::eSourcePivot, false, false) + lOffset;
}

// The node's local scaling times the scale accumulated above it.
OrvVector4 LevelScale(OrvNode* pNode, const OrvVector4& pScale)
{
    double lScaling[3] = {0.0, 0.0, 0.0};
    pNode->LclScaling.Get(lScaling, eOrvDouble3);
    OrvVector4 lScale(lScaling[0], lScaling[1], lScaling[2]);
    lScale *= pScale;
    return lScale;
}

// Pre-rotation, local rotation at time zero and inverse post-rotation of pNode, as X, Y, Z angles.
OrvVector4 FullLocalRotation(OrvNode* pNode)
{
    OrvAMatrix lPre;
    lPre.SetR(pNode->GetPreRotation(OrvNode::eSourcePivot));
    OrvAMatrix lPost;
    lPost.SetR(pNode->GetPostRotation(OrvNode::eSourcePivot));
    const OrvVector4 lLocal = pNode->EvaluateLocalRotation(OrvTime(0), OrvNode::eSourcePivot, false, false);
    OrvEuler::EOrder lOrder = RotationOrderOf(pNode);
    if (lOrder < OrvEuler::eOrderXYZ || lOrder > OrvEuler::eOrderZYX) lOrder = OrvEuler::eOrderXYZ;
    const int* lAxes = OrvEuler::AxisTable[lOrder];
    OrvAMatrix lRotation;
    lRotation.SetR(OrvVector4(lLocal[lAxes[0]], lLocal[lAxes[1]], lLocal[lAxes[2]]), lOrder);
    lRotation = lPre * lRotation * lPost.Inverse();
    return lRotation.GetR(0);
}

// Whether sibling joints need one intermediate bone each to carry their offsets.
bool NeedsIntermediateBones(const OrvArray<OrvNode*, 16>& pJoints, bool pIsRoot, bool pUseLocalTransform)
{
    const OrvVector4 lFirst = JointOffset(pJoints[0], pUseLocalTransform);
    if (pJoints.GetCount() == 1) return pIsRoot && lFirst.Length() > 0.0;
    for (int i = 1; i < pJoints.GetCount(); ++i)
        if (JointOffset(pJoints[i], pUseLocalTransform) != lFirst) return true;
    return false;
}

void CopyLimits(const OrvLimits& pLimits, OrvAsfDofOnAxis pDofOnAxis, OrvAsfNode& pBone)
{
    const OrvVectorTemplate3<double> lMin = pLimits.GetMin();
    const OrvVectorTemplate3<double> lMax = pLimits.GetMax();
    bool lMinActive[3];
    bool lMaxActive[3];
    pLimits.GetMinActive(lMinActive[0], lMinActive[1], lMinActive[2]);
    pLimits.GetMaxActive(lMaxActive[0], lMaxActive[1], lMaxActive[2]);
    for (int a = 0; a < 3; ++a)
    {
        const int lCode = pDofOnAxis(a);
        pBone.mLimitMin[lCode] = lMin[a];
        pBone.mLimitMax[lCode] = lMax[a];
        pBone.mLimitMinActive[lCode] = lMinActive[a];
        pBone.mLimitMaxActive[lCode] = lMaxActive[a];
    }
}

// DOFs (optional translations, then the three rotations in the joint's order) and limits.
void TakeDofsAndLimits(OrvNode* pJoint, bool pTranslationDofs, OrvAsfNode& pBone)
{
    int lCount = 0;
    if (pTranslationDofs)
        for (int a = 0; a < 3; ++a) pBone.mDof[lCount++] = TranslationDofOnAxis(a);
    for (int a = 0; a < 3; ++a) pBone.mDof[lCount++] = RotationDofOnAxis(a);
    pBone.mDofCount = lCount;
    OrderBufFromEulerOrder(pBone.mDof, lCount, RotationOrderOf(pJoint));
    if (pTranslationDofs) CopyLimits(pJoint->GetTranslationLimits(), TranslationDofOnAxis, pBone);
    CopyLimits(pJoint->GetRotationLimits(), RotationDofOnAxis, pBone);
}

// Hangs pChild under pParent and copies the parent's final values into it. False, with nothing
// changed, when the parent's children array cannot grow.
bool Attach(OrvAsfNode& pParent, OrvAsfNode& pChild)
{
    if (!pParent.AddChild(&pChild)) return false;
    pChild.mParentOffset = pParent.mPosition;
    pChild.mParentAxisMatrix = pParent.mAxisMatrix;
    pChild.mParentAxisMatrixInverse = pParent.mAxisMatrixInverse;
    return true;
}

// One level of the skeleton's creation: a bone whose host node has joint children, those
// joints, the scale accumulated down to them, and the next joint to make a bone of.
struct CreateLevel
{
    OrvAsfNode* mBone = nullptr;
    OrvArray<OrvNode*, 16> mJoints;
    OrvVector4 mScale;
    bool mSplit = false;
    int mNextJoint = 0;
};

// Collects pNode's joints; when it has some, sets pBone up from them (bone vector, rest rotation,
// for the root its position and axis) and pushes the level onto pLevels.
void BeginLevel(OrvAsfScene& pScene, std::deque<CreateLevel>& pLevels, OrvNode* pNode, OrvAsfNode* pBone,
                const OrvVector4& pScale, bool pUseLocalTransform)
{
    CreateLevel& lLevel = pLevels.emplace_back();
    const int lChildCount = pNode->GetChildCount(false);
    for (int i = 0; i < lChildCount; ++i)
        if (pNode->GetChild(i)->GetSkeleton()) lLevel.mJoints.Add(pNode->GetChild(i));
    lLevel.mScale = LevelScale(pNode, pScale);
    if (lLevel.mJoints.GetCount() == 0)
    {
        pLevels.pop_back();
        return;
    }

    lLevel.mBone = pBone;
    const bool lIsRoot = pBone == pScene.mRoot;
    lLevel.mSplit = NeedsIntermediateBones(lLevel.mJoints, lIsRoot, pUseLocalTransform);
    const OrvVector4 lBoneVector = lLevel.mSplit ? OrvVector4() : JointOffset(lLevel.mJoints[0], pUseLocalTransform);
    OrvVector4 lRestRotation;
    if (!lIsRoot)
        lRestRotation = pUseLocalTransform ? FullLocalRotation(pNode) : pNode->GetPreRotation(OrvNode::eSourcePivot);
    pScene.SetupNode(pBone, lBoneVector, lRestRotation, lLevel.mScale);
    if (lIsRoot)
    {
        pBone->mPosition = pNode->GetRotationOffset(OrvNode::eSourcePivot);
        pBone->mAxis = pNode->GetPreRotation(OrvNode::eSourcePivot);
    }
}

// The bone of pJoint, attached below the level's bone, through a dummy bone of its own when the
// level is split; null when a children array cannot grow (nothing is left behind then).
OrvAsfNode* CreateJointBone(OrvAsfScene& pScene, const CreateLevel& pLevel, OrvNode* pJoint, bool pTranslationDofs,
                            bool pUseLocalTransform)
{
    OrvAsfNode* lBone = OrvAsfNode::Create();
    SetBoneName(*lBone, pJoint->GetNameWithoutNameSpacePrefix().Buffer(), "");
    OrvAsfNode* lParent = pLevel.mBone;
    if (pLevel.mSplit)
    {
        OrvAsfNode* lDummy = OrvAsfNode::Create();
        SetBoneName(*lDummy, lBone->mName, "Dummy");
        if (!Attach(*pLevel.mBone, *lDummy))
        {
            OrvAsfNode::Destroy(lDummy);
            OrvAsfNode::Destroy(lBone);
            return nullptr;
        }
        pScene.SetupNode(lDummy, JointOffset(pJoint, pUseLocalTransform), OrvVector4(), pLevel.mScale);
        lParent = lDummy;
    }
    if (!Attach(*lParent, *lBone))
    {
        OrvAsfNode::Destroy(lBone);
        return nullptr;
    }
    lBone->GetCurveNodePointers(pJoint);
    TakeDofsAndLimits(pJoint, pTranslationDofs, *lBone);
    return lBone;
}

} // namespace

bool OrvAsfScene::ORVToASF(OrvNode* pRoot, bool pTranslationDofs, OrvVector4 pScale, bool pUseLocalTransform)
{
    if (mRoot)
    {
        OrvAsfNode::Destroy(mRoot);
        mRoot = nullptr;
    }
    std::strcpy(mName, "ASF");
    mLengthUnit = 1.0;
    mRoot = CreateRoot(pRoot);
    RecursiveCreate(pRoot, mRoot, pTranslationDofs, pScale, pUseLocalTransform);
    mRoot->RemoveEndSite();
    return true;
}

OrvAsfNode* OrvAsfScene::CreateRoot(OrvNode* pNode)
{
    OrvAsfNode* lRoot = OrvAsfNode::Create();
    std::strcpy(lRoot->mName, "root");
    lRoot->mDofCount = 6;
    // An order that names no Euler sequence keeps the rotations rx, ry, rz, like other bones.
    OrvEuler::EOrder lOrder = RotationOrderOf(pNode);
    if (lOrder < OrvEuler::eOrderXYZ || lOrder > OrvEuler::eOrderZYX) lOrder = OrvEuler::eOrderXYZ;
    OrderBufFromEulerOrder(lRoot->mDof, 6, lOrder);
    for (int a = 0; a < 3; ++a) lRoot->mDof[a] = TranslationDofOnAxis(a);
    lRoot->GetCurveNodePointers(pNode);
    return lRoot;
}

void OrvAsfScene::RecursiveCreate(OrvNode* pNode, OrvAsfNode* pBone, bool pTranslationDofs, OrvVector4 pScale,
                                  bool pUseLocalTransform)
{
    // The bones are made in the order of a recursive walk: a joint's bone, then the bones of its
    // whole subtree, then the next joint's. The explicit stack holds one level per bone on the
    // path down to the current joint, so the hierarchy's depth does not matter.
    std::deque<CreateLevel> lLevels;
    BeginLevel(*this, lLevels, pNode, pBone, pScale, pUseLocalTransform);
    while (!lLevels.empty())
    {
        CreateLevel& lLevel = lLevels.back();
        if (lLevel.mNextJoint == lLevel.mJoints.GetCount())
        {
            lLevels.pop_back();
            continue;
        }
        OrvNode* lJoint = lLevel.mJoints[lLevel.mNextJoint++];
        OrvAsfNode* lBone = CreateJointBone(*this, lLevel, lJoint, pTranslationDofs, pUseLocalTransform);
        if (lBone) BeginLevel(*this, lLevels, lJoint, lBone, lLevel.mScale, pUseLocalTransform);
    }
}

} // namespace orvsdk
