#ifndef ORVASF_TOOLS_ORVASF_SCENEIMPORT_H
#define ORVASF_TOOLS_ORVASF_SCENEIMPORT_H

#include "amc/OrvAmcReader.h"
#include "orvsdk/skeleton/OrvAsfScene.h"
#include "tools/orvasf/CommandOptions.h"

#include <memory>

namespace orvsdk {
class OrvAnimStack;
class OrvNode;
class OrvScene;
}

namespace orvasf::tool {

// Wall-clock seconds of the import's steps.
struct ImportTimings
{
    double mReadSeconds = 0.0;          // reading the skeleton file
    double mSamplingSeconds = 0.0;      // reading the motion file into curves, flush included
    double mNodeBuildingSeconds = 0.0;  // building the host nodes
};

// One whole import of a skeleton, and optionally a motion, into a new host scene: read, curve
// creation, sampling, flush and node building, in that order, with the same set-up flags at
// every step. Owns the host scene and the skeleton it was built from; on destruction it
// releases the skeleton (with any curves it still owns) first, then the host scene.
class SceneImport
{
public:
    SceneImport() = default;
    SceneImport(const SceneImport&) = delete;
    SceneImport& operator=(const SceneImport&) = delete;

    // Runs the import once; every warning and error goes to standard error as it is met. True
    // when the skeleton and the motion were read and the host nodes built; false when a file
    // was refused, in which case no host node was built. Costs the size of the files.
    bool Run(const ImportOptions& pOptions);

    // The host scene; null before Run.
    orvsdk::OrvScene* GetHostScene() const { return mHostScene.get(); }
    // The host node of the skeleton's root, a child of the scene's root node; null until built.
    orvsdk::OrvNode* GetSkeletonNode() const { return mSkeletonNode; }
    // The take the curves were connected to; null before Run.
    orvsdk::OrvAnimStack* GetTake() const { return mTake; }
    // The skeleton as read; its bones own no curves once the nodes are built.
    const orvsdk::OrvAsfScene& GetSkeleton() const { return mSkeleton; }
    // The motion read, when a motion file was given.
    const OrvAmcReadResult& GetMotion() const { return mMotion; }
    bool HasMotion() const { return mHasMotion; }
    const ImportTimings& GetTimings() const { return mTimings; }

private:
    struct HostSceneDeleter
    {
        void operator()(orvsdk::OrvScene* pScene) const;
    };

    void CreateHostScene(const ImportOptions& pOptions);
    bool SampleMotion(const ImportOptions& pOptions);
    void BuildNodes(const ImportOptions& pOptions);

    // Declared before the skeleton, so destroyed after it: bones still owning curves release
    // them through the scene.
    std::unique_ptr<orvsdk::OrvScene, HostSceneDeleter> mHostScene;
    orvsdk::OrvAsfScene mSkeleton;
    orvsdk::OrvAnimStack* mTake = nullptr;     // owned by the host scene
    orvsdk::OrvNode* mSkeletonNode = nullptr;  // owned by the host scene
    OrvAmcReadResult mMotion;
    bool mHasMotion = false;
    ImportTimings mTimings;
};

} // namespace orvasf::tool

#endif
