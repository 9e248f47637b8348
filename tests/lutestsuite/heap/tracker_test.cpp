#include "testing/lutestsuite/lutestsuiteheaptracker.h"

#include <limits>
#include <optional>
#include <string>
#include <vector>

#include "base/lbformat.h"
#include "base/lustream.h"
#include "tests/lutestsuite/heap/heaptrackertest.h"
#include "tests/support/os/breakpoint.h"
#include "tests/support/os/testaids.h"

namespace
{

std::wstring dump(const LuTestSuiteHeapTracker& tracker)
{
    LuStreamWriteTextMemory stream;
    tracker.dump(stream);
    return stream.GetText();
}

/// True if the sizes listed in a dump add up to its total.
bool isConsistent(const LuTestSuiteHeapTracker& tracker)
{
    const std::wstring text = dump(tracker);
    const std::wstring mark = L", Size ";
    std::int64_t sum = 0;
    for (std::size_t place = text.find(mark); place != std::wstring::npos; place = text.find(mark, place + 1))
    {
        constexpr std::size_t c_DigitsMax = 20;
        sum += std::stoll(text.substr(place + mark.size(), c_DigitsMax));
    }
    return sum == tracker.GetCurrentAlloc();
}

} // namespace

TEST(LuTestSuiteHeapTrackerWithoutHeap, CountsNothingSilently)
{
    if (LbOs::GetHeapFunctions().malloc != nullptr)
    {
        GTEST_SKIP() << "the heap of this process can be tracked";
    }
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    {
        const LuTestSuiteHeapTracker tracker;
        s_free(s_malloc(100));
        EXPECT_TRUE(tracker.IsActive());
        EXPECT_EQ(getOperationCount(tracker), 0U);
        EXPECT_EQ(tracker.GetCurrentAlloc(), 0);
    }
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

/// Brings a tracker into states that no sequence of successful operations produces.
class LuTestSuiteHeapTrackerConsistency : public LuTestSuiteHeapTrackerTest
{
protected:
    ~LuTestSuiteHeapTrackerConsistency() override { m_tracker.Reset(); }

    bool isConsistent() const { return m_tracker.consistencyTest(); }
    void addToCurrentAlloc(std::int64_t bytes) { m_tracker.m_currentAlloc += bytes; }
    void setOperationCounter(std::uint64_t number) { m_tracker.m_operationCounter = number; }

    LuTestSuiteHeapTracker m_tracker{false, true};
};

TEST_F(LuTestSuiteHeapTrackerConsistency, NothingAllocatedWithAnEmptyMapIsConsistent)
{
    EXPECT_TRUE(isConsistent());
}

TEST_F(LuTestSuiteHeapTrackerConsistency, SomethingAllocatedWithAnEmptyMapIsInconsistent)
{
    addToCurrentAlloc(16);
    EXPECT_FALSE(isConsistent());
}

TEST_F(LuTestSuiteHeapTrackerConsistency, SizesOfTheMapMustAddUpToTheAllocatedBytes)
{
    m_tracker.Activate();
    void* const first = s_malloc(100);
    void* const second = s_malloc(200);
    m_tracker.Deactivate();
    EXPECT_TRUE(isConsistent());
    addToCurrentAlloc(1);
    EXPECT_FALSE(isConsistent());
    addToCurrentAlloc(-1);
    EXPECT_TRUE(isConsistent());
    s_free(first);
    s_free(second);
}

TEST_F(LuTestSuiteHeapTrackerConsistency, LargestValueMeansNoObservedNumber)
{
    static int s_breakpointCount = 0;
    LbOs::SetBreakpointHandler([] { ++s_breakpointCount; });
    setOperationCounter(std::numeric_limits<std::uint64_t>::max());
    m_tracker.Activate();
    s_free(s_malloc(100));
    m_tracker.Deactivate();
    LbOs::SetBreakpointHandler(nullptr);
    EXPECT_EQ(s_breakpointCount, 0);
    EXPECT_EQ(m_tracker.GetMallocCount(), 1U);
}

TEST_F(LuTestSuiteHeapTrackerTest, DumpReportsLackOfMemoryForItsList)
{
    std::vector<void*> blocks(20'000);
    LuTestSuiteHeapTracker tracker;
    for (void*& block : blocks)
    {
        block = s_malloc(16);
    }
    tracker.Deactivate();
    // Leaves free memory in the heap for the dump's text, because the heap cannot get more from the system either.
    s_free(s_malloc(100'000));
    if (!LbOs::SetPagesForbidden(true))
    {
        GTEST_SKIP() << "memory from the system cannot be made to fail here";
    }
    LuStreamWriteTextMemory stream;
    tracker.dump(stream);
    ASSERT_TRUE(LbOs::SetPagesForbidden(false));
    const std::wstring& text = stream.GetText();
    EXPECT_NE(text.find(L"CountMalloc 20000\n"), std::wstring::npos) << "contains the figures";
    EXPECT_TRUE(text.ends_with(L"Active Allocations:\nWarnung: Für die Liste reicht der Speicher nicht.\n"));
    for (void* const block : blocks)
    {
        s_free(block);
    }
}

TEST_F(LuTestSuiteHeapTrackerTest, IsRegisteredAndActiveByDefault)
{
    const LuTestSuiteHeapTracker tracker;
    EXPECT_TRUE(tracker.IsActive());
    s_free(s_malloc(100));
    EXPECT_EQ(tracker.GetMallocCount(), 1U);
    EXPECT_EQ(tracker.GetFreeCount(), 1U);
}

TEST_F(LuTestSuiteHeapTrackerTest, CountsNothingUntilActivated)
{
    LuTestSuiteHeapTracker tracker(false, true);
    EXPECT_FALSE(tracker.IsActive());
    s_free(s_malloc(100));
    EXPECT_EQ(getOperationCount(tracker), 0U);
    tracker.Activate();
    s_free(s_malloc(100));
    tracker.Deactivate();
    EXPECT_EQ(getOperationCount(tracker), 2U);
}

TEST_F(LuTestSuiteHeapTrackerTest, CountsNothingWithoutInitialization)
{
    LuTestSuiteHeapTracker tracker(true, false);
    EXPECT_FALSE(tracker.IsActive());
    tracker.Activate();
    s_free(s_malloc(100));
    EXPECT_EQ(getOperationCount(tracker), 0U);
    tracker.Initialize();
    s_free(s_malloc(100));
    EXPECT_EQ(getOperationCount(tracker), 2U);
}

TEST_F(LuTestSuiteHeapTrackerTest, KnownScriptIsCountedToTheByte)
{
    void* const untracked = s_malloc(700);
    void* const untrackedToo = s_malloc(800);
    LuTestSuiteHeapTracker tracker;
    void* first = s_malloc(100);
    void* const second = s_malloc(50);
    first = s_realloc(first, 5000); // grows
    first = s_realloc(first, 10);   // shrinks
    void* const grown = s_realloc(untracked, 900);
    s_free(untrackedToo);
    s_free(nullptr);
    s_free(second);
    void* const fromNothing = s_realloc(nullptr, 30);
    tracker.Deactivate();

    EXPECT_EQ(tracker.GetMallocCount(), 2U);
    EXPECT_EQ(tracker.GetReallocCount(), 4U);
    EXPECT_EQ(tracker.GetFreeCount(), 3U);
    EXPECT_EQ(tracker.GetCurrentAlloc(), 10 + 900 + 30);
    EXPECT_EQ(tracker.GetCurrentMax(), 5050);
    EXPECT_TRUE(isConsistent(tracker));

    tracker.Activate();
    s_free(first);
    s_free(grown);
    s_free(fromNothing);
    tracker.Deactivate();
    EXPECT_EQ(tracker.GetCurrentAlloc(), 0);
    EXPECT_TRUE(isConsistent(tracker));
    EXPECT_EQ(dump(tracker).find(L"ID "), std::wstring::npos);
}

TEST_F(LuTestSuiteHeapTrackerTest, ReallocToNothingFreesTheBlock)
{
    LuTestSuiteHeapTracker tracker;
    void* const block = s_malloc(100);
    s_realloc(block, 0);
    tracker.Deactivate();
    EXPECT_EQ(tracker.GetCurrentAlloc(), 0);
    EXPECT_EQ(getOperationCount(tracker), 2U) << "calls by the run-time itself do not count";
}

TEST_F(LuTestSuiteHeapTrackerTest, FailedAllocationsDoNotChangeTheAllocatedBytes)
{
    constexpr std::size_t c_TooMuch = std::numeric_limits<std::size_t>::max() / 2;
    LuTestSuiteHeapTracker tracker;
    void* const block = s_malloc(100);
    void* const none = s_malloc(c_TooMuch);
    void* const noneToo = s_realloc(block, c_TooMuch);
    const std::int64_t current = tracker.GetCurrentAlloc();
    s_free(block);
    tracker.Deactivate();
    EXPECT_EQ(none, nullptr);
    EXPECT_EQ(noneToo, nullptr);
    EXPECT_EQ(current, 100);
    EXPECT_EQ(tracker.GetCurrentAlloc(), 0);
    EXPECT_EQ(getOperationCount(tracker), 4U);
}

TEST_F(LuTestSuiteHeapTrackerTest, OperatorsNewAndDeleteAreTracked)
{
    LuTestSuiteHeapTracker tracker;
    auto* const numbers = new std::vector<std::uint64_t>(1000);
    tracker.Deactivate();
    EXPECT_EQ(tracker.GetCurrentAlloc(), static_cast<std::int64_t>(sizeof(*numbers) + 8000));
    tracker.Activate();
    delete numbers;
    tracker.Deactivate();
    EXPECT_EQ(tracker.GetCurrentAlloc(), 0);
    EXPECT_EQ(tracker.GetMallocCount(), 2U);
}

TEST_F(LuTestSuiteHeapTrackerTest, FreeOfAnUntrackedBlockCountsOnlyTheOperation)
{
    void* const block = s_malloc(100);
    LuTestSuiteHeapTracker tracker;
    s_free(block);
    void* const next = s_malloc(5);
    tracker.Deactivate();
    EXPECT_EQ(tracker.GetFreeCount(), 1U);
    EXPECT_EQ(tracker.GetCurrentAlloc(), 5);
    EXPECT_NE(dump(tracker).find(L"ID 1, "), std::wstring::npos);
    s_free(next);
}

TEST_F(LuTestSuiteHeapTrackerTest, ResetDiscardsAllCounts)
{
    LuTestSuiteHeapTracker tracker;
    void* const block = s_malloc(100);
    tracker.Reset();
    EXPECT_EQ(getOperationCount(tracker), 0U);
    EXPECT_EQ(tracker.GetCurrentAlloc(), 0);
    EXPECT_EQ(tracker.GetCurrentMax(), 0);
    s_free(block);
    EXPECT_EQ(tracker.GetCurrentAlloc(), 0);
    EXPECT_EQ(tracker.GetFreeCount(), 1U);
}

TEST_F(LuTestSuiteHeapTrackerTest, DumpListsCountsAndLiveBlocksByNumber)
{
    LuTestSuiteHeapTracker tracker;
    void* const first = s_malloc(100);
    void* const second = s_malloc(200);
    void* const third = s_realloc(nullptr, 300);
    s_free(second);
    tracker.Deactivate();
    const std::wstring expected = LbFormat(L"CountMalloc 2\n"
                                           L"CountFree 1\n"
                                           L"CountRealloc 1\n"
                                           L"CurrentAlloc 400 Bytes\n"
                                           L"CurrentMax 600 Bytes\n"
                                           L"Active Allocations:\n"
                                           L"ID 0, Address 0x%p, Size 100 Bytes.\n"
                                           L"ID 2, Address 0x%p, Size 300 Bytes.\n",
                                           first, third);
    EXPECT_EQ(dump(tracker), expected);
    s_free(first);
    s_free(third);
}

TEST_F(LuTestSuiteHeapTrackerTest, NestedTrackersCountIndependently)
{
    LuTestSuiteHeapTracker outer;
    void* const first = s_malloc(100);
    {
        LuTestSuiteHeapTracker inner;
        void* const second = s_malloc(20);
        EXPECT_EQ(inner.GetCurrentAlloc(), 20);
        s_free(first);
        EXPECT_EQ(inner.GetCurrentAlloc(), 20);
        EXPECT_EQ(inner.GetFreeCount(), 1U);
        s_free(second);
    }
    void* const third = s_malloc(3);
    outer.Deactivate();
    EXPECT_EQ(outer.GetMallocCount(), 3U);
    EXPECT_EQ(outer.GetFreeCount(), 2U);
    EXPECT_EQ(outer.GetCurrentAlloc(), 3) << "continues without the other tracker, and does not count its memory";
    s_free(third);
}

TEST_F(LuTestSuiteHeapTrackerTest, MemoryOfOneTrackerIsInvisibleToAnother)
{
    constexpr std::size_t c_Count = 20'000;
    std::vector<void*> blocks(c_Count);
    LuTestSuiteHeapTracker first;
    LuTestSuiteHeapTracker second;
    for (void*& block : blocks)
    {
        block = s_malloc(16);
    }
    first.Deactivate();
    second.Deactivate();
    EXPECT_EQ(first.GetMallocCount(), c_Count);
    EXPECT_EQ(second.GetMallocCount(), c_Count);
    EXPECT_EQ(first.GetCurrentAlloc(), static_cast<std::int64_t>(16 * c_Count));
    EXPECT_TRUE(isConsistent(first));
    for (void* const block : blocks)
    {
        s_free(block);
    }
}

TEST_F(LuTestSuiteHeapTrackerTest, UnhookAllRestoresTheFunctionsUntilTheNextInitialize)
{
    LuTestSuiteHeapTracker tracker;
    LuTestSuiteHeapTracker::UnhookAll();
    s_free(s_malloc(100));
    EXPECT_EQ(getOperationCount(tracker), 0U);
    const LuTestSuiteHeapTracker another;
    s_free(s_malloc(100));
    EXPECT_EQ(getOperationCount(tracker), 2U);
    EXPECT_EQ(getOperationCount(another), 2U);
}

TEST_F(LuTestSuiteHeapTrackerTest, TrackersMayEndInAnyOrder)
{
    std::optional<LuTestSuiteHeapTracker> trackers[4];
    for (std::optional<LuTestSuiteHeapTracker>& tracker : trackers)
    {
        tracker.emplace();
    }
    trackers[0].reset();
    s_free(s_malloc(1));
    trackers[2].reset();
    s_free(s_malloc(1));
    trackers[3].reset();
    s_free(s_malloc(1));
    trackers[1]->Deactivate();
    EXPECT_EQ(trackers[1]->GetMallocCount(), 3U);
    EXPECT_EQ(trackers[1]->GetFreeCount(), 3U);
}

TEST_F(LuTestSuiteHeapTrackerTest, SecondInitializationOnlyResetsTheCounts)
{
    LuTestSuiteHeapTracker tracker;
    void* const block = s_malloc(100);
    tracker.Initialize();
    const std::int64_t afterwards = tracker.GetCurrentAlloc();
    s_free(s_malloc(10));
    tracker.Deactivate();
    EXPECT_EQ(afterwards, 0);
    EXPECT_EQ(tracker.GetMallocCount(), 1U) << "registered once";
    s_free(block);
}

TEST_F(LuTestSuiteHeapTrackerTest, TwoAllocationsAtOneAddressAreCountedTogether)
{
    LuTestSuiteHeapTracker tracker;
    void* const first = s_malloc(100);
    tracker.Deactivate();
    s_free(first);
    tracker.Activate();
    // The C library reuses a freed block sooner or later.
    std::vector<void*> others;
    tracker.Deactivate();
    others.reserve(1000);
    void* second = nullptr;
    while (second != first && others.size() < others.capacity())
    {
        tracker.Activate();
        second = s_malloc(100);
        tracker.Deactivate();
        if (second != first)
        {
            others.push_back(second);
        }
    }
    ASSERT_EQ(second, first);
    const auto othersSize = static_cast<std::int64_t>(others.size() * 100);
    const std::wstring both = LbFormat(L"ID %d, Address 0x%p, Size 200 Bytes.\n", int(others.size()) + 1, second);
    EXPECT_EQ(tracker.GetCurrentAlloc(), othersSize + 200);
    EXPECT_NE(dump(tracker).find(both), std::wstring::npos) << "the later number with both sizes";
    tracker.Activate();
    s_free(second);
    tracker.Deactivate();
    EXPECT_EQ(tracker.GetCurrentAlloc(), othersSize + 200) << "one allocation is still outstanding";
    EXPECT_TRUE(isConsistent(tracker));
    for (void* const block : others)
    {
        s_free(block);
    }
}
