#include "orvsdk/skeleton/OrvAsfNode.h"
#include "orvsdk/skeleton/OrvAsfScene.h"
#include "tools/orvasf/Commands.h"
#include "tools/orvasf/ExitStatus.h"
#include "tools/orvasf/SkeletonFile.h"

#include <cstdio>

namespace orvasf::tool {

namespace {

const char* AngleUnitName(double pAngleUnit)
{
    return pAngleUnit == 1.0 ? "deg" : "rad";
}

void PrintSkeletonSummary(const std::string& pPath, const orvsdk::OrvAsfScene& pScene)
{
    std::printf("%s: skeleton \"%s\", %d bones + root, %d DOFs, units mass %g length %g angle %s\n", pPath.c_str(),
                pScene.mName, CountBones(pScene.mRoot) - 1, CountDofs(pScene.mRoot), pScene.mMassUnit,
                pScene.mLengthUnit, AngleUnitName(pScene.mAngleUnit));
}

} // namespace

int RunCheck(const std::vector<std::string>& pPaths)
{
    int lStatus = eSuccess;
    for (const std::string& lPath : pPaths)
    {
        orvsdk::OrvAsfScene lScene;
        if (ReadSkeleton(lPath, lScene))
            PrintSkeletonSummary(lPath, lScene);
        else
            lStatus = eInputRefused;
    }
    return lStatus;
}

} // namespace orvasf::tool
