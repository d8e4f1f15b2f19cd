#include "orvsdk/host/io/OrvNumberText.h"
#include "orvsdk/skeleton/OrvAsfDof.h"
#include "orvsdk/skeleton/OrvAsfNode.h"
#include "orvsdk/skeleton/OrvAsfScene.h"
#include "tools/orvasf/Commands.h"
#include "tools/orvasf/ExitStatus.h"
#include "tools/orvasf/SkeletonFile.h"

#include <cstdio>
#include <string>

namespace orvasf::tool {

namespace {

std::string Bound(bool pActive, double pValue, const char* pUnbounded)
{
    if (!pActive) return pUnbounded;
    std::string lText;
    orvsdk::OrvAppendGeneral(lText, pValue, 6);
    return lText;
}

// " dof rx ry rz"; empty for a bone without DOFs.
std::string DofText(const orvsdk::OrvAsfNode& pBone)
{
    std::string lText;
    for (int i = 0; i < pBone.mDofCount; ++i) lText += std::string(i == 0 ? "  dof " : " ") + DofName(pBone.mDof[i]);
    return lText;
}

// "  limits rx (-160 20) ..." for the DOFs that have a bound; empty when none has.
std::string LimitText(const orvsdk::OrvAsfNode& pBone)
{
    std::string lText;
    for (int i = 0; i < pBone.mDofCount; ++i)
    {
        const int lCode = pBone.mDof[i];
        if (!orvsdk::IsStoredDof(lCode)) continue;
        if (!pBone.mLimitMinActive[lCode] && !pBone.mLimitMaxActive[lCode]) continue;
        lText += std::string(lText.empty() ? "  limits " : " ") + DofName(lCode) + " (" +
                 Bound(pBone.mLimitMinActive[lCode], pBone.mLimitMin[lCode], "-inf") + " " +
                 Bound(pBone.mLimitMaxActive[lCode], pBone.mLimitMax[lCode], "inf") + ")";
    }
    return lText;
}

void PrintBone(const orvsdk::OrvAsfNode& pBone, int pDepth)
{
    std::printf("%*s%s%s  length %g%s\n", 2 * pDepth, "", pBone.mName, DofText(pBone).c_str(), pBone.mLength,
                LimitText(pBone).c_str());
    for (int i = 0; i < pBone.mChildren.GetCount(); ++i) PrintBone(*pBone.mChildren[i], pDepth + 1);
}

} // namespace

int RunTree(const std::string& pPath)
{
    orvsdk::OrvAsfScene lScene;
    if (!ReadSkeleton(pPath, lScene)) return eInputRefused;
    std::printf("skeleton \"%s\", %d bones + root, lengths in cm\n", lScene.mName, CountBones(lScene.mRoot) - 1);
    PrintBone(*lScene.mRoot, 0);
    return eSuccess;
}

} // namespace orvasf::tool
