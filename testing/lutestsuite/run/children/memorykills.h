/// Attributes the kernel's kills for lack of memory to ended children.
#pragma once

#include <atomic>
#include <cstdint>

namespace LuTestSuiteRun
{

/// The kernel only counts the processes that it has killed. Any thread.
class CMemoryKills
{
public:
    /// `count` returns the number of all kills so far.
    explicit constexpr CMemoryKills(std::uint64_t (*count)()) : m_count(count) {}

    /// Ignores the kills so far.
    void Forget() { m_taken = m_count(); }

    /// True if there was a kill that belongs to no child yet; it then belongs to the caller's.
    bool Take();

private:
    std::uint64_t (*m_count)();
    std::atomic<std::uint64_t> m_taken = 0;
};

} // namespace LuTestSuiteRun
