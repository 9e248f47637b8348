#include "base/lbtimer.h"

#include <chrono>
#include <cstdint>

#include <gtest/gtest.h>

namespace
{

using Clock = std::chrono::steady_clock;

std::uint64_t GetNanoseconds(Clock::duration duration)
{
    return static_cast<std::uint64_t>(std::chrono::duration_cast<std::chrono::nanoseconds>(duration).count());
}

void spendTwoMilliseconds()
{
    const Clock::time_point start = Clock::now();
    while (Clock::now() - start < std::chrono::milliseconds(2))
    {
    }
}

/// Expects that a timer with this resolution counts whole units of `unit` nanoseconds.
void expectUnits(LbTimer::EResolution resolution, std::uint64_t unit)
{
    const Clock::time_point before = Clock::now();
    const LbTimer timer(resolution);
    const Clock::time_point started = Clock::now();
    spendTwoMilliseconds();
    const Clock::time_point stopped = Clock::now();
    const std::uint64_t elapsed = timer.GetElapsed();

    EXPECT_GE(elapsed, GetNanoseconds(stopped - started) / unit);
    EXPECT_LE(elapsed, GetNanoseconds(Clock::now() - before) / unit);
}

TEST(LbTimer, CountsNanoseconds)
{
    expectUnits(LbTimer::eR_NanoSecond, 1);
}

TEST(LbTimer, CountsMilliseconds)
{
    expectUnits(LbTimer::eR_MilliSecond, 1'000'000);
}

TEST(LbTimer, CountsSeconds)
{
    expectUnits(LbTimer::eR_Second, 1'000'000'000);
}

TEST(LbTimer, NeverRunsBackwards)
{
    const LbTimer timer(LbTimer::eR_NanoSecond);
    std::uint64_t former = 0;
    for (int round = 0; round < 1000; ++round)
    {
        const std::uint64_t elapsed = timer.GetElapsed();
        EXPECT_GE(elapsed, former);
        former = elapsed;
    }
}

TEST(LbTimer, RestartsAtZero)
{
    LbTimer timer(LbTimer::eR_NanoSecond);
    spendTwoMilliseconds();
    const Clock::time_point before = Clock::now();

    timer.Restart();
    const std::uint64_t elapsed = timer.GetElapsed();

    EXPECT_LE(elapsed, GetNanoseconds(Clock::now() - before));
}

} // namespace
