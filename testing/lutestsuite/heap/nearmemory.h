/// Memory within reach of a 32-bit relative jump.
#pragma once

#include <cstddef>
#include <cstdint>

namespace LuTestSuite
{

/// Allocates readable and writable pages as near to `target` as possible; null if no free pages are in reach. Release
/// them with LbOs::ReleasePages. Callable from any thread.
void* AllocateNear(std::uintptr_t target, std::size_t size) noexcept;

/// True if a relative jump whose instruction ends at `from` reaches `to`.
bool IsInReach(std::uintptr_t from, std::uintptr_t to) noexcept;

} // namespace LuTestSuite
