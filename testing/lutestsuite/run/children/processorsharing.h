/// Decides when a parent and its child process share a processor.
#pragma once

#include <cstdint>

namespace LuTestSuiteRun
{

/// Decides whether parent and child share a processor for the next request. Sharing needs some system calls, so it
/// begins only after several short cases in a row whose answers were slow because an idle processor had to wake up.
/// After sc_uiInARow requests, sharing ends, to check whether it is still useful.
class CProcessorSharing
{
public:
    bool IsNext() const { return m_left > 0; }

    /// Updates the decision with the duration of the last request.
    void Record(std::uint64_t nanoseconds);

    /// Forgets all answers, for the next child.
    void Forget() { m_left = m_slow = 0; }

    static constexpr std::uint64_t sc_uiQuick = 25'000; ///< an answer within this time needed no wake-up, nanoseconds
    static constexpr std::uint64_t sc_uiLong = 200'000; ///< after this time, the case itself takes long, nanoseconds
    static constexpr std::uint32_t sc_uiInARow = 255;

    /// Number of slow answers in a row after which sharing begins. If parent and child poll (CBriefWatch), only the
    /// first answer of a child is slow.
    static constexpr std::uint32_t sc_uiSlow = 4;

private:
    std::uint32_t m_left = 0;
    std::uint32_t m_slow = 0; ///< slow answers in a row
};

} // namespace LuTestSuiteRun
