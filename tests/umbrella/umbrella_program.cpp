// A program that includes the umbrella header and nothing else of the library: it reads a
// skeleton, builds its host nodes and prints how many joints the scene got.
#include "orvsdk/orvsdk.h"

#include <cstdio>

int main(int pArgc, char** pArgv)
{
    if (pArgc != 2) return 2;
    orvsdk::OrvAsfScene lSkeleton;
    orvsdk::OrvFileAcclaimAsf lFile(true);
    if (!lFile.Open(pArgv[1]) || !lFile.Read(&lSkeleton, false, false, false)) return 1;
    orvsdk::OrvScenePtr lScene = orvsdk::OrvCreateScene("umbrella");
    orvsdk::OrvAnimStack* lTake = orvsdk::OrvAnimStack::Create(lScene.get(), "Take 001");
    orvsdk::OrvAnimLayer::Create(lTake, "Base Layer");
    orvsdk::OrvNode* lRoot = lSkeleton.ASFToORV(lScene.get(), "Take 001", false, false, false);
    lScene->GetRootNode()->AddChild(lRoot);
    int lJoints = 0;
    std::vector<orvsdk::OrvNode*> lPending{lRoot};
    while (!lPending.empty())
    {
        orvsdk::OrvNode* lNode = lPending.back();
        lPending.pop_back();
        ++lJoints;
        for (int i = 0; i < lNode->GetChildCount(); ++i) lPending.push_back(lNode->GetChild(i));
    }
    std::printf("%d joints\n", lJoints);
    return 0;
}
