/// Checksums that tell contents apart: fast, not safe against intent.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>

#include "base/lbexport.h"

/// The public MurmurHash3. Pure functions; any thread.
class LB_API LuMurmurHash3
{
public:
    /// 128 bits; `low` is what the algorithm's bytes begin with.
    struct S128
    {
        std::uint64_t low;
        std::uint64_t high;

        friend bool operator==(const S128&, const S128&) = default;
    };

    /// The checksum of `length` bytes by the variant for 64-bit machines. The memory needs no alignment, and may be
    /// null when there are no bytes.
    static S128 GetOptimizedChecksum128(const void* data, std::uint32_t length, std::uint32_t seed);

    /// The same for memory that another thread is filling, from its beginning on: `await(count)` returns when the first
    /// `count` bytes or more are there, and gives how many are. What it throws passes through.
    static S128 GetOptimizedChecksum128(const void* data, std::uint32_t length, std::uint32_t seed,
                                        const std::function<std::size_t(std::size_t count)>& await);
};
