/// Elapsed time.
#pragma once

#include <chrono>
#include <cstdint>

/// Measures the time since its construction or the last Restart, on a monotonic clock. One thread at a time.
class LbTimer
{
public:
    enum EResolution
    {
        eR_NanoSecond,
        eR_MilliSecond,
        eR_Second
    };

    explicit LbTimer(EResolution resolution) : m_resolution(resolution), m_start(Clock::now()) {}

    void Restart() { m_start = Clock::now(); }

    /// Elapsed time in whole units of the timer's resolution, rounded down.
    std::uint64_t GetElapsed() const
    {
        const auto nanoseconds = static_cast<std::uint64_t>(
            std::chrono::duration_cast<std::chrono::nanoseconds>(Clock::now() - m_start).count());
        switch (m_resolution)
        {
        case eR_MilliSecond:
            return nanoseconds / 1'000'000U;
        case eR_Second:
            return nanoseconds / 1'000'000'000U;
        default:
            return nanoseconds;
        }
    }

private:
    using Clock = std::chrono::steady_clock;

    EResolution m_resolution;
    Clock::time_point m_start;
};
