#ifndef ORVSDK_HOST_CORE_ORVARRAY_H
#define ORVSDK_HOST_CORE_ORVARRAY_H

#include "orvsdk/host/core/OrvMemory.h"

#include <cstdint>
#include <cstring>
#include <type_traits>

namespace orvsdk {

/// Growable array of trivially copyable elements held in one host-allocated block: a header
/// (element count and capacity, 32-bit each, padded to pAlignment bytes) followed by the
/// elements. The array object itself is one pointer, null while no storage was ever needed.
/// Add doubles the capacity (1, 2, 4, 8, ...) through OrvRealloc; removal never shrinks or frees
/// the block. The array owns its block and frees it on destruction; it cannot be copied.
template <typename T, size_t pAlignment = 16>
class OrvArray
{
    static_assert(std::is_trivially_copyable<T>::value, "OrvArray moves its elements with realloc");

public:
    OrvArray() = default;
    ~OrvArray() { Release(); }
    OrvArray(const OrvArray&) = delete;
    OrvArray& operator=(const OrvArray&) = delete;

    /// Appends a copy of pElement (copied before the block may move, so an element of this very
    /// array may be passed) and returns its index; -1, with the array unchanged, when the block
    /// cannot grow. Amortised constant time.
    int Add(const T& pElement)
    {
        const T lCopy = pElement;
        if (GetCount() == GetCapacity() && !Grow()) return -1;
        Header* lHeader = GetHeader();
        Data()[lHeader->mCount] = lCopy;
        return lHeader->mCount++;
    }

    /// Removes the element at pIndex, moving later elements down by one place; an index outside
    /// 0 .. GetCount() - 1 changes nothing. The storage is kept.
    void RemoveAt(int pIndex)
    {
        if (!mBlock || pIndex < 0 || pIndex >= GetHeader()->mCount) return;
        Header* lHeader = GetHeader();
        const int lMoved = lHeader->mCount - 1 - pIndex;
        if (lMoved > 0) std::memmove(Data() + pIndex, Data() + pIndex + 1, sizeof(T) * static_cast<size_t>(lMoved));
        --lHeader->mCount;
    }

    /// Index of the first element equal to pElement, or -1.
    int Find(const T& pElement) const
    {
        for (int i = 0; i < GetCount(); ++i)
            if (Data()[i] == pElement) return i;
        return -1;
    }

    /// Sets the count to 0 and keeps the storage.
    void Clear()
    {
        if (mBlock) GetHeader()->mCount = 0;
    }

    /// Frees the storage; the array is empty and without storage afterwards.
    void Release()
    {
        OrvFree(mBlock);
        mBlock = nullptr;
    }

    /// True once a block was allocated (and not released).
    bool HasStorage() const { return mBlock != nullptr; }
    ///@{
    /// Number of elements, and of elements the block holds before it must grow; 0 without storage.
    int GetCount() const { return mBlock ? GetHeader()->mCount : 0; }
    int GetCapacity() const { return mBlock ? GetHeader()->mCapacity : 0; }
    ///@}

    ///@{
    /// Element access; the index must be within 0 .. GetCount() - 1.
    T& operator[](int pIndex) { return Data()[pIndex]; }
    const T& operator[](int pIndex) const { return Data()[pIndex]; }
    T GetAt(int pIndex) const { return Data()[pIndex]; }
    ///@}

private:
    struct Header
    {
        int32_t mCount;
        int32_t mCapacity;
    };
    static constexpr size_t kHeaderSize = pAlignment > sizeof(Header) ? pAlignment : sizeof(Header);

    bool Grow()
    {
        const int32_t lCapacity = GetCapacity() == 0 ? 1 : GetCapacity() * 2;
        if (lCapacity <= 0) return false;
        const size_t lPayload = OrvAllocSize(static_cast<size_t>(lCapacity), sizeof(T));
        if (lPayload > SIZE_MAX - kHeaderSize) return false;
        void* lBlock = OrvRealloc(mBlock, kHeaderSize + lPayload);
        if (!lBlock) return false;
        const bool lFresh = mBlock == nullptr;
        mBlock = static_cast<unsigned char*>(lBlock);
        if (lFresh) GetHeader()->mCount = 0;
        GetHeader()->mCapacity = lCapacity;
        return true;
    }

    Header* GetHeader() const { return reinterpret_cast<Header*>(mBlock); }
    T* Data() const { return reinterpret_cast<T*>(mBlock + kHeaderSize); }

    unsigned char* mBlock = nullptr;
};

} // namespace orvsdk

#endif
