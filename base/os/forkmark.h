/// Distinguishes a process from its forks.
#pragma once

#include <cstdint>

#include "base/lbexport.h"

namespace LbOs
{

/// A number that stays the same in this process and differs from the numbers in its forks and in their forks. Usually
/// needs no system call. Any thread.
LB_API std::uint64_t GetForkMark() noexcept;

} // namespace LbOs
