/// Heap operations that are recorded now and dispatched to the trackers later.
#pragma once

#include <cstddef>
#include <cstdint>

namespace LuTestSuite
{

/// One operation, as trackers receive it.
struct SOperation
{
    int kind; ///< value of LuTestSuiteHeapTracker::EOperation
    std::uint64_t oldAddress;
    std::uint64_t newAddress;
    std::size_t size;
};

/// A queue of operations in pages from the system; ends the process when the system has no more pages. One thread at a
/// time. Has no destructor: it is in use until the process ends.
class COperationLog
{
public:
    void Append(const SOperation& operation) noexcept;

    /// Passes each operation to `function`, in order, and removes it.
    void Replay(void (*function)(const SOperation& operation) noexcept) noexcept;

    /// Drops all operations without reading them, since they may be half written. Does not release their pages.
    void Abandon() noexcept { m_first = m_last = nullptr; }

private:
    struct SChunk;

    SChunk* m_first = nullptr;
    SChunk* m_last = nullptr;
};

} // namespace LuTestSuite
