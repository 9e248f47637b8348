#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdlib>
#include <cstring>
#include <random>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "base/lbfilesystem.h"
#include "base/os/platform.h"
#include "tests/lutestsuite/heap/heaptrackertest.h"
#include "tests/support/os/testaids.h"

namespace
{

/// A flag to wait for. It does not use locks of the C library, because their first use may allocate.
class CFlag
{
public:
    void Set() { m_isSet = true; }
    void Wait() const
    {
        while (!m_isSet)
        {
            std::this_thread::yield();
        }
    }

private:
    std::atomic<bool> m_isSet = false;
};

class LuTestSuiteHeapTrackerThreads : public LuTestSuiteHeapTrackerTest
{
};

/// Allocates, resizes, fills, checks and frees until it is stopped.
class CAllocatingThread
{
public:
    explicit CAllocatingThread(unsigned seed) : m_thread([this, seed] { run(seed); }) {}

    /// Ends the thread and returns the number of blocks whose content was lost.
    int End()
    {
        m_isDone = true;
        m_thread.join();
        return m_lostCount;
    }

private:
    void run(unsigned seed)
    {
        std::mt19937 random(seed);
        while (!m_isDone)
        {
            const auto mark = static_cast<int>(random() % 256);
            std::size_t size = random() % 3000 + 1;
            auto* block = static_cast<unsigned char*>(s_malloc(size));
            std::memset(block, mark, size);
            const std::size_t newSize = random() % 3000 + 1;
            block = static_cast<unsigned char*>(s_realloc(block, newSize));
            size = std::min(size, newSize);
            m_lostCount += block[0] == mark && block[size - 1] == mark ? 0 : 1;
            s_free(block);
        }
    }

    std::atomic<bool> m_isDone = false;
    int m_lostCount = 0;
    std::thread m_thread;
};

} // namespace

TEST_F(LuTestSuiteHeapTrackerThreads, RepeatedPatchingUnderLoadCorruptsNoBlock)
{
    std::atomic<bool> isDone = false;
    std::atomic<bool> isLoaded = true;
    // This thread repeatedly takes the loader's lock, and starts and ends threads.
    std::thread loader([&] {
        const std::wstring path =
            LbFileSystem::GetDirectory(LbFileSystem::eDK_Executable) + L"emptymodule" + LbOs::c_ModuleSuffix;
        while (!isDone)
        {
            isLoaded = LbOs::LoadAndUnloadModule(path) && isLoaded;
            std::thread([] { s_free(s_malloc(100)); }).join();
        }
    });
    CAllocatingThread threads[] = {CAllocatingThread(1), CAllocatingThread(2), CAllocatingThread(3),
                                   CAllocatingThread(4)};
    constexpr int c_Cycles = 2000;
    int cycles = 0;
    int hooked = 0;
    // A time limit, because stopping the threads for a patch takes up to a hundred times as long under Wine.
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(30);
    for (; cycles < c_Cycles && (cycles < c_Cycles / 10 || std::chrono::steady_clock::now() < end); ++cycles)
    {
        const LuTestSuiteHeapTracker tracker;
        const std::uint64_t before = tracker.GetMallocCount();
        s_free(s_malloc(1));
        hooked += tracker.GetMallocCount() > before ? 1 : 0;
        LuTestSuiteHeapTracker::UnhookAll();
    }
    isDone = true;
    loader.join();
    EXPECT_TRUE(isLoaded);
    EXPECT_EQ(hooked, cycles);
    for (CAllocatingThread& thread : threads)
    {
        EXPECT_EQ(thread.End(), 0);
    }
}

TEST_F(LuTestSuiteHeapTrackerThreads, ForkedChildrenAllocateAndCountOnTheirOwn)
{
    if (!LbOs::RunInFork([] { return 0; }))
    {
        GTEST_SKIP() << "processes do not fork here";
    }
    CAllocatingThread threads[] = {CAllocatingThread(1), CAllocatingThread(2)};
    LuTestSuiteHeapTracker tracker;
    const auto child = [&tracker] {
        const std::uint64_t before = tracker.GetMallocCount();
        s_free(s_malloc(100));
        return tracker.GetMallocCount() - before == 1 ? 0 : 1;
    };
    for (int round = 0; round < 100; ++round)
    {
        EXPECT_EQ(LbOs::RunInFork(child), 0) << "round " << round;
    }
    tracker.Deactivate();
    EXPECT_EQ(threads[0].End() + threads[1].End(), 0);
}

TEST_F(LuTestSuiteHeapTrackerThreads, ForksDoNotWaitForThreadsThatAllocateWhileTheyFlush)
{
    if (!LbOs::CallWhileFlushing([] {}))
    {
        GTEST_SKIP() << "streams have no callbacks here";
    }
    const LuTestSuiteHeapTracker tracker;
    std::atomic<bool> isDone = false;
    std::thread flusher([&isDone] {
        while (!isDone)
        {
            LbOs::CallWhileFlushing([] {
                for (int count = 0; count < 50; ++count)
                {
                    s_free(s_malloc(100));
                }
            });
        }
    });
    for (int round = 0; round < 100; ++round)
    {
        EXPECT_EQ(LbOs::RunInFork([] { return 0; }), 0) << "round " << round;
    }
    isDone = true;
    flusher.join();
}

TEST_F(LuTestSuiteHeapTrackerThreads, HeapMayBeLockedByAThreadThatAllocates)
{
    if (LbOs::c_PathSeparator == L'/')
    {
        GTEST_SKIP() << "programs cannot lock the heap here";
    }
    LuTestSuiteHeapTracker tracker;
    CAllocatingThread threads[] = {CAllocatingThread(1), CAllocatingThread(2)};
    for (int round = 0; round < 2000; ++round)
    {
        LbOs::LockHeap();
        std::this_thread::yield();
        s_free(s_malloc(10));
        LbOs::UnlockHeap();
    }
    EXPECT_EQ(threads[0].End() + threads[1].End(), 0);
    EXPECT_GE(tracker.GetMallocCount(), 2000U);
}

TEST_F(LuTestSuiteHeapTrackerThreads, NoOperationIsLostDuringForks)
{
    if (!LbOs::RunInFork([] { return 0; }))
    {
        GTEST_SKIP() << "processes do not fork here";
    }
    std::atomic<bool> isDone = false;
    std::atomic<bool> isCounting = false;
    std::atomic<bool> hasCounted = false;
    std::uint64_t rounds = 0;
    std::thread thread([&] {
        while (!isCounting)
        {
            std::this_thread::yield();
        }
        for (; !isDone; ++rounds)
        {
            s_free(s_realloc(s_malloc(16), 32));
        }
        hasCounted = true;
        while (isCounting)
        {
            std::this_thread::yield();
        }
    });
    LuTestSuiteHeapTracker tracker;
    void* const kept = s_malloc(10);
    const auto child = [] { return 0; };
    const std::uint64_t before = tracker.GetMallocCount();
    isCounting = true;
    int failures = 0;
    for (int round = 0; round < 50; ++round)
    {
        failures += LbOs::RunInFork(child) == 0 ? 0 : 1;
    }
    isDone = true;
    while (!hasCounted)
    {
        std::this_thread::yield();
    }
    tracker.Deactivate();
    isCounting = false;
    thread.join();
    EXPECT_EQ(failures, 0);
    EXPECT_EQ(tracker.GetReallocCount(), rounds);
    EXPECT_GE(tracker.GetMallocCount() - before, rounds);
    EXPECT_EQ(tracker.GetCurrentAlloc(), 10);
    s_free(kept);
}

TEST_F(LuTestSuiteHeapTrackerThreads, ThreadsThatFreeTheirBlocksLeaveNoBytes)
{
    constexpr int c_ThreadCount = 4;
    constexpr int c_Rounds = 20'000;
    CFlag start;
    CFlag allDone;
    // Keeps the threads alive: ending threads free memory that the C library kept for them.
    CFlag mayEnd;
    std::atomic<int> running = c_ThreadCount;
    std::atomic<int> startedCount = 0;
    std::vector<std::thread> threads;
    for (int index = 0; index < c_ThreadCount; ++index)
    {
        threads.emplace_back([&] {
            ++startedCount;
            start.Wait();
            for (int round = 0; round < c_Rounds; ++round)
            {
                s_free(s_realloc(s_malloc(16), 32));
            }
            if (--running == 0)
            {
                allDone.Set();
            }
            mayEnd.Wait();
        });
    }
    while (startedCount < c_ThreadCount)
    {
        std::this_thread::yield();
    }
    LuTestSuiteHeapTracker tracker;
    start.Set();
    allDone.Wait();
    tracker.Deactivate();
    mayEnd.Set();
    for (std::thread& thread : threads)
    {
        thread.join();
    }
    EXPECT_EQ(tracker.GetMallocCount(), std::uint64_t{c_ThreadCount} * c_Rounds);
    EXPECT_EQ(tracker.GetReallocCount(), std::uint64_t{c_ThreadCount} * c_Rounds);
    EXPECT_EQ(tracker.GetFreeCount(), std::uint64_t{c_ThreadCount} * c_Rounds);
    EXPECT_EQ(tracker.GetCurrentAlloc(), 0);
}

TEST_F(LuTestSuiteHeapTrackerThreads, BlockFreedByAnotherThreadIsCountedAsFreed)
{
    std::atomic<void*> block = nullptr;
    CFlag handedOver;
    CFlag freed;
    CFlag mayEnd;
    CFlag started;
    std::thread thread([&] {
        started.Set();
        handedOver.Wait();
        s_free(block);
        freed.Set();
        mayEnd.Wait();
    });
    started.Wait();
    LuTestSuiteHeapTracker tracker;
    block = s_malloc(1234);
    const std::int64_t before = tracker.GetCurrentAlloc();
    handedOver.Set();
    freed.Wait();
    tracker.Deactivate();
    mayEnd.Set();
    thread.join();
    EXPECT_EQ(before, 1234);
    EXPECT_EQ(tracker.GetCurrentAlloc(), 0);
    EXPECT_EQ(tracker.GetMallocCount(), 1U);
    EXPECT_EQ(tracker.GetFreeCount(), 1U);
}

TEST_F(LuTestSuiteHeapTrackerThreads, EndedThreadLeavesOnlyItsLeak)
{
    const auto leak = [](void*& block) { block = s_malloc(16); };
    void* block = nullptr;
    // The C library keeps some memory of the first thread for the next one.
    std::thread([] {}).join();
    LuTestSuiteHeapTracker tracker;
    std::thread(leak, std::ref(block)).join();
    tracker.Deactivate();
    EXPECT_EQ(tracker.GetCurrentAlloc(), 16);
    s_free(block);
}
