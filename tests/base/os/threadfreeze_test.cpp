#include "base/os/threadfreeze.h"

#include <atomic>
#include <thread>

#include <gtest/gtest.h>

#include "base/lbtimer.h"
#include "base/os/heapfunctions.h"
#include "tests/support/os/testaids.h"

namespace
{

/// Skipped with sanitizers, because they delay signals.
class OsThreadFreeze : public testing::Test
{
protected:
    void SetUp() override
    {
        if (LbOs::GetHeapFunctions().malloc == nullptr)
        {
            GTEST_SKIP() << "a sanitizer delays signals";
        }
    }
    ~OsThreadFreeze() override
    {
        m_isDone = true;
        m_thread.join();
    }

    /// Freezes the other thread for a moment and waits until it has continued. True if it did nothing while frozen.
    bool isStopped()
    {
        LbOs::CThreadFreezer threads;
        if (!threads.Freeze(2000))
        {
            return false;
        }
        const std::uint64_t before = m_steps;
        for (int round = 0; round < 1000; ++round)
        {
            std::this_thread::yield();
        }
        const bool isStill = m_steps == before;
        threads.Thaw();
        while (m_steps == before)
        {
            std::this_thread::yield();
        }
        return isStill;
    }

    std::atomic<bool> m_isDone = false;
    std::atomic<std::uint64_t> m_steps = 0;
    std::thread m_thread{[this] {
        while (!m_isDone)
        {
            ++m_steps;
        }
    }};
};

TEST_F(OsThreadFreeze, StopsAndReleasesAnotherThread)
{
    EXPECT_TRUE(isStopped());
    EXPECT_TRUE(isStopped());
}

TEST_F(OsThreadFreeze, FailsWhileSignalsAreForbiddenAndSucceedsLater)
{
    if (!LbOs::SetSignalsForbidden(true))
    {
        GTEST_SKIP() << "signals exist only on Linux";
    }
    {
        LbOs::CThreadFreezer threads;
        EXPECT_FALSE(threads.Freeze(30));
        EXPECT_EQ(threads.GetCount(), 0U);
    }
    ASSERT_TRUE(LbOs::SetSignalsForbidden(false));
    EXPECT_TRUE(isStopped());
}

TEST_F(OsThreadFreeze, ChoosesAnotherSignalIfItsOwnIsTaken)
{
    EXPECT_TRUE(isStopped());
    if (!LbOs::ResetRealTimeSignals())
    {
        GTEST_SKIP() << "signals exist only on Linux";
    }
    EXPECT_TRUE(isStopped());
}

TEST_F(OsThreadFreeze, KeepsItsTimeOutDespiteInterruptions)
{
    if (!LbOs::SetSignalsForbidden(true))
    {
        GTEST_SKIP() << "signals exist only on Linux";
    }
    ASSERT_TRUE(LbOs::SetInterruptedOften(true));
    const LbTimer timer(LbTimer::eR_MilliSecond);
    {
        LbOs::CThreadFreezer threads;
        EXPECT_FALSE(threads.Freeze(300));
    }
    EXPECT_GE(timer.GetElapsed(), 299U);
    LbOs::SetInterruptedOften(false);
    ASSERT_TRUE(LbOs::SetSignalsForbidden(false));
}

TEST_F(OsThreadFreeze, RetriesUntilTheSystemAcceptsSignals)
{
    if (!LbOs::SetSignalsForbidden(true))
    {
        GTEST_SKIP() << "signals exist only on Linux";
    }
    std::thread helper([this] {
        const std::uint64_t begin = m_steps;
        while (m_steps - begin < 10'000'000)
        {
            std::this_thread::yield();
        }
        LbOs::SetSignalsForbidden(false);
    });
    {
        LbOs::CThreadFreezer threads;
        EXPECT_TRUE(threads.Freeze(60'000));
    }
    helper.join();
}

} // namespace
