#include "tools/orvasf/SkeletonFile.h"

#include "orvsdk/asf/OrvFileAcclaimAsf.h"
#include "orvsdk/skeleton/OrvAsfDof.h"
#include "orvsdk/skeleton/OrvAsfNode.h"
#include "orvsdk/skeleton/OrvAsfScene.h"
#include "tools/orvasf/MessagePrinter.h"

#include <cstdio>

namespace orvasf::tool {

namespace {

// The reader refuses a file that ends inside a section, or holds no root, without a message of
// its own; say why, at the line where reading stopped.
void ReportQuietRefusal(const orvsdk::OrvFileAcclaimAsf& pFile, const orvsdk::OrvAsfScene& pScene,
                        const std::string& pPath)
{
    if (pFile.GetErrorCount() > 0) return;
    const char* lReason = !pFile.mEndOfFile ? "reading stopped here (see the warning above)"
                          : pScene.mRoot    ? "the file ends inside a section"
                                            : "the file ends without a complete :root section";
    if (pFile.GetLineNumber() > 0)
        std::fprintf(stderr, "%s:%d: error: %s\n", pPath.c_str(), pFile.GetLineNumber(), lReason);
    else
        std::fprintf(stderr, "%s: error: %s\n", pPath.c_str(), lReason);
}

} // namespace

bool ReadSkeleton(const std::string& pPath, orvsdk::OrvAsfScene& pScene, const SkeletonReadFlags& pFlags)
{
    orvsdk::OrvFileAcclaimAsf lFile(false);
    const bool lOpened = lFile.Open(pPath.c_str());
    const bool lRead =
        lOpened && lFile.Read(&pScene, pFlags.mRemoveDummy, pFlags.mUseRotationOffset, pFlags.mUsePreRotation);
    PrintMessages(lFile);
    if (lOpened && !lRead) ReportQuietRefusal(lFile, pScene, pPath);
    // An error the reader could step over (a bad byte, say) still refuses the file.
    return lRead && lFile.GetErrorCount() == 0;
}

bool WriteSkeleton(const std::string& pPath, orvsdk::OrvAsfScene& pScene)
{
    orvsdk::OrvFileAcclaimAsf lFile(false);
    bool lWritten = lFile.Create(pPath.c_str());
    if (lWritten) lWritten = lFile.Write(&pScene);
    // Close commits the text only when every write succeeded; it must run either way so that
    // a failed write removes its temporary file.
    lWritten = lFile.Close() && lWritten;
    PrintMessages(lFile);
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
