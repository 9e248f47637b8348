/// What must not outlive the present process, and the small process that sees to it. Internal to the Linux side.
///
/// A process that is killed cleans nothing up. The keeper is a fork that waits for that and then ends the process
/// trees and removes the files that are in its state. It is started with the first entry, or ahead of it, and with the
/// next one when somebody has ended it, and ends with this process. Any thread.
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

/// Name of the process. Others may have it, too.
inline constexpr const char c_KeeperName[] = "LuKeeper";

/// An entry for a process with what it starts, which leads a group and keeps its descendants.
struct SKeptGroup
{
    std::atomic<pid_t> process; ///< 0 while free, -1 while taken without a process yet
    std::int64_t entered;       ///< when, in nanoseconds since the system's start
};

/// Starts the keeper, unless there is one. As a copy it keeps all the memory that the process has at that time.
void EnsureKeeper();

/// A free entry; null when there is none, or no keeper. The caller releases it while the group's number is still its
/// own, unless the process never became a program.
SKeptGroup* TakeKeptGroup();
void ReleaseKeptGroup(SKeptGroup* group) noexcept;

/// The child-to-be enters itself before it is anything else, so that no moment is without a keeper. Makes system calls
/// only.
void EnterKeptGroup(SKeptGroup& group) noexcept;

/// A key for shared memory that belongs to the file of that path: with the file goes what its owner has made by that
/// key.
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

/// To be called before the file is made; null when there is no entry, or the path is too long. Releasing does not
/// remove the file.
SKeptFile* KeepFile(const char* path);
void ReleaseKeptFile(SKeptFile* file) noexcept;

} // namespace LbOs::Linux
