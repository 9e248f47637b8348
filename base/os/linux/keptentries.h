/// What the keeper ends and removes. Internal to the Linux side.
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

/// An entry for a process with its descendants; the process leads a group and is a subreaper.
struct SKeptGroup
{
    std::atomic<pid_t> process; ///< 0: free; -1: taken, no process yet
    std::int64_t entered;       ///< time of EnterKeptGroup in nanoseconds since boot
};

/// Fills in the entry. The child calls this before it runs its program, so that the program never runs without a
/// keeper. Makes only system calls.
void EnterKeptGroup(SKeptGroup& group) noexcept;

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

/// The key of shared memory that belongs to the file at `path`: the keeper removes the owner's memory with this key
/// when it removes the file.
int ToMemoryKey(const char* path) noexcept;

} // namespace LbOs::Linux
