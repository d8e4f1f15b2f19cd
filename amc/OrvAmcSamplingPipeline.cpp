#include "amc/OrvAmcSamplingPipeline.h"

#include <algorithm>
#include <utility>

namespace orvasf {

OrvAmcSamplingPipeline::OrvAmcSamplingPipeline(int pWorkers, const OrvAmcSampleFactors& pFactors)
    : mFactors(pFactors), mWorkerCount(std::max(pWorkers, 1))
{
    mFilling.reserve(kBlockLines);
    for (int i = 0; i < mWorkerCount; ++i) mWorkers.emplace_back([this, i] { Work(i); });
}

OrvAmcSamplingPipeline::~OrvAmcSamplingPipeline()
{
    {
        const std::lock_guard<std::mutex> lLock(mMutex);
        mStopping = true;
    }
    mBlockReady.notify_all();
    for (std::thread& lWorker : mWorkers) lWorker.join();
}

void OrvAmcSamplingPipeline::Add(orvsdk::OrvAsfNode& pBone, int pShare, orvsdk::OrvTime pTime,
                                 const double* pValues, int pCount)
{
    Line& lLine = mFilling.emplace_back();
    lLine.mBone = &pBone;
    lLine.mShare = pShare % mWorkerCount;
    lLine.mTime = pTime;
    std::copy_n(pValues, std::min(pCount, orvsdk::OrvAsfNode::kMaxDofs), lLine.mValues);
    if (mFilling.size() >= kBlockLines) HandOver();
}

void OrvAmcSamplingPipeline::Finish()
{
    if (!mFilling.empty()) HandOver();
    std::unique_lock<std::mutex> lLock(mMutex);
    mBlockDone.wait(lLock, [this] { return mBlocks[0].mBusyWorkers == 0 && mBlocks[1].mBusyWorkers == 0; });
    if (mFailure) std::rethrow_exception(std::exchange(mFailure, nullptr));
}

void OrvAmcSamplingPipeline::HandOver()
{
    Block& lBlock = mBlocks[mHandedOver % 2];
    {
        // The block two hand-overs back must be done before its room is reused.
        std::unique_lock<std::mutex> lLock(mMutex);
        mBlockDone.wait(lLock, [&lBlock] { return lBlock.mBusyWorkers == 0; });
        lBlock.mLines.swap(mFilling);
        lBlock.mBusyWorkers = mWorkerCount;
        ++mHandedOver;
    }
    mBlockReady.notify_all();
    mFilling.clear();
}

void OrvAmcSamplingPipeline::Work(int pWorker)
{
    for (uint64_t lNext = 0;; ++lNext)
    {
        {
            std::unique_lock<std::mutex> lLock(mMutex);
            mBlockReady.wait(lLock, [&] { return mHandedOver > lNext || mStopping; });
            if (mHandedOver <= lNext) return;
        }
        Block& lBlock = mBlocks[lNext % 2];
        try
        {
            SampleShare(lBlock, pWorker);
        }
        catch (...)
        {
            const std::lock_guard<std::mutex> lLock(mMutex);
            if (!mFailure) mFailure = std::current_exception();
        }
        bool lLast = false;
        {
            const std::lock_guard<std::mutex> lLock(mMutex);
            lLast = --lBlock.mBusyWorkers == 0;
        }
        if (lLast) mBlockDone.notify_all();
    }
}

void OrvAmcSamplingPipeline::SampleShare(const Block& pBlock, int pWorker) const
{
    for (const Line& lLine : pBlock.mLines)
    {
        if (lLine.mShare != pWorker) continue;
        orvsdk::OrvTime lTime = lLine.mTime;
        double lValues[orvsdk::OrvAsfNode::kMaxDofs];
        std::copy_n(lLine.mValues, orvsdk::OrvAsfNode::kMaxDofs, lValues);
        lLine.mBone->AddSampleFromDOF(lValues, lTime, mFactors.mTranslationFactor, mFactors.mRotationFactor,
                                      mFactors.mUseRotationOffset, mFactors.mUsePreRotation);
    }
}

} // namespace orvasf
