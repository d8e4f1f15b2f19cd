#include "orvsdk/skeleton/OrvAsfDof.h"
#include "orvsdk/skeleton/OrvAsfNode.h"
#include "orvsdk/skeleton/OrvAsfScene.h"
#include "tools/orvasf/Commands.h"
#include "tools/orvasf/ExitStatus.h"
#include "tools/orvasf/SkeletonFile.h"

namespace orvasf::tool {

namespace {

constexpr double kCentimetresPerInch = 2.54;

// The reader holds lengths in centimetres and angles as written, while the writer prints
// lengths as held beside the file's length unit and calls every angle degrees. This puts each
// bone's length back into the file's unit and its angles into degrees, so that the written
// file describes the same skeleton as the one read.
void PrepareBoneForWriting(orvsdk::OrvAsfNode& pBone, double pLengthUnit, double pAngleUnit)
{
    if (pLengthUnit > 0.0) pBone.mLength = pBone.mLength * pLengthUnit / kCentimetresPerInch;
    for (int i = 0; i < 3; ++i) pBone.mAxis[i] *= pAngleUnit;
    for (int lAxis = 0; lAxis < 3; ++lAxis)
    {
        pBone.mLimitMin[orvsdk::RotationDofOnAxis(lAxis)] *= pAngleUnit;
        pBone.mLimitMax[orvsdk::RotationDofOnAxis(lAxis)] *= pAngleUnit;
    }
    for (int i = 0; i < pBone.mChildren.GetCount(); ++i)
        PrepareBoneForWriting(*pBone.mChildren[i], pLengthUnit, pAngleUnit);
}

} // namespace

int RunFormat(const FormatCommandOptions& pOptions)
{
    orvsdk::OrvAsfScene lScene;
    if (!ReadSkeleton(pOptions.mAsfPath, lScene)) return eInputRefused;
    PrepareBoneForWriting(*lScene.mRoot, lScene.mLengthUnit, lScene.mAngleUnit);
    return WriteSkeleton(pOptions.mOutputPath, lScene) ? eSuccess : eOutputFailed;
}

} // namespace orvasf::tool
