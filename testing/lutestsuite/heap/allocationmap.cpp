#include "testing/lutestsuite/heap/allocationmap.h"

#include <exception>
#include <new>

#include "base/os/pages.h"

namespace LuTestSuite
{

namespace
{

// The allocation granularity of Windows; that of Linux is smaller.
constexpr std::size_t c_ChunkSize = 65536;

std::byte* requirePages(std::size_t size) noexcept
{
    void* const pages = LbOs::AllocatePages(size);
    if (pages == nullptr)
    {
        // malloc cannot report an error of the tracker, and ending the process is better than wrong counts.
        std::terminate();
    }
    return static_cast<std::byte*>(pages);
}

} // namespace

CAllocationMap* CAllocationMap::Create() noexcept
{
    std::byte* const pages = requirePages(c_ChunkSize);
    auto* const map = new (pages) CAllocationMap;
    map->addEntries(pages + sizeof(CAllocationMap), pages + c_ChunkSize);
    return map;
}

void CAllocationMap::Destroy(CAllocationMap* map) noexcept
{
    if (map == nullptr)
    {
        return;
    }
    map->releaseBuckets();
    for (SChunk* chunk = map->m_chunks; chunk != nullptr;)
    {
        SChunk* const next = chunk->next;
        LbOs::ReleasePages(chunk, c_ChunkSize);
        chunk = next;
    }
    LbOs::ReleasePages(map, c_ChunkSize);
}

CAllocationMap::SEntry** CAllocationMap::Find(std::uint64_t address) noexcept
{
    SEntry** place = &bucketOf(address);
    while (*place != nullptr && (*place)->address != address)
    {
        place = &(*place)->next;
    }
    return place;
}

void CAllocationMap::InsertAt(SEntry** place, std::uint64_t address, const SAllocData& data) noexcept
{
    SEntry* const entry = takeEntry();
    *entry = {address, data, nullptr};
    *place = entry;
    ++m_count;
    if (m_count * 4 >= m_bucketCount * 3)
    {
        grow();
    }
}

void CAllocationMap::RemoveAt(SEntry** place) noexcept
{
    SEntry* const entry = *place;
    *place = entry->next;
    entry->next = m_free;
    m_free = entry;
    --m_count;
}

void CAllocationMap::Clear() noexcept
{
    for (std::size_t bucket = 0; m_count > 0 && bucket < m_bucketCount; ++bucket)
    {
        while (m_buckets[bucket] != nullptr)
        {
            SEntry* const entry = m_buckets[bucket];
            m_buckets[bucket] = entry->next;
            entry->next = m_free;
            m_free = entry;
            --m_count;
        }
    }
}

CAllocationMap::SEntry* CAllocationMap::takeEntry() noexcept
{
    if (m_free != nullptr)
    {
        SEntry* const entry = m_free;
        m_free = entry->next;
        return entry;
    }
    if (m_fresh == m_freshEnd)
    {
        std::byte* const pages = requirePages(c_ChunkSize);
        m_chunks = new (pages) SChunk{m_chunks};
        addEntries(pages + sizeof(SChunk), pages + c_ChunkSize);
    }
    auto* const entry = new (m_fresh) SEntry;
    m_fresh += sizeof(SEntry);
    return entry;
}

/// Keeps the new entries out of the free list: linking them would touch every page.
void CAllocationMap::addEntries(std::byte* begin, std::byte* end) noexcept
{
    const auto count = static_cast<std::size_t>(end - begin) / sizeof(SEntry);
    m_fresh = begin;
    m_freshEnd = begin + count * sizeof(SEntry);
}

void CAllocationMap::grow() noexcept
{
    const std::size_t oldCount = m_bucketCount;
    auto* const buckets = reinterpret_cast<SEntry**>(requirePages(oldCount * 2 * sizeof(SEntry*)));
    SEntry** const oldBuckets = m_buckets;
    m_buckets = buckets;
    m_bucketCount = oldCount * 2;
    for (std::size_t bucket = 0; bucket < oldCount; ++bucket)
    {
        for (SEntry* entry = oldBuckets[bucket]; entry != nullptr;)
        {
            SEntry* const next = entry->next;
            SEntry*& target = bucketOf(entry->address);
            entry->next = target;
            target = entry;
            entry = next;
        }
    }
    if (oldBuckets != m_firstBuckets.data())
    {
        LbOs::ReleasePages(oldBuckets, oldCount * sizeof(SEntry*));
    }
}

void CAllocationMap::releaseBuckets() noexcept
{
    if (m_buckets != m_firstBuckets.data())
    {
        LbOs::ReleasePages(m_buckets, m_bucketCount * sizeof(SEntry*));
    }
}

} // namespace LuTestSuite
