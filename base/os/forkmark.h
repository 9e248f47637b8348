/// Tells a process from its copies.
#pragma once

#include <cstdint>

#include "base/lbexport.h"

namespace LbOs
{

/// A number that stays the same in this process and is another one in a copy of it that a fork has made, and in copies
/// of that. Mostly costs no system call. Any thread.
LB_API std::uint64_t GetForkMark() noexcept;

} // namespace LbOs
