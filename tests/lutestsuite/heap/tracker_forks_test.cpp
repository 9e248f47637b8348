#include <atomic>
#include <cstring>
#include <optional>
#include <thread>

#include "tests/lutestsuite/heap/heaptrackertest.h"
#include "tests/support/os/testaids.h"

namespace
{

/// Tests of processes that fork while threads use trackers.
class LuTestSuiteHeapTrackerForkThreads : public LuTestSuiteHeapTrackerTest
{
protected:
    void SetUp() override
    {
        LuTestSuiteHeapTrackerTest::SetUp();
        if (!IsSkipped() && !LbOs::RunInFork([] { return 0; }))
        {
            GTEST_SKIP() << "processes do not fork here";
        }
    }
};

/// A thread that calls `function` repeatedly until the object is destroyed.
template<typename F>
class CRepeatingThread
{
public:
    explicit CRepeatingThread(const F& function)
        : m_thread([this, function] {
              while (!m_isDone)
              {
                  function();
                  m_hasCalled = true;
              }
          })
    {
        while (!m_hasCalled)
        {
            std::this_thread::yield();
        }
    }
    ~CRepeatingThread()
    {
        m_isDone = true;
        m_thread.join();
    }

private:
    std::atomic<bool> m_isDone = false;
    std::atomic<bool> m_hasCalled = false;
    std::thread m_thread;
};

void allocateOnUsedStack()
{
    volatile char stack[4000];
    std::memset(const_cast<char*>(stack), 0x5A, sizeof(stack));
    for (int count = 0; count < 100; ++count)
    {
        s_free(s_realloc(s_malloc(5), 50));
    }
}

/// 0 if a tracker created here counts correctly.
int countOnce()
{
    LuTestSuiteHeapTracker tracker;
    s_free(s_malloc(100));
    tracker.Deactivate();
    return getOperationCount(tracker) == 2 && tracker.GetCurrentAlloc() == 0 ? 0 : 1;
}

} // namespace

TEST_F(LuTestSuiteHeapTrackerForkThreads, ChildMayReuseStacksThatHeldTrackersOfItsParent)
{
    std::atomic<bool> isMade = false;
    std::atomic<bool> isDone = false;
    std::thread thread([&] {
        const LuTestSuiteHeapTracker tracker;
        isMade = true;
        while (!isDone)
        {
            std::this_thread::yield();
        }
    });
    while (!isMade)
    {
        std::this_thread::yield();
    }
    LuTestSuiteHeapTracker own;
    const auto child = [&own] {
        std::thread(allocateOnUsedStack).join();
        own.Reset();
        std::thread(allocateOnUsedStack).join();
        return own.GetReallocCount() == 100 ? countOnce() : 2;
    };
    for (int round = 0; round < 20; ++round)
    {
        EXPECT_EQ(LbOs::RunInFork(child), 0) << "round " << round;
    }
    own.Deactivate();
    isDone = true;
    thread.join();
}

TEST_F(LuTestSuiteHeapTrackerForkThreads, TrackerOfAnotherThreadCountsInAChildOnceInitializedThere)
{
    std::optional<LuTestSuiteHeapTracker> tracker(std::in_place);
    std::optional<int> status;
    const auto child = [&tracker] {
        tracker->Reset();
        s_free(s_malloc(100));
        const std::uint64_t before = getOperationCount(*tracker);
        tracker->Initialize();
        s_free(s_malloc(100));
        const std::uint64_t after = getOperationCount(*tracker);
        tracker.reset();
        s_free(s_malloc(100));
        return before == 0 && after == 2 ? countOnce() : 2;
    };
    const auto destroy = [&tracker] {
        tracker.reset();
        return countOnce();
    };
    std::thread([&] { status = LbOs::RunInFork(child); }).join();
    EXPECT_EQ(status, 0);
    std::thread([&] { status = LbOs::RunInFork(destroy); }).join();
    EXPECT_EQ(status, 0);
    tracker->Reset();
    s_free(s_malloc(100));
    tracker->Deactivate();
    EXPECT_EQ(getOperationCount(*tracker), 2U) << "counting continues in the parent";
}

// Tests the first tracker of a process, so each round has its own process.
TEST_F(LuTestSuiteHeapTrackerForkThreads, ForksDuringTheFirstInitializationLeaveAWorkingTrackerInTheChild)
{
    const auto process = [] {
        std::atomic<bool> hasBegun = false;
        std::atomic<bool> isMade = false;
        std::thread thread([&] {
            hasBegun = true;
            const LuTestSuiteHeapTracker tracker;
            isMade = true;
        });
        while (!hasBegun)
        {
        }
        int failures = 0;
        do
        {
            failures += LbOs::RunInFork(countOnce) == 0 ? 0 : 1;
        }
        while (!isMade);
        thread.join();
        return failures;
    };
    LuTestSuiteHeapTracker::UnhookAll();
    for (int round = 0; round < 50; ++round)
    {
        ASSERT_EQ(LbOs::RunInFork(process), 0) << "round " << round;
    }
}

TEST_F(LuTestSuiteHeapTrackerForkThreads, ThreadsCreateAndDestroyTrackersDuringForks)
{
    const auto make = [] {
        const LuTestSuiteHeapTracker outer;
        const LuTestSuiteHeapTracker inner;
        s_free(s_malloc(100));
    };
    const auto child = [] {
        int result = 1;
        std::thread([&result] {
            allocateOnUsedStack();
            result = countOnce();
        }).join();
        return result + countOnce();
    };
    const CRepeatingThread unhooking([] { LuTestSuiteHeapTracker::UnhookAll(); });
    // These threads start last and use trackers, because the first thread of a child reuses the stack of the thread
    // that was started last.
    const CRepeatingThread first(make);
    const CRepeatingThread second(make);
    for (int round = 0; round < 100; ++round)
    {
        EXPECT_EQ(LbOs::RunInFork(child), 0) << "round " << round;
    }
}

TEST_F(LuTestSuiteHeapTrackerForkThreads, ChildMayHaveTheProcessIdOfItsParent)
{
    if (!LbOs::RunInForkWithSameId([] { return 0; }))
    {
        GTEST_SKIP() << "process id namespaces are not available here";
    }
    LuTestSuiteHeapTracker tracker;
    const auto child = [&tracker] {
        tracker.Reset();
        s_free(s_malloc(100));
        return getOperationCount(tracker) == 2 ? 0 : 1;
    };
    EXPECT_EQ(LbOs::RunInForkWithSameId(child), 0);
    tracker.Deactivate();
}

TEST_F(LuTestSuiteHeapTrackerForkThreads, ThreadWhoseCancellationIsPendingMayCreateTheFirstTracker)
{
    LuTestSuiteHeapTracker::UnhookAll();
    const auto process = [] {
        int result = 1;
        const bool isBack = LbOs::CallCanceled([&result] {
            result = countOnce();
            LuTestSuiteHeapTracker::UnhookAll();
        });
        return isBack ? result : 2;
    };
    EXPECT_EQ(LbOs::RunInFork(process), 0);
}
