#include "testing/lutestsuite/heap/snapshot.h"

#include <algorithm>

#include "base/lustream.h"
#include "base/os/pages.h"

namespace LuTestSuite
{

CSnapshot::CSnapshot(const SCounts& counts, const CAllocationMap* map) noexcept : m_counts(counts)
{
    const std::size_t count = map == nullptr ? 0 : map->GetCount();
    if (count == 0)
    {
        return;
    }
    void* const pages = LbOs::AllocatePages(count * sizeof(CAllocationMap::SEntry));
    if (pages == nullptr)
    {
        m_isComplete = false;
        return;
    }
    m_entries = {static_cast<CAllocationMap::SEntry*>(pages), count};
    std::size_t index = 0;
    map->ForEach([this, &index](const CAllocationMap::SEntry& entry) { m_entries[index++] = entry; });
    std::ranges::sort(m_entries, {}, [](const CAllocationMap::SEntry& entry) { return entry.data.id; });
}

CSnapshot::~CSnapshot()
{
    if (!m_entries.empty())
    {
        LbOs::ReleasePages(m_entries.data(), m_entries.size_bytes());
    }
}

void CSnapshot::Write(LuStreamWriteText& stream) const
{
    stream.WriteFormat(L"CountMalloc %llu\n", m_counts.mallocs);
    stream.WriteFormat(L"CountFree %llu\n", m_counts.frees);
    stream.WriteFormat(L"CountRealloc %llu\n", m_counts.reallocs);
    stream.WriteFormat(L"CurrentAlloc %lld Bytes\n", m_counts.current);
    stream.WriteFormat(L"CurrentMax %lld Bytes\n", m_counts.maximum);
    stream.Write(L"Active Allocations:\n");
    if (!m_isComplete)
    {
        stream.Write(L"Warnung: Für die Liste reicht der Speicher nicht.\n");
    }
    for (const CAllocationMap::SEntry& entry : m_entries)
    {
        // NOLINTNEXTLINE(performance-no-int-to-ptr)
        const void* const address = reinterpret_cast<const void*>(entry.address);
        stream.WriteFormat(L"ID %lld, Address 0x%p, Size %lld Bytes.\n", entry.data.id, address, entry.data.size);
    }
}

} // namespace LuTestSuite
