/// Waiting for a change of a number in memory; the basis of locks that never allocate.
#pragma once

#include <atomic>
#include <cstdint>

#include "base/lbexport.h"

namespace LbOs
{

/// Waits until another thread calls WakeOne for the same number; returns at once if the number is not `expected`. May
/// also return without reason, so the caller must check again. Callable from any thread; allocates nothing.
LB_API void WaitOnNumber(const std::atomic<std::uint32_t>& number, std::uint32_t expected) noexcept;

/// Wakes one waiting thread, if there is one.
LB_API void WakeOne(const std::atomic<std::uint32_t>& number) noexcept;

} // namespace LbOs
