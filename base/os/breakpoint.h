/// Breakpoint instructions without a debugger.
#pragma once

#include "base/lbexport.h"

namespace LbOs
{

using FBreakpointHandler = void (*)();

/// From now on each breakpoint instruction that no debugger takes calls `handler` on its thread, and the thread goes on
/// behind it; with null the system's way is back, which ends the process. The handler must be fit for any place. Any
/// thread, one at a time.
LB_API void SetBreakpointHandler(FBreakpointHandler handler) noexcept;

} // namespace LbOs
