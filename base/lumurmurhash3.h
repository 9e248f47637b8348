/// Fast checksums for comparing contents; not cryptographic.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>

#include "base/lbexport.h"

/// The public hash function MurmurHash3. Pure functions, callable from any thread.
class LB_API LuMurmurHash3
{
public:
    /// 128 bits; `low` holds the first eight bytes of the algorithm's result.
    struct S128
    {
        std::uint64_t low;
        std::uint64_t high;

        friend bool operator==(const S128&, const S128&) = default;
    };

    /// The checksum of `length` bytes by the variant for 64-bit machines. `data` needs no alignment and may be null if
    /// `length` is 0.
    static S128 GetOptimizedChecksum128(const void* data, std::uint32_t length, std::uint32_t seed);

    /// The same for memory that another thread is still filling from its beginning: `await(count)` waits until at least
    /// the first `count` bytes are present and returns how many are present. Exceptions of `await` pass through.
    static S128 GetOptimizedChecksum128(const void* data, std::uint32_t length, std::uint32_t seed,
                                        const std::function<std::size_t(std::size_t count)>& await);
};
