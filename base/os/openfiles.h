/// The limit of open files.
#pragma once

#include <cstdint>

#include "base/lbexport.h"

namespace LbOs
{

/// Raises the process's limit of open files to `count`, or to the system's maximum if that is lower. No effect on
/// systems without such a limit. Child processes start with the original limit. Callable from any thread.
LB_API void EnsureOpenFiles(std::uint64_t count);

} // namespace LbOs
