/// Polls briefly for a change that another process makes.
#pragma once

#include <algorithm>
#include <cstdint>

#include "base/lbtimer.h"

namespace LuTestSuiteRun
{

/// Polls for a change for a short time before the caller sleeps, because waking a sleeping thread takes longer than a
/// short case. If a change takes too long, the next calls return at once without polling. Used by one thread.
class CBriefWatch
{
public:
    /// True as soon as `isDone` returns true; false if that takes too long, or if this call does not poll.
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
        // If the system has suspended this thread meanwhile, the thread may see the change only after the limit.
        record(isSeen && timer.GetElapsed() < sc_uiLongest);
        return isSeen;
    }

    static constexpr std::uint64_t sc_uiLongest = 100'000; ///< maximum duration of a call, nanoseconds
    static constexpr std::uint32_t sc_uiLongestPause = 255;

private:
    void record(bool isInTime)
    {
        m_pause = isInTime ? 0 : m_nextPause;
        m_nextPause = isInTime ? 0 : std::min(2 * m_nextPause + 1, sc_uiLongestPause);
    }

    std::uint32_t m_pause = 1; ///< number of next calls that do not poll; 1 because the first request waits for the
                               ///< start of a process
    std::uint32_t m_nextPause = 0;
};

} // namespace LuTestSuiteRun
