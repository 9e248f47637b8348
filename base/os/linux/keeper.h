/// The keeper: a small process that ends and removes what must not outlive the current process. Internal to the Linux
/// side.
///
/// A killed process cannot clean up. The keeper is a fork that waits for the end of this process and then ends the
/// process trees and removes the files listed in its state. It is started by EnsureKeeper or with the first entry, and
/// again with the next entry if it was killed; it ends with this process. Any thread.
#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>

#include <sys/types.h>

namespace LbOs::Linux
{

inline constexpr std::size_t c_KeptGroups = 1024;
inline constexpr std::size_t c_KeptFiles = 4096;
inline constexpr std::size_t c_KeptPathCapacity = 128;

/// The keeper's process name. Other processes may have the same name.
inline constexpr const char c_KeeperName[] = "LuKeeper";

/// An entry for a process with its descendants; the process leads a group and is a subreaper.
struct SKeptGroup
{
    std::atomic<pid_t> process; ///< 0: free; -1: taken, no process yet
    std::int64_t entered;       ///< start time in nanoseconds since boot
};

/// Starts the keeper if none is running. Being a fork, it keeps the memory that the process has at that time.
void EnsureKeeper();

/// Returns a free entry, or null if all are taken or no keeper runs. If the process has run a program, the caller must
/// release the entry before the process id can be reused.
SKeptGroup* TakeKeptGroup();
void ReleaseKeptGroup(SKeptGroup* group) noexcept;

/// The child calls this before anything else, so that it is never without a keeper. Makes only system calls.
void EnterKeptGroup(SKeptGroup& group) noexcept;

/// The key of shared memory that belongs to the file at `path`: the keeper removes the owner's memory with this key
/// when it removes the file.
int ToMemoryKey(const char* path) noexcept;

/// An entry for a file.
struct SKeptFile
{
    enum EState : int
    {
        eS_Free,
        eS_Writing,
        eS_Kept
    };

    std::atomic<int> state;
    char path[c_KeptPathCapacity];
};

/// Call before creating the file; null if no entry is free or the path is too long. Releasing does not remove the file.
SKeptFile* KeepFile(const char* path);
void ReleaseKeptFile(SKeptFile* file) noexcept;

} // namespace LbOs::Linux
