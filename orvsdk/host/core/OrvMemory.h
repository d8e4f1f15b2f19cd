#ifndef ORVSDK_HOST_CORE_ORVMEMORY_H
#define ORVSDK_HOST_CORE_ORVMEMORY_H

#include "orvsdk/host/OrvHostExport.h"

#include <cstddef>

namespace orvsdk {

///@{
/// Host allocator. Thin wrappers of the C allocator: OrvMalloc and OrvRealloc return null on
/// failure (never throw); OrvFree accepts null. Every record the module creates in host memory
/// goes through these, so tests can make allocations fail on purpose.
ORVHOST_API void* OrvMalloc(size_t pSize);
ORVHOST_API void* OrvRealloc(void* pBlock, size_t pSize);
ORVHOST_API void OrvFree(void* pBlock);
///@}

/// pCount * pSize, or SIZE_MAX when the product overflows, so that an allocation of the result
/// fails instead of returning a block that is too small.
ORVHOST_API size_t OrvAllocSize(size_t pCount, size_t pSize);

/// Test aid: while an object of this class lives, the next pFailures calls of OrvMalloc and
/// OrvRealloc made on the constructing thread return null. Scopes do not nest; the destructor
/// restores normal allocation.
class ORVHOST_API OrvAllocFailureScope
{
public:
    ///@{
    /// Starts the scope: the next pFailures allocations fail; the destructor ends it. Not copyable.
    explicit OrvAllocFailureScope(int pFailures);
    ~OrvAllocFailureScope();
    OrvAllocFailureScope(const OrvAllocFailureScope&) = delete;
    OrvAllocFailureScope& operator=(const OrvAllocFailureScope&) = delete;
    ///@}
};

} // namespace orvsdk

#endif
