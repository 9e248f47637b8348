/// Finds out which children the kernel has killed for lack of memory.
#pragma once

#include <atomic>
#include <cstdint>

namespace LuTestSuiteRun
{

/// Assigns each kill to one ended child. The kernel only counts the processes that it kills for lack of memory, and
/// does not name them. Any thread.
class CMemoryKills
{
public:
    /// `count` returns the kernel's number of kills so far.
    explicit constexpr CMemoryKills(std::uint64_t (*count)()) : m_count(count) {}

    /// Ignores all kills up to now.
    void Forget() { m_taken = m_count(); }

    /// True if there was a kill that is not assigned to a child yet; assigns it to the caller's child.
    bool Take();

private:
    std::uint64_t (*m_count)();
    std::atomic<std::uint64_t> m_taken = 0;
};

} // namespace LuTestSuiteRun
