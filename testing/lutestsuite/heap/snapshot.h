/// The figures and allocations that a heap tracker dumps.
#pragma once

#include <cstdint>
#include <span>

#include "testing/lutestsuite/heap/allocationmap.h"

class LuStreamWriteText;

namespace LuTestSuite
{

/// The figures of a dump, in the order in which they are written.
struct SCounts
{
    std::uint64_t mallocs;
    std::uint64_t frees;
    std::uint64_t reallocs;
    std::int64_t current;
    std::int64_t maximum;
};

/// A consistent copy of what a dump shows, in pages of its own. Incomplete if the system has no pages left.
class CSnapshot
{
public:
    CSnapshot(const SCounts& counts, const CAllocationMap* map) noexcept;
    ~CSnapshot();
    CSnapshot(const CSnapshot&) = delete;
    CSnapshot& operator=(const CSnapshot&) = delete;

    void Write(LuStreamWriteText& stream) const;

private:
    const SCounts m_counts;
    std::span<CAllocationMap::SEntry> m_entries;
    bool m_isComplete = true;
};

} // namespace LuTestSuite
