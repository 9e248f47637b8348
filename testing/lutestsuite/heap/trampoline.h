/// The code that runs a patched function's overwritten instructions and continues after them.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>

#include "testing/lutestsuite/heap/instruction.h"

namespace LuTestSuite
{

/// Number of bytes that a patch overwrites: a jump with a 32-bit displacement.
inline constexpr std::size_t c_PatchSize = 5;

/// The code of a trampoline, and the instructions at which a thread can be moved into or out of it.
///
/// The block begins with the relay, a jump that reaches the detour at any distance. Copies of the overwritten
/// instructions follow, with relative operands adjusted, and then a jump to the first instruction that is not
/// overwritten.
struct STrampoline
{
    static constexpr std::size_t sc_uiCapacity = 256;
    static constexpr std::size_t sc_uiRelay = 0;
    static constexpr std::size_t sc_uiEntry = 16;
    static constexpr std::size_t sc_uiPlaceMax = 32;

    /// An original instruction and its copy.
    struct SCopy
    {
        std::uint8_t original; ///< offset from the target
        std::uint8_t copy;     ///< offset from the block
    };
    /// An instruction of the block, and the address where a thread that is about to run it may continue after the
    /// target is restored.
    struct SPlace
    {
        std::uint8_t offset; ///< from the beginning of the block
        std::uintptr_t resume;
    };

    std::array<std::uint8_t, sc_uiCapacity> code;
    std::array<SCopy, c_PatchSize> copies;
    std::size_t copyCount = 0;
    std::array<SPlace, sc_uiPlaceMax> places;
    std::size_t placeCount = 0;

    /// Where a thread at `offset` of the target continues in the block; empty if no instruction begins there.
    std::optional<std::uintptr_t> FindCopy(std::uintptr_t block, std::size_t offset) const noexcept;
    /// Where a thread at `offset` of the block continues outside the block; empty if no instruction begins there.
    std::optional<std::uintptr_t> FindResume(std::size_t offset) const noexcept;
};

/// Makes the trampoline of the function at `target` for a block at the address `block`. `code` holds the readable bytes
/// at the target. Empty if the overwritten instructions cannot be moved, for example because of an unknown instruction,
/// a function that is shorter than the patch and not padded, a return address inside the overwritten bytes, a jump in
/// `code` to such a byte, or an operand out of reach of the block.
std::optional<STrampoline> BuildTrampoline(std::span<const std::uint8_t> code, std::uintptr_t target,
                                           std::uintptr_t block, std::uintptr_t detour) noexcept;

} // namespace LuTestSuite
