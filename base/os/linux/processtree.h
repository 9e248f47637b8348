/// Processes with all that they have started. Internal to the Linux side.
#pragma once

#include <cstdint>
#include <span>

#include <sys/types.h>

namespace LbOs::Linux
{

/// To be called by a process before it runs its program: what it starts stays below it in the tree of processes, also
/// when the processes between have ended. Makes system calls only.
void KeepDescendants() noexcept;

/// Whether a process of that number is there that has started after that time, in nanoseconds since the system's start:
/// one that had the number before is gone then. Makes system calls only.
bool HasStartedAfter(pid_t process, std::int64_t time) noexcept;

/// Ends what processes that keep their descendants have started, in whatever group or session that is, and then their
/// whole groups; all together, for each look at the processes of the system takes time. Without effect on what
/// processes leave behind that have ended before. Keepers end by themselves, as their owners do. The numbers must still
/// be the processes' own; they are sorted. Makes system calls only, so that a fork may call it. Any thread.
void EndProcessTrees(std::span<pid_t> processes) noexcept;

} // namespace LbOs::Linux
