#include "orvsdk/host/anim/OrvAnimCurveKey.h"

#include "orvsdk/host/core/OrvMemory.h"

#include <new>

namespace orvsdk {

namespace {

OrvAnimCurveKeyImpl* AllocateKeyImpl()
{
    void* lBlock = OrvMalloc(sizeof(OrvAnimCurveKeyImpl));
    return lBlock ? new (lBlock) OrvAnimCurveKeyImpl() : nullptr;
}

void DeallocateKeyImpl(OrvAnimCurveKeyImpl* pImpl)
{
    if (!pImpl) return;
    pImpl->~OrvAnimCurveKeyImpl();
    OrvFree(pImpl);
}

} // namespace

const OrvAnimCurveKey::AllocatorFct OrvAnimCurveKey::mAllocatorFct = AllocateKeyImpl;
const OrvAnimCurveKey::DeallocatorFct OrvAnimCurveKey::mDeallocatorFct = DeallocateKeyImpl;

OrvAnimCurveKey::OrvAnimCurveKey() : mImpl(mAllocatorFct()), mOwnsImpl(true)
{
}

OrvAnimCurveKey::OrvAnimCurveKey(OrvTime pTime, float pValue) : OrvAnimCurveKey()
{
    Set(pTime, pValue);
}

} // namespace orvsdk
