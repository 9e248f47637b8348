/// Waiting for a change of a number in memory, the ground of locks that never allocate.
#pragma once

#include <atomic>
#include <cstdint>

#include "base/lbexport.h"

namespace LbOs
{

/// Returns when another thread wakes the address, or at once when the number is not `expected`, or at times without
/// reason: the caller looks again. Any thread; allocates nothing.
LB_API void WaitOnNumber(const std::atomic<std::uint32_t>& number, std::uint32_t expected) noexcept;

/// Wakes one thread that waits, if there is one.
LB_API void WakeOne(const std::atomic<std::uint32_t>& number) noexcept;

} // namespace LbOs
