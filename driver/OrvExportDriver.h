#ifndef ORVASF_DRIVER_ORVEXPORTDRIVER_H
#define ORVASF_DRIVER_ORVEXPORTDRIVER_H

#include "driver/OrvDriverExport.h"
#include "driver/OrvImportDriver.h"
#include "orvsdk/host/core/OrvTime.h"

#include <string>
#include <vector>

namespace orvasf {

/// The frames a motion file gets: frame i is taken at mStartTime + i / mFramesPerSecond.
struct OrvExportFrames
{
    double mFramesPerSecond = 120.0;  ///< above 0
    int mFrameCount = 1;              ///< 0 or more
    orvsdk::OrvTime mStartTime;       ///< time of the first frame written
};

/// Every frame of pImport's motion from its first, at its frame rate (at most INT_MAX frames, the
/// writers' range), or the rest pose alone when it has no motion.
ORVDRIVER_API OrvExportFrames OrvAllFrames(const OrvImportResult& pImport);

/// The frames of pImport's motion taken at pFramesPerSecond instead of its own rate: frame i at
/// i / pFramesPerSecond from the first frame, as many as fit up to the motion's last frame time
/// (the writers evaluate the host curves at those times, so frames between keys are interpolated
/// as the curves interpolate). pFramesPerSecond 0 gives OrvAllFrames; otherwise it must be above 0.
ORVDRIVER_API OrvExportFrames OrvFramesAt(const OrvImportResult& pImport, double pFramesPerSecond);

/// How many frames at pFramesPerSecond (above 0) fit in pSpanSeconds (0 or more) from its start:
/// frame i at i / pFramesPerSecond, the last one at or before pSpanSeconds, up to INT_MAX. A span
/// that is a whole number of frames keeps its last frame despite rounding.
ORVDRIVER_API int OrvResampledFrameCount(double pSpanSeconds, double pFramesPerSecond);

/// Writes pSkeleton (its root must be set) as an ASF file at pPath with the module's writer and
/// appends the writer's messages to pMessages. The file is replaced only when the whole text was
/// written. False, with an error message naming the file, when it could not be written.
ORVDRIVER_API bool OrvWriteSkeleton(const std::string& pPath, orvsdk::OrvAsfScene& pSkeleton,
                                    std::vector<orvsdk::OrvMessage>& pMessages);

/// Writes the host skeleton of pImport (which must have succeeded) and pFrames of its motion as a
/// BVH file at pPath (see OrvBvhWriter), appending the writer's messages to pMessages. False,
/// with an error message, when the file could not be written; an existing file is then untouched.
ORVDRIVER_API bool OrvWriteBvh(const std::string& pPath, const OrvImportResult& pImport,
                               const OrvExportFrames& pFrames, std::vector<orvsdk::OrvMessage>& pMessages);

/// Exports the host skeleton of pImport (which must have succeeded) as an ASF file at pAsfPath
/// and, when pImport has motion and pAmcPath is not empty, pFrames of the motion as an AMC file at
/// pAmcPath for that skeleton, appending the writers' messages to pMessages. Reading both back
/// and importing them gives the host's world joint positions. False when a file could not be
/// written (the ASF may be written already when the AMC fails).
ORVDRIVER_API bool OrvWriteAsfAmc(const std::string& pAsfPath, const std::string& pAmcPath,
                                  const OrvImportResult& pImport, const OrvExportFrames& pFrames,
                                  std::vector<orvsdk::OrvMessage>& pMessages);

} // namespace orvasf

#endif
