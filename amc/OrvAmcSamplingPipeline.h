#ifndef ORVASF_AMC_ORVAMCSAMPLINGPIPELINE_H
#define ORVASF_AMC_ORVAMCSAMPLINGPIPELINE_H

#include "amc/OrvAmcExport.h"
#include "orvsdk/host/core/OrvTime.h"
#include "orvsdk/skeleton/OrvAsfNode.h"

#include <condition_variable>
#include <cstdint>
#include <exception>
#include <mutex>
#include <thread>
#include <vector>

namespace orvasf {

/// How every bone line of a run is sampled: the arguments of AddSampleFromDOF besides the line.
struct OrvAmcSampleFactors
{
    double mTranslationFactor = 1.0; ///< scales the translation values
    double mRotationFactor = 1.0;    ///< scales the rotation values
    ///@{
    /// The set-up flags of the run.
    bool mUseRotationOffset = false;
    bool mUsePreRotation = false;
    ///@}
};

/// Samples the bone lines of a motion on worker threads while the reader goes on reading. Lines
/// are gathered in blocks of frames; each worker samples, in file order, the lines of the bones
/// whose share is its own, so every curve receives the keys one thread would give it, in the same
/// order, and no curve is touched by two threads. At most two blocks are in flight, so memory stays
/// bounded whatever the motion's length. Bones must not change (but for their curves' keys) while
/// the pipeline lives; the caller must not touch the bones' curves until Finish returns.
class ORVAMC_API OrvAmcSamplingPipeline
{
public:
    /// Lines per block before it is handed over: some tenths of a millisecond of sampling work per
    /// worker, large enough that waking the workers costs little.
    static constexpr size_t kBlockLines = 4096;

    /// Starts pWorkers threads (at least 1); a line of share s goes to worker s % pWorkers.
    OrvAmcSamplingPipeline(int pWorkers, const OrvAmcSampleFactors& pFactors);
    ///@{
    /// Finishes (see Finish) and joins the workers.
    ~OrvAmcSamplingPipeline();
    OrvAmcSamplingPipeline(const OrvAmcSamplingPipeline&) = delete;
    OrvAmcSamplingPipeline& operator=(const OrvAmcSamplingPipeline&) = delete;
    ///@}

    /// Queues pCount values (at most OrvAsfNode::kMaxDofs are kept) of pBone's line at pTime. May
    /// wait for the workers when two blocks are already in flight.
    void Add(orvsdk::OrvAsfNode& pBone, int pShare, orvsdk::OrvTime pTime, const double* pValues, int pCount);
    /// Hands over the lines queued so far and waits until every one is sampled. Rethrows the first
    /// exception a worker met (the lines after it in that worker are not sampled).
    void Finish();

private:
    struct Line
    {
        orvsdk::OrvAsfNode* mBone;
        int mShare;
        orvsdk::OrvTime mTime;
        double mValues[orvsdk::OrvAsfNode::kMaxDofs];
    };
    struct Block
    {
        std::vector<Line> mLines;
        int mBusyWorkers = 0;  // workers that have not yet sampled their lines of it
    };

    void HandOver();
    void Work(int pWorker);
    void SampleShare(const Block& pBlock, int pWorker) const;

    const OrvAmcSampleFactors mFactors;
    const int mWorkerCount;
    std::vector<Line> mFilling;  // the lines of the block being read
    Block mBlocks[2];            // block n is mBlocks[n % 2]
    uint64_t mHandedOver = 0;    // blocks handed to the workers so far
    bool mStopping = false;
    std::exception_ptr mFailure;
    std::mutex mMutex;
    std::condition_variable mBlockReady;  // a block was handed over, or the pipeline stops
    std::condition_variable mBlockDone;   // a block's last worker finished it
    std::vector<std::thread> mWorkers;
};

} // namespace orvasf

#endif
