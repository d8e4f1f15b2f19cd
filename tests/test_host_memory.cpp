#include "orvsdk/host/core/OrvArray.h"
#include "orvsdk/host/core/OrvMemory.h"

#include <gtest/gtest.h>

#include <cstdint>

using namespace orvsdk;

namespace {

struct Point
{
    double mX;
    double mY;
    bool operator==(const Point& pOther) const { return mX == pOther.mX && mY == pOther.mY; }
};

} // namespace

TEST(HostMemory, AllocSizeSaturatesOnOverflow)
{
    EXPECT_EQ(OrvAllocSize(6, 8), 48u);
    EXPECT_EQ(OrvAllocSize(0, SIZE_MAX), 0u);
    EXPECT_EQ(OrvAllocSize(SIZE_MAX, 0), 0u);
    EXPECT_EQ(OrvAllocSize(SIZE_MAX / 8, 8), SIZE_MAX / 8 * 8);
    EXPECT_EQ(OrvAllocSize(SIZE_MAX / 8 + 1, 8), SIZE_MAX);
    EXPECT_EQ(OrvMalloc(OrvAllocSize(SIZE_MAX / 2, 4)), nullptr);

    void* lBlock = OrvMalloc(4);
    ASSERT_NE(lBlock, nullptr);
    EXPECT_EQ(OrvRealloc(lBlock, SIZE_MAX), nullptr);  // the block stays valid
    OrvFree(lBlock);
}

TEST(HostMemory, FailureScopeRefusesExactlyTheNextCalls)
{
    void* lBlock = OrvMalloc(8);
    ASSERT_NE(lBlock, nullptr);
    {
        OrvAllocFailureScope lFail(2);
        EXPECT_EQ(OrvMalloc(8), nullptr);
        EXPECT_EQ(OrvRealloc(lBlock, 64), nullptr);  // the block stays valid
        void* lThird = OrvMalloc(8);
        EXPECT_NE(lThird, nullptr);
        OrvFree(lThird);
    }
    {
        OrvAllocFailureScope lFail(5);
    }
    void* lAfter = OrvRealloc(lBlock, 0);  // normal again; a zero size still gives a block
    ASSERT_NE(lAfter, nullptr);
    OrvFree(lAfter);
    OrvFree(nullptr);
}

TEST(HostArray, AddDoublesCapacityAndReturnsIndex)
{
    OrvArray<int> lArray;
    EXPECT_FALSE(lArray.HasStorage());
    EXPECT_EQ(lArray.Find(0), -1);
    const int lExpectedCapacity[] = {1, 2, 4, 4, 8, 8, 8, 8, 16};
    for (int i = 0; i < 9; ++i)
    {
        EXPECT_EQ(lArray.Add(i * 10), i);
        EXPECT_EQ(lArray.GetCapacity(), lExpectedCapacity[i]) << "after " << i + 1 << " elements";
    }
    for (int i = 0; i < 9; ++i) EXPECT_EQ(lArray[i], i * 10);
    EXPECT_EQ(lArray.Find(70), 7);
}

TEST(HostArray, AddingAnOwnElementCopiesItBeforeTheBlockMoves)
{
    OrvArray<Point> lArray;
    for (int i = 0; i < 4; ++i) lArray.Add(Point{double(i), -double(i)});
    ASSERT_EQ(lArray.GetCount(), lArray.GetCapacity());  // the next Add reallocates
    EXPECT_EQ(lArray.Add(lArray[2]), 4);
    EXPECT_EQ(lArray.GetAt(4), (Point{2.0, -2.0}));
    EXPECT_EQ(lArray.Add(lArray[0]), 5);
    EXPECT_EQ(lArray[5], (Point{0.0, 0.0}));
}

TEST(HostArray, RemoveAtKeepsOrderAndStorage)
{
    OrvArray<int> lArray;
    for (int i = 0; i < 5; ++i) lArray.Add(i);
    lArray.RemoveAt(1);  // middle
    lArray.RemoveAt(3);  // last
    lArray.RemoveAt(0);  // first
    ASSERT_EQ(lArray.GetCount(), 2);
    EXPECT_EQ(lArray[0], 2);
    EXPECT_EQ(lArray[1], 3);
    EXPECT_EQ(lArray.GetCapacity(), 8);
    lArray.Clear();
    EXPECT_EQ(lArray.GetCount(), 0);
    EXPECT_TRUE(lArray.HasStorage());
    EXPECT_EQ(lArray.Add(9), 0);
    lArray.Release();
    EXPECT_FALSE(lArray.HasStorage());
}

TEST(HostArray, FailedGrowthLeavesTheArrayIntact)
{
    OrvArray<int> lArray;
    {
        OrvAllocFailureScope lFail(1);
        EXPECT_EQ(lArray.Add(1), -1);  // first block
    }
    EXPECT_FALSE(lArray.HasStorage());
    for (int i = 0; i < 4; ++i) lArray.Add(i);
    {
        OrvAllocFailureScope lFail(1);
        EXPECT_EQ(lArray.Add(4), -1);  // growth from 4 to 8
    }
    ASSERT_EQ(lArray.GetCount(), 4);
    EXPECT_EQ(lArray.GetCapacity(), 4);
    for (int i = 0; i < 4; ++i) EXPECT_EQ(lArray[i], i);
    EXPECT_EQ(lArray.Add(4), 4);
    OrvAllocFailureScope lFail(1);
    EXPECT_EQ(lArray.Add(5), 5);  // free capacity needs no allocation
}
