#include "orvsdk/skeleton/OrvAsfScene.h"

#include "orvsdk/host/math/OrvAMatrix.h"
#include "orvsdk/host/core/OrvMemory.h"
#include "orvsdk/skeleton/OrvAsfNode.h"

namespace orvsdk {

namespace {

// Lengths are held in centimetres; the file's length unit is in inches.
const double kCentimetresPerInch = 2.54;

} // namespace

OrvAsfScene::OrvAsfScene() : mName{}, mMassUnit(1.0), mLengthUnit(1.0), mAngleUnit(1.0), mRoot(nullptr)
{
}

OrvAsfScene::~OrvAsfScene()
{
    OrvAsfNode::Destroy(mRoot);
}

void OrvAsfScene::Destroy()
{
    this->~OrvAsfScene();
    OrvFree(this);
}

char* OrvAsfScene::GetName()
{
    return mName;
}

void OrvAsfScene::SetupNode(OrvAsfNode* pBone, OrvVector4 pBoneVector, OrvVector4 pRotation, OrvVector4 pScale)
{
    OrvAMatrix lRotation;
    lRotation.SetR(pRotation);
    pBone->mAxisMatrix = pBone->mParentAxisMatrix * lRotation;
    pBone->mAxisMatrixInverse = pBone->mAxisMatrix.Inverse();
    pBone->mAxis = pBone->mAxisMatrix.GetR();

    for (int k = 0; k < 3; ++k) pBoneVector[k] *= pScale[k];
    pBone->mPosition = pBone->mAxisMatrix.MultT(pBoneVector);
    pBone->mDirection = pBone->mPosition;
    pBone->mLength = pBone->mDirection.Length() * mLengthUnit / kCentimetresPerInch;
    pBone->mDirection.Normalize();
}

} // namespace orvsdk
