/// Breakpoint instructions without a debugger. Part of the tests, in no library.
#pragma once

namespace LbOs
{

using FBreakpointHandler = void (*)();

/// From now on, a thread that executes a breakpoint instruction outside a debugger calls `handler` and then continues
/// after the instruction. Null restores the default, which ends the process. The handler must be safe in any context.
/// With `blocksSignals`, the thread receives no signals during the handler, on platforms that have signals. Any thread,
/// one at a time.
void SetBreakpointHandler(FBreakpointHandler handler, bool blocksSignals = true) noexcept;

} // namespace LbOs
