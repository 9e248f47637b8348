/// Watches briefly for a change that another process makes.
#pragma once

#include <algorithm>
#include <cstdint>

#include "base/lbtimer.h"

namespace LuTestSuiteRun
{

/// Watches for a change for a short time before the caller sleeps: waking a sleeping thread takes longer than a short
/// case. If changes take too long, the next waits do not watch. Used by one thread.
class CBriefWatch
{
public:
    /// True as soon as `isDone` returns true; false if that takes too long, or if this wait does not watch.
    template<typename F>
    bool Watch(const F& isDone)
    {
        if (m_pause > 0)
        {
            --m_pause;
            return false;
        }
        const LbTimer timer(LbTimer::eR_NanoSecond);
        bool isSeen = isDone();
        while (!isSeen && timer.GetElapsed() < sc_uiLongest)
        {
            isSeen = isDone();
        }
        // A thread that had no processor meanwhile sees the change late.
        record(isSeen && timer.GetElapsed() < sc_uiLongest);
        return isSeen;
    }

    static constexpr std::uint64_t sc_uiLongest = 100'000; ///< nanoseconds of a watch
    static constexpr std::uint32_t sc_uiLongestPause = 255;

private:
    void record(bool isInTime)
    {
        m_pause = isInTime ? 0 : m_nextPause;
        m_nextPause = isInTime ? 0 : std::min(2 * m_nextPause + 1, sc_uiLongestPause);
    }

    std::uint32_t m_pause = 1; ///< next waits that do not watch; the first wait includes the start of a process
    std::uint32_t m_nextPause = 0;
};

} // namespace LuTestSuiteRun
