/*
 * heap_test.cpp: the tracked heap. The wrapped functions are called by the
 * names that the linker gives them, as this program isn't wrapped itself.
 */
#include "services/heap.h"

#include "switch.h"

#include <services/system.h>

#include <cstdlib>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

extern "C" void *__wrap_malloc(size_t size);
extern "C" void __wrap_free(void *memory);

namespace simswitch::services
{

namespace
{

using testing::ElementsAre;

class HeapTest : public testing::Test
{
protected:
    HeapTest() { sw.heap.tracking = true; }
    Switch sw;
};

} // namespace

TEST_F(HeapTest, BlocksAreTrackedFromMallocToFree)
{
    void *small = __wrap_malloc(24);
    void *large = __wrap_malloc(1000);
    EXPECT_EQ(sw.heap.live_blocks(), 2U);
    EXPECT_EQ(sw.heap.live_bytes(), 1024U);
    EXPECT_TRUE(sw.heap.is_live(small));
    __wrap_free(small);
    mtrack_free(large);
    EXPECT_EQ(sw.heap.live_blocks(), 0U);
    EXPECT_THAT(sw.journal.calls(), ElementsAre("malloc(24) = record", "malloc(1000) = record",
                                                "free(record)", "mtrack_free(record)"));
}

TEST_F(HeapTest, NullIsReleasedWithoutHarm)
{
    __wrap_free(nullptr);
    mtrack_free(nullptr);
    EXPECT_THAT(sw.journal.calls(), ElementsAre("free(null)", "mtrack_free(null)"));
}

TEST_F(HeapTest, NthAllocationFails)
{
    Heap::fail_allocation(2);
    void *first = __wrap_malloc(1);
    EXPECT_EQ(__wrap_malloc(2), nullptr);
    void *third = __wrap_malloc(3);
    EXPECT_NE(first, nullptr);
    EXPECT_NE(third, nullptr);
    EXPECT_EQ(sw.heap.live_blocks(), 2U);
    __wrap_free(first);
    __wrap_free(third);
}

TEST_F(HeapTest, AllocationsFailForever)
{
    Heap::fail_allocation(1, true);
    EXPECT_EQ(__wrap_malloc(1), nullptr);
    EXPECT_EQ(__wrap_malloc(1), nullptr);
    EXPECT_THAT(sw.journal.calls(), ElementsAre("malloc(1) = null", "malloc(1) = null"));
}

TEST_F(HeapTest, ReleasingCantBeMadeToFail)
{
    sw.journal.arm(
        {.forever = true, .when = [](std::string_view text) { return text == "record"; }});
    __wrap_free(__wrap_malloc(8));
    mtrack_free(__wrap_malloc(8));
    EXPECT_EQ(sw.heap.live_blocks(), 0U);
}

TEST_F(HeapTest, NothingIsJournaledWhileTrackingIsOff)
{
    sw.heap.tracking = false;
    __wrap_free(__wrap_malloc(8));
    EXPECT_TRUE(sw.journal.calls().empty());
    EXPECT_EQ(sw.heap.live_blocks(), 0U);
}

TEST_F(HeapTest, TrackedBlockReleasedWhileTrackingIsOffIsForgotten)
{
    void *block = __wrap_malloc(8);
    sw.heap.tracking = false;
    __wrap_free(block);
    EXPECT_EQ(sw.heap.live_blocks(), 0U);
    EXPECT_THAT(sw.journal.calls(), ElementsAre("malloc(8) = record"));
}

TEST_F(HeapTest, UntrackedBlockIsReleasedSilently)
{
    __wrap_free(std::malloc(8));
    EXPECT_TRUE(sw.journal.calls().empty());
}

TEST_F(HeapTest, MtrackFreeReleasesWhatPlainMallocGave)
{
    mtrack_free(std::malloc(8));
    EXPECT_THAT(sw.journal.calls(), ElementsAre("mtrack_free(record)"));
}

TEST(Heap, WithoutASwitchMallocAndFreePassThrough)
{
    void *block = __wrap_malloc(8);
    EXPECT_NE(block, nullptr);
    __wrap_free(block);
}

} // namespace simswitch::services
