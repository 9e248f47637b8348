/// Operations of the heap that are told of later.
#pragma once

#include <cstddef>
#include <cstdint>

namespace LuTestSuite
{

/// One operation as a tracker is told of it.
struct SOperation
{
    int kind; ///< value of LuTestSuiteHeapTracker::EOperation
    std::uint64_t oldAddress;
    std::uint64_t newAddress;
    std::size_t size;
};

/// Operations in their order, in pages from the system; the process ends when there are no more. Not for several
/// threads at once. Has no destructor: it serves until the last instruction of the process.
class COperationLog
{
public:
    void Append(const SOperation& operation) noexcept;

    /// Hands each operation to `function`, and forgets it.
    void Replay(void (*function)(const SOperation& operation) noexcept) noexcept;

    /// Forgets all without a look at it, for a moment at which it may be half written. The pages are lost.
    void Abandon() noexcept { m_first = m_last = nullptr; }

private:
    struct SChunk;

    SChunk* m_first = nullptr;
    SChunk* m_last = nullptr;
};

} // namespace LuTestSuite
