/// Processes with all that they have started. Internal to the Linux side.
#pragma once

#include <sys/types.h>

namespace LbOs::Linux
{

/// To be called by a process before it runs its program: what it starts stays below it in the tree of processes, also
/// when the processes between have ended. Makes system calls only.
void KeepDescendants() noexcept;

/// Ends what a process that keeps its descendants has started, in whatever group or session that is, and then its whole
/// group. Without effect on what processes leave behind that have ended before. Keepers stay: they end with what they
/// keep. The number must still be the process's own. Makes system calls only, so that a fork may call it. Any thread.
void EndProcessTree(pid_t process) noexcept;

} // namespace LbOs::Linux
