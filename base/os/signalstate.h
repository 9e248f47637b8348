/// The signal state of the current process, which test code may change.
#pragma once

#include "base/lbexport.h"

namespace LbOs
{

/// Records the signals that the calling thread blocks and that the process ignores, and its armed interval timers.
/// Child processes start with these blocked and ignored signals, see SChildOptions::hasPreparedSignals. No effect on
/// Windows. Any thread.
LB_API void RecordSignals() noexcept;

/// Undoes changes since RecordSignals: the system keeps the exit statuses of children again, and the calling thread
/// blocks the recorded signals. Does not change handlers. Takes two system calls if nothing has changed. No effect
/// before RecordSignals and on Windows. Any thread.
LB_API void RestoreSignals() noexcept;

/// Disarms the timers of alarm() and setitimer() that were not armed at RecordSignals, also those of other threads.
/// Takes three system calls, 0.3 µs. No effect before RecordSignals and on Windows. Any thread.
LB_API void DisarmTimers() noexcept;

} // namespace LbOs
