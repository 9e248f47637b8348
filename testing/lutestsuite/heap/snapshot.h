/// What a heap tracker shows of itself.
#pragma once

#include <cstdint>
#include <span>

#include "testing/lutestsuite/heap/allocationmap.h"

class LuStreamWriteText;

namespace LuTestSuite
{

/// The numbers of a dump, in its order.
struct SCounts
{
    std::uint64_t mallocs;
    std::uint64_t frees;
    std::uint64_t reallocs;
    std::int64_t current;
    std::int64_t maximum;
};

/// What a dump shows, taken at one moment, in memory of its own. Without that memory it is incomplete.
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
