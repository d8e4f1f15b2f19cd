#include "tools/orvasf/ToolImport.h"

#include "tools/orvasf/MessagePrinter.h"
#include "tools/orvasf/ProgressReporter.h"

namespace orvasf::tool {

OrvImportResult ImportFiles(const ImportOptions& pOptions, bool pBvh)
{
    ProgressReporter lProgress(pOptions.mMotionPath);
    OrvImportSettings lSettings = pOptions.mSettings;
    lSettings.mProgress = [&lProgress](uint64_t pDone, uint64_t pTotal) { lProgress.Update(pDone, pTotal); };
    OrvImportResult lResult = pBvh ? OrvImportBvh(pOptions.mAsfPath, lSettings)
                                   : OrvImportAsf(pOptions.mAsfPath, pOptions.mMotionPath, lSettings);
    lProgress.Finish();
    PrintMessages(lResult.mMessages);
    return lResult;
}

} // namespace orvasf::tool
