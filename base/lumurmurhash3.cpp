#include "base/lumurmurhash3.h"

#include <algorithm>
#include <bit>
#include <cstring>

static_assert(std::endian::native == std::endian::little);

namespace
{

constexpr std::uint64_t c_Multiplier1 = 0x87C37B91114253D5U;
constexpr std::uint64_t c_Multiplier2 = 0x4CF5AD432745937FU;
constexpr std::size_t c_WordSize = sizeof(std::uint64_t);
constexpr std::size_t c_BlockSize = 2 * c_WordSize;

std::uint64_t readWord(const unsigned char* bytes, std::size_t size = c_WordSize)
{
    std::uint64_t word = 0;
    std::memcpy(&word, bytes, size);
    return word;
}

std::uint64_t scramble1(std::uint64_t word)
{
    return std::rotl(word * c_Multiplier1, 31) * c_Multiplier2;
}

std::uint64_t scramble2(std::uint64_t word)
{
    return std::rotl(word * c_Multiplier2, 33) * c_Multiplier1;
}

/// Makes each bit of the word affect all others.
std::uint64_t finish(std::uint64_t word)
{
    word = (word ^ (word >> 33)) * 0xFF51AFD7ED558CCDU;
    word = (word ^ (word >> 33)) * 0xC4CEB9FE1A85EC53U;
    return word ^ (word >> 33);
}

/// Adds the bytes after the last whole block to the hashes.
void addTail(const unsigned char* bytes, std::size_t size, std::uint64_t& hash1, std::uint64_t& hash2)
{
    if (size > c_WordSize)
    {
        hash2 ^= scramble2(readWord(bytes + c_WordSize, size - c_WordSize));
    }
    if (size > 0)
    {
        hash1 ^= scramble1(readWord(bytes, size < c_WordSize ? size : c_WordSize));
    }
}

/// Adds whole blocks to the hashes.
void addBlocks(const unsigned char* bytes, std::size_t size, std::uint64_t& hash1, std::uint64_t& hash2)
{
    std::uint64_t state1 = hash1;
    std::uint64_t state2 = hash2;
    for (std::size_t offset = 0; offset < size; offset += c_BlockSize)
    {
        state1 = (std::rotl(state1 ^ scramble1(readWord(bytes + offset)), 27) + state2) * 5 + 0x52DCE729;
        state2 = (std::rotl(state2 ^ scramble2(readWord(bytes + offset + c_WordSize)), 31) + state1) * 5 + 0x38495AB5;
    }
    hash1 = state1;
    hash2 = state2;
}

} // namespace

LuMurmurHash3::S128 LuMurmurHash3::GetOptimizedChecksum128(const void* data, std::uint32_t length, std::uint32_t seed)
{
    return GetOptimizedChecksum128(data, length, seed, [length](std::size_t /*count*/) { return length; });
}

LuMurmurHash3::S128 LuMurmurHash3::GetOptimizedChecksum128(const void* data, std::uint32_t length, std::uint32_t seed,
                                                           const std::function<std::size_t(std::size_t count)>& await)
{
    const auto* const bytes = static_cast<const unsigned char*>(data);
    const std::size_t tail = length % c_BlockSize;
    std::uint64_t hash1 = seed;
    std::uint64_t hash2 = seed;
    std::size_t position = 0;
    while (position < length - tail)
    {
        const std::size_t there = std::min<std::size_t>(await(position + c_BlockSize), length);
        const std::size_t size = (there - position) / c_BlockSize * c_BlockSize;
        addBlocks(bytes + position, size, hash1, hash2);
        position += size;
    }
    if (tail > 0)
    {
        await(length);
        addTail(bytes + position, tail, hash1, hash2);
    }
    hash1 ^= length;
    hash2 ^= length;
    hash1 += hash2;
    hash2 += hash1;
    hash1 = finish(hash1);
    hash2 = finish(hash2);
    hash1 += hash2;
    hash2 += hash1;
    return {hash1, hash2};
}
