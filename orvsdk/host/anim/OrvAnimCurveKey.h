#ifndef ORVSDK_HOST_ANIM_ORVANIMCURVEKEY_H
#define ORVSDK_HOST_ANIM_ORVANIMCURVEKEY_H

#include "orvsdk/host/OrvHostExport.h"
#include "orvsdk/host/anim/OrvAnimCurveKeyImpl.h"
#include "orvsdk/host/core/OrvTime.h"

namespace orvsdk {

/// A key record handed to OrvAnimCurve::KeyAdd: a time and a value. A default record owns its
/// implementation, obtained through mAllocatorFct when the record is made and returned through
/// mDeallocatorFct when it dies: one host allocation per record, so a caller makes one record
/// and sets it for every key it adds. When the allocation fails the record is empty: Set does
/// nothing, GetTime and GetValue answer 0, and curves refuse it. A record made on storage the
/// caller provides allocates nothing and is never empty. Not copyable.
class ORVHOST_API OrvAnimCurveKey
{
public:
    /// Makes a record's implementation in host memory; null when the allocation fails.
    using AllocatorFct = OrvAnimCurveKeyImpl* (*)();
    /// Frees an implementation made by an AllocatorFct.
    using DeallocatorFct = void (*)(OrvAnimCurveKeyImpl*);

    ///@{
    /// The host allocator hooks (OrvMalloc and OrvFree based). Constant: fixed for the process.
    static const AllocatorFct mAllocatorFct;
    static const DeallocatorFct mDeallocatorFct;
    ///@}

    /// A record at time 0 with value 0, linear.
    OrvAnimCurveKey();
    /// A record set to (pTime, pValue).
    OrvAnimCurveKey(OrvTime pTime, float pValue);
    ///@{
    /// A record at time 0 with value 0, linear, whose implementation is pStorage: the caller owns
    /// it and keeps it alive as long as the record. For paths that make a record per call at a
    /// high rate (the sampling of every bone and frame), which then allocate nothing.
    explicit OrvAnimCurveKey(OrvAnimCurveKeyImpl& pStorage) : mImpl(&pStorage), mOwnsImpl(false)
    {
        mImpl->Set(OrvTime(), 0.0f);
    }
    ~OrvAnimCurveKey()
    {
        if (mOwnsImpl) mDeallocatorFct(mImpl);
    }
    OrvAnimCurveKey(const OrvAnimCurveKey&) = delete;
    OrvAnimCurveKey& operator=(const OrvAnimCurveKey&) = delete;
    ///@}

    /// Sets time and value and resets the settings to those of a new key (OrvAnimCurveKeyImpl::Set).
    /// Inline, like the two queries: samplers call them once per key.
    void Set(OrvTime pTime, float pValue)
    {
        if (mImpl) mImpl->Set(pTime, pValue);
    }
    ///@{
    /// The time and value last set.
    OrvTime GetTime() const { return mImpl ? mImpl->GetTime() : OrvTime(); }
    float GetValue() const { return mImpl ? mImpl->GetValue() : 0.0f; }
    ///@}

    /// False when the implementation could not be allocated.
    bool IsValid() const { return mImpl != nullptr; }

private:
    OrvAnimCurveKeyImpl* mImpl;
    bool mOwnsImpl;  // false on caller storage
};

} // namespace orvsdk

#endif
