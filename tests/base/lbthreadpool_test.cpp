#include "base/lbthreadpool.h"

#include <atomic>
#include <cstdlib>
#include <memory>
#include <stdexcept>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "base/lbevent.h"
#include "tests/support/latch.h"

namespace
{

/// Blocks all but `free` threads of the pool during a scope.
class CBusyPool : public INonCopyable
{
public:
    explicit CBusyPool(unsigned free = 0) : m_started(LbThreadPool::GetInstance().GetThreadCount() - free)
    {
        LbThreadPool& pool = LbThreadPool::GetInstance();
        for (unsigned i = free; i < pool.GetThreadCount(); ++i)
        {
            m_tasks.push_back(pool.Run([this] {
                m_started.CountDown();
                m_end.Wait();
            }));
        }
        m_started.Wait();
    }

    ~CBusyPool()
    {
        m_end.CountDown();
        for (const LbThreadPool::CTask& task : m_tasks)
        {
            task.Wait();
        }
    }

private:
    Latch m_started;
    Latch m_end{1};
    std::vector<LbThreadPool::CTask> m_tasks;
};

} // namespace

TEST(LbThreadPool, HasAtLeastOneThreadPerProcessor)
{
    EXPECT_GE(LbThreadPool::GetInstance().GetThreadCount(), 1U);
    EXPECT_GE(LbThreadPool::GetInstance().GetThreadCount(), std::thread::hardware_concurrency());
}

TEST(LbThreadPool, RunsATaskOnAnotherThread)
{
    std::thread::id taskThread;
    LbThreadPool::GetInstance().Run([&taskThread] { taskThread = std::this_thread::get_id(); }).Wait();
    EXPECT_NE(taskThread, std::thread::id());
    EXPECT_NE(taskThread, std::this_thread::get_id());
}

TEST(LbThreadPool, RunsAsManyTasksAtOnceAsItHasThreads)
{
    const CBusyPool busy;
    SUCCEED() << "returns only if all threads run a task at the same time";
}

TEST(LbThreadPool, StartsTasksInOrderOfSubmission)
{
    LbThreadPool& pool = LbThreadPool::GetInstance();
    const CBusyPool busy(1);
    // Only one thread is free, so tasks run one after another and record the order in which they start.
    LbEvent goOn;
    pool.Run([&goOn] { goOn.Wait(); });
    std::vector<int> order;
    std::vector<int> expected;
    LbThreadPool::CTask last;
    for (int i = 0; i < 100; ++i)
    {
        expected.push_back(i);
        last = pool.Run([i, &order] { order.push_back(i); });
    }
    goOn.Set();
    last.Wait();
    EXPECT_EQ(order, expected);
}

TEST(LbThreadPool, PassesATasksExceptionToEachWaiter)
{
    const LbThreadPool::CTask task = LbThreadPool::GetInstance().Run([] { throw std::runtime_error("task"); });
    const LbThreadPool::CTask copy = task;
    EXPECT_THROW(task.Wait(), std::runtime_error);
    EXPECT_THROW(copy.Wait(), std::runtime_error);
}

TEST(LbThreadPool, RunsFurtherTasksAfterAnException)
{
    EXPECT_THROW(LbThreadPool::GetInstance().Run([] { throw 1; }).Wait(), int);
    bool hasRun = false;
    LbThreadPool::GetInstance().Run([&hasRun] { hasRun = true; }).Wait();
    EXPECT_TRUE(hasRun);
}

TEST(LbThreadPool, ReleasesATasksCapturesBeforeWaitReturns)
{
    auto captured = std::make_shared<int>(1);
    const LbThreadPool::CTask task = LbThreadPool::GetInstance().Run([captured] { static_cast<void>(captured); });
    task.Wait();
    EXPECT_EQ(captured.use_count(), 1);
}

TEST(LbThreadPool, WaitReturnsAtOnceWithoutATask)
{
    const LbThreadPool::CTask task;
    task.Wait();
    EXPECT_FALSE(task.Cancel());
}

TEST(LbThreadPool, LetsATaskWaitForAnotherWhileAllThreadsAreBusy)
{
    LbThreadPool& pool = LbThreadPool::GetInstance();
    const unsigned count = pool.GetThreadCount();
    Latch started(count);
    std::atomic<unsigned> innerCount = 0;
    std::vector<LbThreadPool::CTask> tasks;
    for (unsigned i = 0; i < count; ++i)
    {
        tasks.push_back(pool.Run([&pool, &started, &innerCount] {
            started.ArriveAndWait();
            pool.Run([&innerCount] { ++innerCount; }).Wait();
        }));
    }
    for (const LbThreadPool::CTask& task : tasks)
    {
        task.Wait();
    }
    EXPECT_EQ(innerCount, count);
}

TEST(LbThreadPool, NeverRunsACancelledTask)
{
    bool hasRun = false;
    {
        const CBusyPool busy;
        const LbThreadPool::CTask task = LbThreadPool::GetInstance().Run([&hasRun] { hasRun = true; });
        EXPECT_TRUE(task.Cancel());
        EXPECT_FALSE(task.Cancel());
        task.Wait();
    }
    LbThreadPool::Shutdown();
    EXPECT_FALSE(hasRun);
}

TEST(LbThreadPool, DoesNotCancelAStartedTask)
{
    LbEvent started;
    LbEvent goOn;
    const LbThreadPool::CTask task = LbThreadPool::GetInstance().Run([&started, &goOn] {
        started.Set();
        goOn.Wait();
    });
    started.Wait();
    EXPECT_FALSE(task.Cancel());
    goOn.Set();
    task.Wait();
    EXPECT_FALSE(task.Cancel());
}

TEST(LbThreadPool, ExistsFromItsFirstUseToItsShutdown)
{
    LbThreadPool::Shutdown();
    EXPECT_FALSE(LbThreadPool::Exists());
    LbThreadPool::GetInstance();
    EXPECT_TRUE(LbThreadPool::Exists());
    LbThreadPool::Shutdown();
    EXPECT_FALSE(LbThreadPool::Exists());
}

TEST(LbThreadPool, ShutdownDoesNotCreateAPool)
{
    LbThreadPool::Shutdown();
    LbThreadPool::Shutdown();
    EXPECT_FALSE(LbThreadPool::Exists());
}

TEST(LbThreadPool, ShutdownCompletesAllTasks)
{
    constexpr int taskCount = 500;
    std::atomic<int> endedCount = 0;
    for (int i = 0; i < taskCount; ++i)
    {
        LbThreadPool::GetInstance().Run([&endedCount] { ++endedCount; });
    }
    LbThreadPool::Shutdown();
    EXPECT_EQ(endedCount, taskCount);
}

TEST(LbThreadPool, ShutdownRunsTasksSubmittedByTasks)
{
    LbEvent goOn;
    std::atomic<int> endedCount = 0;
    LbThreadPool::GetInstance().Run([&goOn, &endedCount] {
        goOn.Wait();
        for (int i = 0; i < 20; ++i)
        {
            LbThreadPool::GetInstance().Run([&endedCount] { ++endedCount; });
        }
    });
    std::jthread shutdown([] { LbThreadPool::Shutdown(); });
    goOn.Set();
    shutdown.join();
    EXPECT_EQ(endedCount, 20);
    EXPECT_FALSE(LbThreadPool::Exists());
}

TEST(LbThreadPool, IsCreatedAgainAfterAShutdown)
{
    for (int i = 0; i < 10; ++i)
    {
        bool hasRun = false;
        LbThreadPool::GetInstance().Run([&hasRun] { hasRun = true; }).Wait();
        LbThreadPool::Shutdown();
        EXPECT_TRUE(hasRun);
    }
}

TEST(LbThreadPool, AcceptsTasksFromManyThreads)
{
    std::atomic<int> endedCount = 0;
    {
        std::vector<std::jthread> threads;
        for (int i = 0; i < 4; ++i)
        {
            threads.emplace_back([&endedCount] {
                for (int k = 0; k < 100; ++k)
                {
                    LbThreadPool::GetInstance().Run([&endedCount] { ++endedCount; }).Wait();
                }
            });
        }
    }
    EXPECT_EQ(endedCount, 400);
}

TEST(LbThreadPoolDeathTest, ProcessExitsWhileTasksRun)
{
    testing::GTEST_FLAG(death_test_style) = "threadsafe";
    EXPECT_EXIT(
        {
            const CBusyPool* const busy = new CBusyPool;
            std::exit(busy == nullptr ? 1 : 7);
        },
        testing::ExitedWithCode(7), "");
}
