#include "orvsdk/host/core/OrvArray.h"
#include "orvsdk/host/core/OrvMemory.h"

#include <gtest/gtest.h>

#include <cstdint>

using namespace orvsdk;

TEST(HostMemory, SizesSaturateAndRefusedAllocationsLeaveTheBlockValid)
{
    EXPECT_EQ(OrvAllocSize(6, 8), 48u);
    EXPECT_EQ(OrvAllocSize(0, SIZE_MAX), 0u);
    EXPECT_EQ(OrvAllocSize(SIZE_MAX, 0), 0u);
    EXPECT_EQ(OrvAllocSize(SIZE_MAX / 8, 8), SIZE_MAX / 8 * 8);
    EXPECT_EQ(OrvAllocSize(SIZE_MAX / 8 + 1, 8), SIZE_MAX);
    EXPECT_EQ(OrvMalloc(OrvAllocSize(SIZE_MAX / 2, 4)), nullptr);
    void* lBlock = OrvMalloc(8);
    ASSERT_NE(lBlock, nullptr);
    EXPECT_EQ(OrvRealloc(lBlock, SIZE_MAX), nullptr);
    {
        OrvAllocFailureScope lFail(2);  // refuses exactly the next two calls
        EXPECT_EQ(OrvMalloc(8), nullptr);
        EXPECT_EQ(OrvRealloc(lBlock, 64), nullptr);
        lBlock = OrvRealloc(lBlock, 64);
        ASSERT_NE(lBlock, nullptr);
    }
    {
        OrvAllocFailureScope lFail(5);  // refusals left over end with the scope
    }
    void* lAfter = OrvRealloc(lBlock, 0);  // a zero size still gives a block
    ASSERT_NE(lAfter, nullptr);
    OrvFree(lAfter);
}

TEST(HostArray, AddingAnOwnElementCopiesItBeforeTheBlockMoves)
{
    OrvArray<double> lArray;
    for (int i = 0; i < 4; ++i) lArray.Add(i + 0.5);
    ASSERT_EQ(lArray.GetCount(), lArray.GetCapacity());  // the next Add reallocates
    EXPECT_EQ(lArray.Add(lArray[2]), 4);
    EXPECT_EQ(lArray.GetAt(4), 2.5);
}

TEST(HostArray, RemoveAtKeepsOrderAndStorage)
{
    OrvArray<int> lArray;
    for (int i = 0; i < 5; ++i) EXPECT_EQ(lArray.Add(i), i);
    lArray.RemoveAt(1);  // middle
    lArray.RemoveAt(3);  // last
    lArray.RemoveAt(0);  // first
    ASSERT_EQ(lArray.GetCount(), 2);
    EXPECT_EQ(lArray[0], 2);
    EXPECT_EQ(lArray.Find(3), 1);
    EXPECT_EQ(lArray.Find(0), -1);
    EXPECT_EQ(lArray.GetCapacity(), 8);
    lArray.Clear();
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
    EXPECT_EQ(lArray[3], 3);
    EXPECT_EQ(lArray.Add(4), 4);
    OrvAllocFailureScope lFail(1);
    EXPECT_EQ(lArray.Add(5), 5);  // free capacity needs no allocation
}
