#include "driver/OrvExportDriver.h"

#include "amc/OrvAmcWriter.h"
#include "bvh/OrvBvhWriter.h"
#include "orvsdk/asf/OrvFileAcclaimAsf.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <filesystem>
#include <limits>

namespace orvasf {

OrvExportFrames OrvAllFrames(const OrvImportResult& pImport)
{
    OrvExportFrames lFrames;
    lFrames.mFramesPerSecond = pImport.mFramesPerSecond;
    lFrames.mFrameCount =
        pImport.mFrameSpan <= 0
            ? 1
            : static_cast<int>(std::min<int64_t>(pImport.mFrameSpan, std::numeric_limits<int>::max()));
    return lFrames;
}

OrvExportFrames OrvFramesAt(const OrvImportResult& pImport, double pFramesPerSecond)
{
    const OrvExportFrames lOwn = OrvAllFrames(pImport);
    if (pFramesPerSecond <= 0.0) return lOwn;
    OrvExportFrames lFrames = lOwn;
    lFrames.mFramesPerSecond = pFramesPerSecond;
    lFrames.mFrameCount = OrvResampledFrameCount((lOwn.mFrameCount - 1) / lOwn.mFramesPerSecond, pFramesPerSecond);
    return lFrames;
}

int OrvResampledFrameCount(double pSpanSeconds, double pFramesPerSecond)
{
    // A relative tolerance keeps a span that is a whole number of new frames (120 fps frames at
    // 30 fps) from losing its last frame to rounding.
    const double lLastFrame = std::floor(pSpanSeconds * pFramesPerSecond * (1.0 + 1e-12));
    return static_cast<int>(std::min<double>(lLastFrame + 1.0, std::numeric_limits<int>::max()));
}

bool OrvWriteSkeleton(const std::string& pPath, orvsdk::OrvAsfScene& pSkeleton,
                      std::vector<orvsdk::OrvMessage>& pMessages)
{
    orvsdk::OrvFileAcclaimAsf lFile(false);
    bool lWritten = lFile.Create(pPath.c_str());
    if (lWritten) lWritten = lFile.Write(&pSkeleton);
    // Close commits the text only when every write succeeded; it must run either way so that
    // a failed write removes its temporary file.
    lWritten = lFile.Close() && lWritten;
    const std::vector<orvsdk::OrvMessage>& lMessages = lFile.GetMessages();
    pMessages.insert(pMessages.end(), lMessages.begin(), lMessages.end());
    return lWritten;
}

bool OrvWriteBvh(const std::string& pPath, const OrvImportResult& pImport, const OrvExportFrames& pFrames,
                 std::vector<orvsdk::OrvMessage>& pMessages)
{
    OrvBvhWriteSettings lSettings;
    lSettings.mFramesPerSecond = pFrames.mFramesPerSecond;
    lSettings.mFrameCount = pFrames.mFrameCount;
    lSettings.mStartTime = pFrames.mStartTime;
    OrvBvhWriter lWriter;
    const bool lWritten = lWriter.Write(pPath.c_str(), pImport.mRoot, lSettings);
    const std::vector<orvsdk::OrvMessage>& lMessages = lWriter.GetFile().GetMessages();
    pMessages.insert(pMessages.end(), lMessages.begin(), lMessages.end());
    return lWritten;
}

bool OrvWriteAsfAmc(const std::string& pAsfPath, const std::string& pAmcPath, const OrvImportResult& pImport,
                    const OrvExportFrames& pFrames, std::vector<orvsdk::OrvMessage>& pMessages)
{
    // Where the rest offsets sit in the rotation offsets (rest rotations then sit in
    // pre-rotations or in the animated rotation, both of which the export handles), the export
    // leaves the local transform, and with it every frame's motion, out of the rest pose. A lone
    // frame survives an import only as the rest pose (the sampler keeps no curve of a single
    // key), so it is exported as the rest pose itself.
    const bool lUseLocalTransform = !pImport.mRestInRotationOffsets || OrvAllFrames(pImport).mFrameCount == 1;
    orvsdk::OrvAsfScene lExported;
    lExported.ORVToASF(pImport.mRoot, pImport.mJointTranslation, orvsdk::OrvVector4(1.0, 1.0, 1.0),
                       lUseLocalTransform);
    if (!OrvWriteSkeleton(pAsfPath, lExported, pMessages)) return false;
    if (!pImport.mHasMotion || pAmcPath.empty()) return true;

    OrvAmcWriteSettings lSettings;
    lSettings.mFramesPerSecond = pFrames.mFramesPerSecond;
    lSettings.mFrameCount = pFrames.mFrameCount;
    lSettings.mStartTime = pFrames.mStartTime;
    lSettings.mSkeletonFileName = std::filesystem::path(pAsfPath).filename().string();
    OrvAmcWriter lWriter;
    const bool lWritten = lWriter.Write(pAmcPath.c_str(), lExported, pImport.mRoot, lSettings);
    const std::vector<orvsdk::OrvMessage>& lMessages = lWriter.GetFile().GetMessages();
    pMessages.insert(pMessages.end(), lMessages.begin(), lMessages.end());
    return lWritten;
}

} // namespace orvasf
