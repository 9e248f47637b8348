/// Processes with all their descendants. Internal to the Linux side.
#pragma once

#include <cstdint>
#include <span>
#include <string_view>

#include <sys/types.h>

namespace LbOs::Linux
{

/// Makes the calling process a subreaper: its descendants stay below it even if the processes in between have ended.
/// Called before the process runs its program. Makes only system calls.
void KeepDescendants() noexcept;

/// True if a process with this id exists and started after `time`, in nanoseconds since boot: then the process that had
/// the id before has ended. Makes only system calls.
bool HasStartedAfter(pid_t process, std::int64_t time) noexcept;

/// Ends the descendants of the processes, in any group or session, and then the processes' groups. Takes all processes
/// at once because each pass over the system's processes takes time. The processes must be subreapers; descendants of
/// processes that have already ended are not found. Keepers end by themselves. The ids must still be valid; the
/// function sorts them. Makes only system calls, so that a fork may call it. Any thread.
void EndProcessTrees(std::span<pid_t> processes) noexcept;

/// Ends the descendants of the calling process, which becomes a subreaper. Its own keepers stay. Costs one system call
/// if there are no other children. Makes system calls only. Any thread.
void EndOwnDescendants() noexcept;

/// Ends the processes whose programs were started with this variable, "NAME=value". Processes whose environment the
/// caller may not read keep running. Makes system calls only. Any thread.
void EndMarkedProcesses(std::string_view variable) noexcept;

} // namespace LbOs::Linux
