/// How many files a process may have open.
#pragma once

#include <cstdint>

#include "base/lbexport.h"

namespace LbOs
{

/// Sees to it that the present process may have `count` files open, or as many as the system lets it have; nothing
/// where it sets no limit that a process could raise. Processes that are started have the limit as it was. Any thread.
LB_API void EnsureOpenFiles(std::uint64_t count);

} // namespace LbOs
