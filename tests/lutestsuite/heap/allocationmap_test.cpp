#include "testing/lutestsuite/heap/allocationmap.h"

#include <algorithm>
#include <map>
#include <random>
#include <vector>

#include <gtest/gtest.h>

using LuTestSuite::CAllocationMap;

namespace
{

class CAllocationMapTest : public testing::Test
{
protected:
    ~CAllocationMapTest() override { CAllocationMap::Destroy(m_map); }

    void insert(std::uint64_t address, std::uint64_t size)
    {
        CAllocationMap::SEntry** const place = m_map->Find(address);
        ASSERT_EQ(*place, nullptr);
        m_map->InsertAt(place, address, {0, 1, size});
    }

    /// True if the map visits its entries in the order of `count` buckets.
    bool isOrderedByBucketsOf(std::uint64_t count) const
    {
        std::vector<std::uint64_t> buckets;
        m_map->ForEach([&](const CAllocationMap::SEntry& entry) {
            buckets.push_back(CAllocationMap::Hash(entry.address) & (count - 1));
        });
        return std::ranges::is_sorted(buckets);
    }

    CAllocationMap* m_map = CAllocationMap::Create();
};

} // namespace

TEST_F(CAllocationMapTest, HashIsFnv1aOfTheKeysBytes)
{
    // Computes the published algorithm over eight bytes, lowest byte first.
    const auto reference = [](std::uint64_t key) {
        std::uint64_t hash = 0xCBF29CE484222325;
        for (int byte = 0; byte < 8; ++byte, key >>= 8U)
        {
            hash = (hash ^ (key & 0xFFU)) * 0x100000001B3;
        }
        return hash;
    };
    EXPECT_EQ(CAllocationMap::Hash(0), 0xA8C7F832281A39C5U);
    for (const std::uint64_t key :
         {0x0ULL, 0x1ULL, 0x7FFF12345678ULL, 0x00FF000000000000ULL, 0xFF00000000000000ULL, 0x0123456789ABCDEFULL})
    {
        EXPECT_EQ(CAllocationMap::Hash(key), reference(key)) << key;
    }
}

TEST_F(CAllocationMapTest, StartsEmpty)
{
    EXPECT_EQ(m_map->GetCount(), 0U);
}

TEST_F(CAllocationMapTest, DoublesIts128BucketsWhenTheyAreThreeQuartersFull)
{
    for (std::uint64_t address = 1; address < 96; ++address)
    {
        insert(address * 16, 1);
    }
    EXPECT_TRUE(isOrderedByBucketsOf(128));
    EXPECT_FALSE(isOrderedByBucketsOf(256));
    insert(96 * 16, 1);
    EXPECT_TRUE(isOrderedByBucketsOf(256));
    EXPECT_FALSE(isOrderedByBucketsOf(128));
    for (std::uint64_t address = 1; address <= 96; ++address)
    {
        EXPECT_NE(*m_map->Find(address * 16), nullptr) << address;
    }
}

TEST_F(CAllocationMapTest, AgreesWithAStandardMap)
{
    std::mt19937_64 random(4711);
    std::map<std::uint64_t, std::uint64_t> expected;
    for (int round = 0; round < 50'000; ++round)
    {
        const std::uint64_t address = (random() % 4096) * 16;
        CAllocationMap::SEntry** const place = m_map->Find(address);
        ASSERT_EQ(*place != nullptr, expected.contains(address));
        if (*place == nullptr)
        {
            const std::uint64_t size = random();
            m_map->InsertAt(place, address, {0, 1, size});
            expected[address] = size;
        }
        else
        {
            ASSERT_EQ((*place)->data.size, expected[address]);
            m_map->RemoveAt(place);
            expected.erase(address);
        }
        ASSERT_EQ(m_map->GetCount(), expected.size());
    }
    std::map<std::uint64_t, std::uint64_t> found;
    m_map->ForEach([&found](const CAllocationMap::SEntry& entry) { found[entry.address] = entry.data.size; });
    EXPECT_EQ(found, expected);
}

TEST_F(CAllocationMapTest, IsEmptyAfterClearAndAcceptsEntriesAgain)
{
    for (std::uint64_t address = 1; address <= 10'000; ++address)
    {
        insert(address * 16, 1);
    }
    m_map->Clear();
    EXPECT_EQ(m_map->GetCount(), 0U);
    EXPECT_EQ(*m_map->Find(16), nullptr);
    insert(16, 5);
    EXPECT_EQ((*m_map->Find(16))->data.size, 5U);
}
