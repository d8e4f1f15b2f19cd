// Minimal use of the library: import a skeleton and its motion into a host scene and ask a joint
// for its world position. Usage: minimal_import FILE.asf FILE.amc
#include "driver/OrvImportDriver.h"
#include "orvsdk/host/scene/OrvNode.h"

#include <cstdio>

using namespace orvsdk;

int main(int pArgc, char** pArgv)
{
    if (pArgc != 3)
    {
        std::fprintf(stderr, "usage: minimal_import FILE.asf FILE.amc\n");
        return 2;
    }
    // One settings value reaches the skeleton reader, every motion sample and the node building.
    orvasf::OrvImportSettings lSettings;  // 120 frames per second, take "Take 001"
    const orvasf::OrvImportResult lImport = orvasf::OrvImportAsf(pArgv[1], pArgv[2], lSettings);
    for (const OrvMessage& lMessage : lImport.mMessages) std::fprintf(stderr, "%s\n", OrvFormatMessage(lMessage).c_str());
    if (!lImport.mSucceeded) return 1;

    // The result owns the host scene; its nodes live as long as lImport does.
    OrvNode* lFoot = lImport.mRoot->FindChild("lfoot");
    if (!lFoot) return 1;
    const OrvVector4 lPosition = lFoot->EvaluateGlobalTransform(OrvTime::FromSeconds(1.0)).GetT();
    std::printf("%d frames; lfoot after 1 s at (%.2f, %.2f, %.2f) cm\n", lImport.mFrameCount, lPosition[0],
                lPosition[1], lPosition[2]);
    return 0;
}
