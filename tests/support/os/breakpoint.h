/// Breakpoint instructions without a debugger. A part of the tests, in no library.
#pragma once

namespace LbOs
{

using FBreakpointHandler = void (*)();

/// From now on each breakpoint instruction that no debugger takes calls `handler` on its thread, and the thread goes on
/// behind it; with null the system's way is back, which ends the process. The handler must be fit for any place. With
/// `blocksSignals` none reaches the thread meanwhile, where there are signals. Any thread, one at a time.
void SetBreakpointHandler(FBreakpointHandler handler, bool blocksSignals = true) noexcept;

} // namespace LbOs
