#include "tools/orvasf/SkeletonFile.h"

#include "orvsdk/asf/OrvFileAcclaimAsf.h"
#include "orvsdk/skeleton/OrvAsfDof.h"
#include "orvsdk/skeleton/OrvAsfNode.h"
#include "orvsdk/skeleton/OrvAsfScene.h"
#include "driver/OrvExportDriver.h"
#include "driver/OrvImportDriver.h"
#include "tools/orvasf/MessagePrinter.h"


namespace orvasf::tool {

bool ReadSkeleton(const std::string& pPath, orvsdk::OrvAsfScene& pScene)
{
    std::vector<orvsdk::OrvMessage> lMessages;
    const bool lRead = OrvReadSkeleton(pPath, OrvImportSettings(), pScene, lMessages);
    PrintMessages(lMessages);
    return lRead;
}

bool WriteSkeleton(const std::string& pPath, orvsdk::OrvAsfScene& pScene)
{
    std::vector<orvsdk::OrvMessage> lMessages;
    const bool lWritten = OrvWriteSkeleton(pPath, pScene, lMessages);
    PrintMessages(lMessages);
    return lWritten;
}

int CountBones(const orvsdk::OrvAsfNode* pBone)
{
    int lCount = 1;
    for (int i = 0; i < pBone->mChildren.GetCount(); ++i) lCount += CountBones(pBone->mChildren[i]);
    return lCount;
}

int CountDofs(const orvsdk::OrvAsfNode* pBone)
{
    int lCount = pBone->mDofCount;
    for (int i = 0; i < pBone->mChildren.GetCount(); ++i) lCount += CountDofs(pBone->mChildren[i]);
    return lCount;
}

const char* DofName(int pCode)
{
    return orvsdk::IsStoredDof(pCode) ? orvsdk::OrvFileAcclaimAsf::smDof[pCode].keyword : "?";
}

} // namespace orvasf::tool
