/// The way around a patched function's entry.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>

#include "testing/lutestsuite/heap/instruction.h"

namespace LuTestSuite
{

/// Bytes that a patch replaces: a jump with a 32-bit displacement.
inline constexpr std::size_t c_PatchSize = 5;

/// Code and what is needed to move a thread in or out of it. All places inside are offsets from the block's begin.
///
/// The block holds copies of the instructions that a patch replaces, with their relative operands fixed up, then a jump
/// to the first instruction left alone. In front of it stands the relay, a jump of any reach to the detour.
struct STrampoline
{
    static constexpr std::size_t sc_uiCapacity = 256;
    static constexpr std::size_t sc_uiRelay = 0;
    static constexpr std::size_t sc_uiEntry = 16;
    static constexpr std::size_t sc_uiPlaceMax = 32;

    /// An instruction of the original that has its copy.
    struct SCopy
    {
        std::uint8_t original; ///< offset from the target
        std::uint8_t copy;     ///< offset from the block
    };
    /// An instruction of the block, and where a thread that is about to run it may go on instead, once the target is as
    /// it was.
    struct SPlace
    {
        std::uint8_t offset;
        std::uintptr_t resume;
    };

    std::array<std::uint8_t, sc_uiCapacity> code;
    std::array<SCopy, c_PatchSize> copies;
    std::size_t copyCount = 0;
    std::array<SPlace, sc_uiPlaceMax> places;
    std::size_t placeCount = 0;

    /// Where a thread at `offset` of the target goes on in the block.
    std::optional<std::uintptr_t> FindCopy(std::uintptr_t block, std::size_t offset) const noexcept;
    /// Where a thread at `offset` of the block goes on outside.
    std::optional<std::uintptr_t> FindResume(std::size_t offset) const noexcept;
};

/// The trampoline of the function at `target`, to stand at `block`; `code` are the bytes at the target as far as they
/// can be read. None when the replaced instructions cannot be moved: unknown ones, a function shorter than the patch, a
/// return address inside the replaced bytes, a jump from elsewhere in `code` to there, or an operand out of reach from
/// the block. Exported for tests.
LUTESTSUITE_API std::optional<STrampoline> BuildTrampoline(std::span<const std::uint8_t> code, std::uintptr_t target,
                                                           std::uintptr_t block, std::uintptr_t detour) noexcept;

} // namespace LuTestSuite
