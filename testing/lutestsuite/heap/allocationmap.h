/// The live allocations that one heap tracker knows.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace LuTestSuite
{

struct SAllocData
{
    std::uint64_t id = 0;             ///< number of the last operation that allocated the block
    std::uint32_t referenceCount = 0; ///< allocations outstanding at the address, normally 1
    std::uint64_t size = 0;           ///< bytes
};

/// A hash map from address to SAllocData. It runs inside malloc, so all its memory, the map object included, comes from
/// the system in whole pages; entries come from a pool. One thread at a time. Ends the process when the system has no
/// more pages.
class CAllocationMap
{
public:
    struct SEntry
    {
        std::uint64_t address;
        SAllocData data;
        SEntry* next; ///< in the bucket or in the free list
    };

    static CAllocationMap* Create() noexcept;
    static void Destroy(CAllocationMap* map) noexcept;
    CAllocationMap(const CAllocationMap&) = delete;
    CAllocationMap& operator=(const CAllocationMap&) = delete;

    /// Returns the link that points to the address's entry. If the address has no entry, returns the null link at
    /// which InsertAt can add it. Valid until the next change.
    SEntry** Find(std::uint64_t address) noexcept;
    /// Adds an entry at a null link that Find returned for this address.
    void InsertAt(SEntry** place, std::uint64_t address, const SAllocData& data) noexcept;
    /// Removes the entry at a link that Find returned.
    void RemoveAt(SEntry** place) noexcept;
    void Clear() noexcept;

    std::size_t GetCount() const noexcept { return m_count; }

    /// Calls `function(entry)` for all entries, bucket by bucket.
    template<typename F>
    void ForEach(const F& function) const
    {
        for (std::size_t bucket = 0; bucket < m_bucketCount; ++bucket)
        {
            for (const SEntry* entry = m_buckets[bucket]; entry != nullptr; entry = entry->next)
            {
                function(*entry);
            }
        }
    }

    /// 64-bit FNV-1a over the key's bytes, the lowest first.
    static std::uint64_t Hash(std::uint64_t key) noexcept
    {
        constexpr std::uint64_t c_OffsetBasis = 0xCBF29CE484222325;
        constexpr std::uint64_t c_Prime = 0x100000001B3;
        constexpr unsigned c_UsualBits = 48;
        std::uint64_t hash = c_OffsetBasis;
        for (unsigned shift = 0; shift < c_UsualBits; shift += 8)
        {
            hash = (hash ^ ((key >> shift) & 0xFFU)) * c_Prime;
        }
        // The two highest bytes of an address are usually zero; then one multiplication covers both.
        const std::uint64_t seventh = (key >> c_UsualBits) & 0xFFU;
        const std::uint64_t eighth = key >> (c_UsualBits + 8U);
        return (seventh | eighth) == 0 ? hash * (c_Prime * c_Prime) : (((hash ^ seventh) * c_Prime) ^ eighth) * c_Prime;
    }

private:
    static constexpr std::size_t sc_uiFirstBucketCount = 128;

    /// The header of pages with entries. The pages that Create allocates begin with the map instead.
    struct SChunk
    {
        SChunk* next;
    };

    CAllocationMap() noexcept : m_buckets(m_firstBuckets.data()) {}

    SEntry*& bucketOf(std::uint64_t address) noexcept { return m_buckets[Hash(address) & (m_bucketCount - 1)]; }
    SEntry* takeEntry() noexcept;
    void addEntries(std::byte* begin, std::byte* end) noexcept;
    void grow() noexcept;
    void releaseBuckets() noexcept;

    // Declared before m_buckets, whose initialiser points into it.
    std::array<SEntry*, sc_uiFirstBucketCount> m_firstBuckets = {};
    std::size_t m_count = 0;
    std::size_t m_bucketCount = sc_uiFirstBucketCount;
    SEntry** m_buckets;
    SEntry* m_free = nullptr;
    std::byte* m_fresh = nullptr; ///< unused entries of the newest chunk
    std::byte* m_freshEnd = nullptr;
    SChunk* m_chunks = nullptr;
};

} // namespace LuTestSuite
