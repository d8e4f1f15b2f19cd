#include "orvsdk/skeleton/OrvAsfScene.h"
#include "tools/orvasf/ArgumentValues.h"
#include "tools/orvasf/Commands.h"
#include "tools/orvasf/ExitStatus.h"
#include "tools/orvasf/ToolImport.h"
#include "tools/orvasf/SkeletonFile.h"

namespace orvasf::tool {

int RunExport(const ExportCommandOptions& pOptions)
{
    // Without the local transform the exporter reads the rest pose from rotation offsets and
    // pre-rotations only, so the import must put it there; with it, the rest pose must sit in
    // the local transform instead.
    ImportOptions lImportOptions;
    lImportOptions.mAsfPath = pOptions.mAsfPath;
    lImportOptions.mSettings.mUseRotationOffset = !pOptions.mUseLocalTransform;
    lImportOptions.mSettings.mUsePreRotation = !pOptions.mUseLocalTransform;
    lImportOptions.mSettings.mUseLimits = true;
    const OrvImportResult lImport = ImportFiles(lImportOptions);
    if (!lImport.mSucceeded) return eInputRefused;

    orvsdk::OrvAsfScene lExported;
    lExported.ORVToASF(lImport.mRoot, pOptions.mTranslationDofs, ParseScale(pOptions.mScale).value(),
                       pOptions.mUseLocalTransform);
    return WriteSkeleton(pOptions.mOutputPath, lExported) ? eSuccess : eOutputFailed;
}

} // namespace orvasf::tool
