#include "tools/orvasf/ToolImport.h"

#include "tools/orvasf/MessagePrinter.h"
#include "tools/orvasf/ProgressReporter.h"

namespace orvasf::tool {

OrvImportResult ImportFiles(const ImportOptions& pOptions, InputFormat pFormat)
{
    ProgressReporter lProgress(pOptions.mMotionPath);
    OrvImportSettings lSettings = pOptions.mSettings;
    lSettings.mProgress = [&lProgress](uint64_t pDone, uint64_t pTotal) { lProgress.Update(pDone, pTotal); };
    OrvImportResult lResult = pFormat == InputFormat::eBvh    ? OrvImportBvh(pOptions.mAsfPath, lSettings)
                              : pFormat == InputFormat::eGltf ? OrvImportGltf(pOptions.mAsfPath, lSettings, pOptions.mGltf)
                                                              : OrvImportAsf(pOptions.mAsfPath, pOptions.mMotionPath, lSettings);
    lProgress.Finish();
    PrintMessages(lResult.mMessages);
    return lResult;
}

} // namespace orvasf::tool
