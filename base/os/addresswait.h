/// Waiting for a change of a number in memory; the basis of locks that never allocate.
#pragma once

#include <atomic>
#include <cstdint>

#include "base/lbexport.h"

namespace LbOs
{

/// Returns when another thread wakes the address, at once if the number is not `expected`, and sometimes spuriously:
/// the caller must check again. Callable from any thread; allocates nothing.
LB_API void WaitOnNumber(const std::atomic<std::uint32_t>& number, std::uint32_t expected) noexcept;

/// Wakes one waiting thread, if there is one.
LB_API void WakeOne(const std::atomic<std::uint32_t>& number) noexcept;

} // namespace LbOs
