// Minimal use of the library: read a skeleton and a motion, build the host nodes and ask a
// joint for its world position. Usage: minimal_import FILE.asf FILE.amc
#include "amc/OrvAmcReader.h"
#include "orvsdk/asf/OrvFileAcclaimAsf.h"
#include "orvsdk/host/anim/OrvAnimLayer.h"
#include "orvsdk/host/anim/OrvAnimStack.h"
#include "orvsdk/host/scene/OrvNode.h"
#include "orvsdk/host/scene/OrvScene.h"
#include "orvsdk/skeleton/OrvAsfNode.h"
#include "orvsdk/skeleton/OrvAsfScene.h"

#include <cstdio>

using namespace orvsdk;

// Imports the files into pScene and prints where the left foot is after one second.
int ImportAndPrint(OrvScene* pScene, const char* pAsfPath, const char* pAmcPath)
{
    // The same two set-up flags go to the reader, the motion and the node building.
    const bool lRotationOffset = false;
    const bool lPreRotation = false;

    OrvAsfScene lSkeleton;
    OrvFileAcclaimAsf lFile(true);  // true: print warnings and errors on stderr
    if (!lFile.Open(pAsfPath) || !lFile.Read(&lSkeleton, false, lRotationOffset, lPreRotation)) return 1;

    // The curves go to the take named here; it must exist before the nodes are built.
    OrvAnimStack* lTake = OrvAnimStack::Create(pScene, "Take 001");
    OrvAnimLayer::Create(lTake, "Base Layer");
    pScene->SetCurrentAnimationStack(lTake);
    lSkeleton.mRoot->CreateDataFromDOF(pScene);

    orvasf::OrvAmcReader lReader;
    orvasf::OrvAmcReadSettings lSettings;  // 120 frames per second
    lSettings.mUseRotationOffset = lRotationOffset;
    lSettings.mUsePreRotation = lPreRotation;
    const orvasf::OrvAmcReadResult lMotion = lReader.Read(pAmcPath, lSkeleton, lSettings);
    for (const OrvMessage& lMessage : lMotion.mMessages) std::fprintf(stderr, "%s\n", OrvFormatMessage(lMessage).c_str());
    if (!lMotion.mSucceeded) return 1;

    OrvNode* lRoot = lSkeleton.ASFToORV(pScene, "Take 001", false, lRotationOffset, lPreRotation);
    pScene->GetRootNode()->AddChild(lRoot);

    OrvNode* lFoot = lRoot->FindChild("lfoot");
    if (!lFoot) return 1;
    const OrvVector4 lPosition = lFoot->EvaluateGlobalTransform(OrvTime::FromSeconds(1.0)).GetT();
    std::printf("%d frames; lfoot after 1 s at (%.2f, %.2f, %.2f) cm\n", lMotion.mFrameCount, lPosition[0],
                lPosition[1], lPosition[2]);
    return 0;
}

int main(int pArgc, char** pArgv)
{
    if (pArgc != 3)
    {
        std::fprintf(stderr, "usage: minimal_import FILE.asf FILE.amc\n");
        return 2;
    }
    // The host scene owns every node and curve; the skeleton (a local of ImportAndPrint) is
    // gone before the scene is destroyed.
    OrvScene* lScene = OrvScene::Create("example");
    const int lStatus = ImportAndPrint(lScene, pArgv[1], pArgv[2]);
    lScene->Destroy();
    return lStatus;
}
