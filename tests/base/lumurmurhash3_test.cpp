#include "base/lumurmurhash3.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>

namespace
{

using S128 = LuMurmurHash3::S128;

S128 hash(std::string_view text, std::uint32_t seed = 0)
{
    return LuMurmurHash3::GetOptimizedChecksum128(text.data(), static_cast<std::uint32_t>(text.size()), seed);
}

TEST(LuMurmurHash3, ReturnsThePublishedValueOfAText)
{
    const S128 checksum = hash("The quick brown fox jumps over the lazy dog");

    EXPECT_EQ(checksum.low, 0xE34BBC7BBC071B6CU);
    EXPECT_EQ(checksum.high, 0x7A433CA9C49A9347U);
}

TEST(LuMurmurHash3, ReturnsZeroForEmptyInput)
{
    EXPECT_EQ(LuMurmurHash3::GetOptimizedChecksum128(nullptr, 0, 0), (S128{0, 0}));
}

/// The published verification of the algorithm: hashes keys of 0 to 255 bytes, each with its own seed, then hashes all
/// results.
TEST(LuMurmurHash3, PassesThePublishedVerificationOfTheAlgorithm)
{
    constexpr std::uint32_t c_Keys = 256;
    std::array<unsigned char, c_Keys> key = {};
    std::array<unsigned char, c_Keys* 16> checksums = {};
    for (std::uint32_t length = 0; length < c_Keys; ++length)
    {
        key[length] = static_cast<unsigned char>(length);
        const S128 checksum = LuMurmurHash3::GetOptimizedChecksum128(key.data(), length, c_Keys - length);
        std::memcpy(&checksums[length * 16], &checksum.low, 8);
        std::memcpy(&checksums[length * 16 + 8], &checksum.high, 8);
    }

    const S128 all = LuMurmurHash3::GetOptimizedChecksum128(checksums.data(), checksums.size(), 0);

    EXPECT_EQ(all.low & 0xFFFFFFFFU, 0x6384BA69U);
}

TEST(LuMurmurHash3, DependsOnTheSeed)
{
    EXPECT_FALSE(hash("abc", 0) == hash("abc", 1));
}

TEST(LuMurmurHash3, DependsOnTheLength)
{
    EXPECT_FALSE(hash(std::string_view("\0", 1)) == hash(std::string_view("\0\0", 2)));
}

/// The bytes arrive in memory one at a time or many at once. A byte that is read before it has arrived has a wrong
/// value.
TEST(LuMurmurHash3, WaitsForTheBytesThatItReads)
{
    for (const std::size_t step : {1U, 7U, 16U, 100U, 5000U})
    {
        for (const std::size_t length : {0U, 1U, 8U, 15U, 16U, 17U, 31U, 32U, 1000U, 3005U})
        {
            std::string text(length, 'x');
            for (std::size_t index = 0; index < length; ++index)
            {
                text[index] = static_cast<char>(index * 31);
            }
            std::string memory(length, '?');
            std::size_t there = 0;
            const S128 checksum = LuMurmurHash3::GetOptimizedChecksum128(
                memory.data(), static_cast<std::uint32_t>(length), 5, [&](std::size_t count) {
                    EXPECT_LE(count, length);
                    for (; there < count; there = std::min(there + step, length))
                    {
                        memory.replace(there, step, text, there, step);
                    }
                    return there;
                });

            EXPECT_EQ(checksum, hash(text, 5)) << length << " bytes, " << step << " at once";
        }
    }
}

TEST(LuMurmurHash3, PassesOnAnExceptionThrownWhileItWaitsForBytes)
{
    const std::string text(100, 'x');
    const auto await = [](std::size_t count) -> std::size_t {
        return count > 50 ? throw std::runtime_error("away") : 50;
    };

    EXPECT_THROW(LuMurmurHash3::GetOptimizedChecksum128(text.data(), 100, 0, await), std::runtime_error);
}

TEST(LuMurmurHash3, AcceptsMoreBytesThanItNeeds)
{
    const std::string text(100, 'x');

    EXPECT_EQ(LuMurmurHash3::GetOptimizedChecksum128(text.data(), 99, 0, [](std::size_t) { return 100; }),
              hash({text.data(), 99}));
}

TEST(LuMurmurHash3, DoesNotDependOnTheAlignment)
{
    const std::string_view text = "Ein Text von mehr als zwei Blöcken, an jeder Stelle im Speicher";
    std::vector<char> memory(text.size() + 8);
    for (std::size_t offset = 0; offset < 8; ++offset)
    {
        std::memcpy(memory.data() + offset, text.data(), text.size());
        EXPECT_EQ(hash({memory.data() + offset, text.size()}), hash(text));
    }
}

} // namespace
