/// Memory within reach of a 32-bit relative jump.
#pragma once

#include <cstddef>
#include <cstdint>

namespace LuTestSuite
{

/// Pages to read and write as near to `target` as there is room; null when there is none in reach. To be released with
/// LbOs::ReleasePages. Any thread.
void* AllocateNear(std::uintptr_t target, std::size_t size) noexcept;

/// True when a jump that ends at `from` reaches `to`.
bool IsInReach(std::uintptr_t from, std::uintptr_t to) noexcept;

} // namespace LuTestSuite
