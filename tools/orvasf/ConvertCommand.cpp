#include "tools/orvasf/ConvertCommand.h"

#include "amc/OrvAmcWriter.h"
#include "bvh/OrvBvhReader.h"
#include "bvh/OrvBvhWriter.h"
#include "orvsdk/host/anim/OrvAnimLayer.h"
#include "orvsdk/host/anim/OrvAnimStack.h"
#include "orvsdk/host/scene/OrvScene.h"
#include "orvsdk/skeleton/OrvAsfScene.h"
#include "tools/orvasf/ExitStatus.h"
#include "tools/orvasf/MessagePrinter.h"
#include "tools/orvasf/SceneImport.h"
#include "tools/orvasf/SkeletonFile.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <memory>

namespace orvasf::tool {

namespace {

enum class EFormat
{
    eUnknown,
    eAsf,
    eBvh
};

EFormat FormatOf(const std::string& pPath)
{
    std::string lExtension = std::filesystem::path(pPath).extension().string();
    std::transform(lExtension.begin(), lExtension.end(), lExtension.begin(),
                   [](unsigned char pChar) { return static_cast<char>(std::tolower(pChar)); });
    if (lExtension == ".asf") return EFormat::eAsf;
    if (lExtension == ".bvh") return EFormat::eBvh;
    return EFormat::eUnknown;
}

// The text of a usage problem, or empty when the options fit the files' formats.
std::string UsageProblem(const ConvertCommandOptions& pOptions, EFormat pInput, EFormat pOutput)
{
    if (pInput == EFormat::eUnknown) return "convert reads .asf or .bvh files, not " + pOptions.mImport.mAsfPath;
    if (pOutput == EFormat::eUnknown) return "convert writes .bvh or .asf files, not " + pOptions.mOutputPath;
    if (pInput == EFormat::eBvh && !pOptions.mImport.mMotionPath.empty())
        return "--motion goes with an ASF input; a BVH file holds its motion";
    if (pOutput == EFormat::eBvh && !pOptions.mMotionOutputPath.empty())
        return "--motion-out goes with an ASF output; a BVH file holds its motion";
    if (pInput == EFormat::eAsf && pOptions.mImport.mMotionPath.empty() && !pOptions.mMotionOutputPath.empty())
        return "--motion-out needs a motion to write: give the input's --motion";
    return std::string();
}

// The host skeleton to write, and what the writers need to know of it.
struct HostSkeleton
{
    orvsdk::OrvNode* mRoot = nullptr;
    int mFrameCount = 1;
    double mFramesPerSecond = 120.0;
    bool mHasMotion = false;
    // Whether rest offsets sit in the rotation offsets (rest rotations then sit in pre-rotations or
    // in the animated rotation, both of which the export handles), so that the export can leave
    // the local transform, and with it every frame's motion, out of the rest pose.
    bool mRestInOffsets = true;
    bool mJointTranslation = false; // a joint other than the root moves
};

struct HostSceneDeleter
{
    void operator()(orvsdk::OrvScene* pScene) const { pScene->Destroy(); }
};
using HostScenePtr = std::unique_ptr<orvsdk::OrvScene, HostSceneDeleter>;

bool ImportAsf(const ImportOptions& pOptions, SceneImport& pImport, HostSkeleton& pSkeleton)
{
    if (!pImport.Run(pOptions)) return false;
    const OrvAmcReadResult& lMotion = pImport.GetMotion();
    pSkeleton.mRoot = pImport.GetSkeletonNode();
    pSkeleton.mHasMotion = pImport.HasMotion();
    pSkeleton.mFrameCount = lMotion.mFrameCount > 0 ? lMotion.mLastFrame - lMotion.mFirstFrame + 1 : 1;
    pSkeleton.mFramesPerSecond = pOptions.mFramesPerSecond;
    pSkeleton.mRestInOffsets = pOptions.mUseRotationOffset;
    return true;
}

bool ImportBvh(const ImportOptions& pOptions, HostScenePtr& pScene, HostSkeleton& pSkeleton)
{
    pScene.reset(orvsdk::OrvScene::Create("BVH"));
    orvsdk::OrvAnimStack* lTake = orvsdk::OrvAnimStack::Create(pScene.get(), pOptions.mTakeName.c_str());
    orvsdk::OrvAnimLayer::Create(lTake, "Base Layer");
    pScene->SetCurrentAnimationStack(lTake);
    OrvBvhReader lReader;
    const OrvBvhReadResult lResult = lReader.Read(pOptions.mAsfPath.c_str(), pScene->GetRootNode(), lTake);
    PrintMessages(lReader.GetFile());
    if (!lResult.mSucceeded) return false;
    pSkeleton.mRoot = lResult.mRoot;
    pSkeleton.mHasMotion = true;
    pSkeleton.mFrameCount = lResult.mFrameCount;
    pSkeleton.mFramesPerSecond = lResult.mFramesPerSecond;
    pSkeleton.mJointTranslation = lResult.mHasJointTranslation;
    return true;
}

bool WriteBvh(const std::string& pPath, const HostSkeleton& pSkeleton)
{
    OrvBvhWriteSettings lSettings;
    lSettings.mFramesPerSecond = pSkeleton.mFramesPerSecond;
    lSettings.mFrameCount = pSkeleton.mFrameCount;
    OrvBvhWriter lWriter;
    const bool lWritten = lWriter.Write(pPath.c_str(), pSkeleton.mRoot, lSettings);
    PrintMessages(lWriter.GetFile());
    return lWritten;
}

// Exports the host skeleton as ASF and, when it has motion, writes the motion as AMC.
bool WriteAsfAmc(const std::string& pAsfPath, const std::string& pAmcPath, const HostSkeleton& pSkeleton)
{
    // A lone frame survives an import only as the rest pose (the sampler keeps no curve of a
    // single key), so it is exported as the rest pose itself.
    const bool lUseLocalTransform = !pSkeleton.mRestInOffsets || pSkeleton.mFrameCount == 1;
    orvsdk::OrvAsfScene lExported;
    lExported.ORVToASF(pSkeleton.mRoot, pSkeleton.mJointTranslation, orvsdk::OrvVector4(1.0, 1.0, 1.0),
                       lUseLocalTransform);
    if (!WriteSkeleton(pAsfPath, lExported)) return false;
    if (!pSkeleton.mHasMotion) return true;

    OrvAmcWriteSettings lSettings;
    lSettings.mFramesPerSecond = pSkeleton.mFramesPerSecond;
    lSettings.mFrameCount = pSkeleton.mFrameCount;
    lSettings.mSkeletonFileName = std::filesystem::path(pAsfPath).filename().string();
    OrvAmcWriter lWriter;
    const bool lWritten = lWriter.Write(pAmcPath.c_str(), lExported, pSkeleton.mRoot, lSettings);
    PrintMessages(lWriter.GetFile());
    return lWritten;
}

} // namespace

void AddConvertOptions(CLI::App& pCommand, ConvertCommandOptions& pOptions)
{
    pCommand.add_option("input", pOptions.mImport.mAsfPath, "ASF or BVH file to convert")->required();
    pCommand.add_option("--motion", pOptions.mImport.mMotionPath, "AMC motion of an ASF input")->type_name("FILE.amc");
    pCommand.add_option("-o,--output", pOptions.mOutputPath, "BVH or ASF file to write")
        ->required()
        ->type_name("OUT.bvh|OUT.asf");
    pCommand
        .add_option("--motion-out", pOptions.mMotionOutputPath,
                    "AMC file written with an ASF output (default: the output's name with .amc)")
        ->type_name("FILE.amc");
}

int RunConvert(const ConvertCommandOptions& pOptions)
{
    const EFormat lInput = FormatOf(pOptions.mImport.mAsfPath);
    const EFormat lOutput = FormatOf(pOptions.mOutputPath);
    const std::string lProblem = UsageProblem(pOptions, lInput, lOutput);
    if (!lProblem.empty())
    {
        PrintToolError(lProblem);
        return eUsageError;
    }

    HostSkeleton lSkeleton;
    SceneImport lAsfImport;
    HostScenePtr lBvhScene;
    const bool lRead = lInput == EFormat::eAsf ? ImportAsf(pOptions.mImport, lAsfImport, lSkeleton)
                                               : ImportBvh(pOptions.mImport, lBvhScene, lSkeleton);
    if (!lRead) return eInputRefused;

    if (lOutput == EFormat::eBvh) return WriteBvh(pOptions.mOutputPath, lSkeleton) ? eSuccess : eOutputFailed;
    const std::string lAmcPath = !pOptions.mMotionOutputPath.empty()
                                     ? pOptions.mMotionOutputPath
                                     : std::filesystem::path(pOptions.mOutputPath).replace_extension(".amc").string();
    return WriteAsfAmc(pOptions.mOutputPath, lAmcPath, lSkeleton) ? eSuccess : eOutputFailed;
}

} // namespace orvasf::tool
