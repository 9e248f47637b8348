/// What must not outlive the present process, and the small process that sees to it. Internal to the Linux side.
///
/// A process that is killed cleans nothing up. The keeper is a fork that waits for that and then ends the process
/// trees and removes the files that are in its books. It is started with the first entry and ends with this process.
/// Any thread.
#pragma once

#include <atomic>
#include <cstddef>

#include <sys/types.h>

namespace LbOs::Linux
{

inline constexpr std::size_t c_KeptGroups = 1024;
inline constexpr std::size_t c_KeptFiles = 4096;
inline constexpr std::size_t c_KeptPathCapacity = 128;

/// Name of the process, by which another one's keeper is known.
inline constexpr const char c_KeeperName[] = "LuKeeper";

/// An entry for a process with what it starts, which leads a group and keeps its descendants: 0 while free, -1 while
/// taken without a group yet.
using KeptGroup = std::atomic<pid_t>;

/// A free entry; null when there is none, or no keeper. The child-to-be writes its own number into it before it is
/// anything else, so that no moment is without a keeper. The caller releases it while the group's number is still its
/// own.
KeptGroup* TakeKeptGroup();
void ReleaseKeptGroup(KeptGroup* group) noexcept;

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
