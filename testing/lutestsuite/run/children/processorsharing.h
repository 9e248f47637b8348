/// When a parent and its child process share a processor.
#pragma once

#include <cstdint>

namespace LuTestSuiteRun
{

/// Decides whether parent and child share a processor for the next request. Sharing costs some system calls, so it is
/// used only if several short answers in a row take long because an idle processor had to wake up. From time to time
/// requests do not share, to check that again.
class CProcessorSharing
{
public:
    bool IsNext() const { return m_left > 0; }

    /// Updates the decision with the time of the last request.
    void Record(std::uint64_t nanoseconds);

    /// Forgets all answers, for the next child.
    void Forget() { m_left = m_slow = 0; }

    static constexpr std::uint64_t sc_uiQuick = 25'000; ///< at most this long: no processor had to wake up
    static constexpr std::uint64_t sc_uiLong = 200'000; ///< at least this long: the case itself takes long
    static constexpr std::uint32_t sc_uiInARow = 255;

    /// Slow answers in a row that start sharing. If parent and child watch, only the first answer of a child is slow.
    static constexpr std::uint32_t sc_uiSlow = 4;

private:
    std::uint32_t m_left = 0;
    std::uint32_t m_slow = 0; ///< slow answers in a row
};

} // namespace LuTestSuiteRun
