#include "orvsdk/host/core/OrvMemory.h"

#include <cstdint>
#include <cstdlib>

namespace orvsdk {

// Allocations still to refuse on this thread (see OrvAllocFailureScope).
static thread_local int sFailuresLeft = 0;

static bool ConsumeFailure()
{
    if (sFailuresLeft <= 0) return false;
    --sFailuresLeft;
    return true;
}

// A zero size is raised to one byte so that null always means failure: realloc(p, 0) may free
// the block and return null, which a caller would take for a failed call on a live block.
static size_t NonZero(size_t pSize)
{
    return pSize == 0 ? 1 : pSize;
}

// No allocator can satisfy more than PTRDIFF_MAX bytes; refusing such sizes here also keeps
// sanitizer allocators, which abort on them, returning null like the C allocator.
static bool TooLarge(size_t pSize)
{
    return pSize > static_cast<size_t>(PTRDIFF_MAX);
}

void* OrvMalloc(size_t pSize)
{
    if (ConsumeFailure() || TooLarge(pSize)) return nullptr;
    return std::malloc(NonZero(pSize));
}

void* OrvRealloc(void* pBlock, size_t pSize)
{
    if (ConsumeFailure() || TooLarge(pSize)) return nullptr;
    return std::realloc(pBlock, NonZero(pSize));
}

void OrvFree(void* pBlock)
{
    std::free(pBlock);
}

size_t OrvAllocSize(size_t pCount, size_t pSize)
{
    if (pSize != 0 && pCount > SIZE_MAX / pSize) return SIZE_MAX;
    return pCount * pSize;
}

OrvAllocFailureScope::OrvAllocFailureScope(int pFailures)
{
    sFailuresLeft = pFailures > 0 ? pFailures : 0;
}

OrvAllocFailureScope::~OrvAllocFailureScope()
{
    sFailuresLeft = 0;
}

} // namespace orvsdk
