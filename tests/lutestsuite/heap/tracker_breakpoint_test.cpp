#include <atomic>
#include <limits>

#include "tests/lutestsuite/heap/heaptrackertest.h"
#include "tests/support/os/breakpoint.h"

namespace
{

std::atomic<int> s_breakpointCount = 0;

/// Counts breakpoint instructions instead of stopping at them.
class LuTestSuiteHeapTrackerBreakpointTest : public LuTestSuiteHeapTrackerTest
{
protected:
    LuTestSuiteHeapTrackerBreakpointTest()
    {
        s_breakpointCount = 0;
        LbOs::SetBreakpointHandler([] { ++s_breakpointCount; });
    }
    ~LuTestSuiteHeapTrackerBreakpointTest() override { LbOs::SetBreakpointHandler(nullptr); }

    LuTestSuiteHeapTracker m_tracker{false, true};
};

} // namespace

TEST_F(LuTestSuiteHeapTrackerBreakpointTest, FiresAtTheReallocWithTheObservedNumber)
{
    m_tracker.ObserveID(2);
    m_tracker.Activate();
    void* block = s_malloc(10);
    block = s_realloc(block, 20);
    const int before = s_breakpointCount;
    block = s_realloc(block, 30);
    const int after = s_breakpointCount;
    s_free(block);
    m_tracker.Deactivate();
    EXPECT_EQ(before, 0);
    EXPECT_EQ(after, 1);
}

TEST_F(LuTestSuiteHeapTrackerBreakpointTest, FiresAtTheObservedNumber)
{
    m_tracker.ObserveID(1);
    m_tracker.Activate();
    void* const first = s_malloc(10);
    const int before = s_breakpointCount;
    void* const second = s_malloc(10);
    const int after = s_breakpointCount;
    m_tracker.Deactivate();
    EXPECT_EQ(before, 0);
    EXPECT_EQ(after, 1);
    EXPECT_EQ(m_tracker.GetMallocCount(), 2U) << "continues after the breakpoint";
    s_free(first);
    s_free(second);
}

TEST_F(LuTestSuiteHeapTrackerBreakpointTest, FreeWithTheObservedNumberDoesNotFire)
{
    m_tracker.ObserveID(1);
    m_tracker.Activate();
    s_free(s_malloc(10));
    m_tracker.Deactivate();
    EXPECT_EQ(m_tracker.GetFreeCount(), 1U);
    EXPECT_EQ(s_breakpointCount, 0);
}

TEST_F(LuTestSuiteHeapTrackerBreakpointTest, FiresAtEachAllocationOfTheObservedSize)
{
    m_tracker.ObserveSize(77);
    m_tracker.Activate();
    void* block = s_malloc(77);
    block = s_realloc(block, 76);
    block = s_realloc(block, 77);
    s_free(block);
    m_tracker.Deactivate();
    EXPECT_EQ(s_breakpointCount, 2);
}

TEST_F(LuTestSuiteHeapTrackerBreakpointTest, BothConditionsFireIndependently)
{
    m_tracker.ObserveID(0);
    m_tracker.ObserveSize(77);
    m_tracker.Activate();
    s_free(s_malloc(77));
    m_tracker.Deactivate();
    EXPECT_EQ(s_breakpointCount, 2);
}

TEST_F(LuTestSuiteHeapTrackerBreakpointTest, LargestValueMeansNoObservedSize)
{
    constexpr std::size_t c_AllBits = std::numeric_limits<std::size_t>::max();
    m_tracker.Activate();
    void* const none = s_malloc(c_AllBits);
    void* const block = s_malloc(100);
    void* const noneToo = s_realloc(block, c_AllBits);
    m_tracker.ObserveSize(c_AllBits);
    void* const noneEither = s_malloc(c_AllBits);
    s_free(block);
    m_tracker.Deactivate();
    EXPECT_EQ(s_breakpointCount, 0);
    EXPECT_EQ(none, nullptr);
    EXPECT_EQ(noneToo, nullptr);
    EXPECT_EQ(noneEither, nullptr);
    EXPECT_EQ(getOperationCount(m_tracker), 5U);
    EXPECT_EQ(m_tracker.GetCurrentAlloc(), 0);
}

TEST_F(LuTestSuiteHeapTrackerBreakpointTest, StaysArmedAfterReset)
{
    m_tracker.ObserveSize(77);
    m_tracker.Reset();
    m_tracker.Activate();
    s_free(s_malloc(77));
    m_tracker.Deactivate();
    EXPECT_EQ(s_breakpointCount, 1);
}

TEST_F(LuTestSuiteHeapTrackerBreakpointTest, AllocationsWhileTrackingAnOperationAreNotCounted)
{
    LbOs::SetBreakpointHandler([] {
        ++s_breakpointCount;
        s_free(s_realloc(s_malloc(1000), 2000));
    });
    m_tracker.ObserveSize(77);
    m_tracker.Activate();
    void* const block = s_malloc(77);
    m_tracker.Deactivate();
    EXPECT_EQ(s_breakpointCount, 1);
    EXPECT_EQ(getOperationCount(m_tracker), 1U);
    EXPECT_EQ(m_tracker.GetCurrentAlloc(), 77);
    EXPECT_EQ(m_tracker.GetCurrentMax(), 77);
    s_free(block);
}

namespace
{

const LuTestSuiteHeapTracker* s_first = nullptr;
const LuTestSuiteHeapTracker* s_second = nullptr;
std::uint64_t s_firstCount = 0;
std::uint64_t s_secondCount = 0;

} // namespace

TEST_F(LuTestSuiteHeapTrackerBreakpointTest, TrackersAreCalledInOrderOfRegistration)
{
    LuTestSuiteHeapTracker second{false, true};
    s_first = &m_tracker;
    s_second = &second;
    LbOs::SetBreakpointHandler([] {
        s_firstCount = s_first->GetMallocCount();
        s_secondCount = s_second->GetMallocCount();
    });
    m_tracker.ObserveSize(77);
    second.ObserveSize(78);
    // The order of activation is irrelevant.
    second.Activate();
    m_tracker.Activate();
    s_free(s_malloc(77));
    EXPECT_EQ(s_firstCount, 0U);
    EXPECT_EQ(s_secondCount, 0U);
    s_free(s_malloc(78));
    EXPECT_EQ(s_firstCount, 2U) << "notified about the second block before the other tracker";
    EXPECT_EQ(s_secondCount, 1U);
    m_tracker.Deactivate();
    second.Deactivate();
}
