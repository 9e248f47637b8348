#include "base/os/linux/keeperprocess.h"

#include <climits>
#include <csignal>
#include <ctime>
#include <span>

#include <linux/futex.h>
#include <poll.h>
#include <sys/ipc.h>
#include <sys/prctl.h>
#include <sys/shm.h>

#include "base/os/linux/processtree.h"
#include "base/os/linux/rawcalls.h"

namespace LbOs::Linux
{

namespace
{

/// Removes what the owner had no time to: else it goes by itself.
void removeMemory(const char* path, pid_t owner)
{
    const long segment = Call(SYS_shmget, ToMemoryKey(path), 0, 0);
    shmid_ds status = {};
    if (segment >= 0 && Call(SYS_shmctl, segment, IPC_STAT, &status) == 0 && status.shm_cpid == owner)
    {
        Call(SYS_shmctl, segment, IPC_RMID, 0);
    }
}

void removeFiles(const SKeeperState& state, pid_t owner)
{
    for (const SKeptFile& file : state.files)
    {
        if (file.state.load() == SKeptFile::eS_Kept)
        {
            removeMemory(file.path, owner);
            Call(SYS_unlink, file.path);
        }
    }
}

void endGroups(const SKeeperState& state)
{
    pid_t processes[c_KeptGroups];
    std::size_t count = 0;
    for (const SKeptGroup& group : state.groups)
    {
        // By now others may have waited for the process, and the system may have given its number to another one.
        if (const pid_t process = group.process.load(); process > 0 && !HasStartedAfter(process, group.entered))
        {
            processes[count++] = process;
        }
    }
    EndProcessTrees({processes, count});
}

/// The keeper's whole life.
[[noreturn]] void keep(SKeeperState& state, pid_t owner)
{
    constexpr int c_LookInterval = 100;
    // Out of reach of what a terminal sends to its processes.
    Call(SYS_setsid);
    Call(SYS_prctl, PR_SET_NAME, c_KeeperName);
    // All that the fork has inherited: an open pipe, say, whose reader waits for its end.
    Call(SYS_close_range, 0, UINT_MAX, 0);
    Call(SYS_chdir, "/");
    pollfd waiting = {static_cast<int>(Call(SYS_pidfd_open, owner, 0)), POLLIN, 0};
    state.isReady.store(1);
    Call(SYS_futex, &state.isReady, FUTEX_WAKE, 1, 0, 0, 0);
    // By the parent's number and not by the handle alone: once it has changed, no child-to-be can take the owner for
    // alive any more.
    while (Call(SYS_getppid) == owner)
    {
        Call(SYS_poll, &waiting, 1, waiting.fd < 0 ? c_LookInterval : c_LookInterval * 10);
    }
    // Names first: it takes no time.
    removeFiles(state, owner);
    endGroups(state);
    EndCopy();
}

} // namespace

pid_t ForkKeeper(SKeeperState& state) noexcept
{
    const auto owner = static_cast<pid_t>(Call(SYS_getpid));
    const pid_t keeper = CopyProcess();
    if (keeper == 0)
    {
        keep(state, owner);
    }
    return keeper;
}

void EnterKeptGroup(SKeptGroup& group) noexcept
{
    group.entered = GetNanoseconds(CLOCK_BOOTTIME);
    group.process.store(static_cast<pid_t>(Call(SYS_getpid)));
}

int ToMemoryKey(const char* path) noexcept
{
    std::uint32_t hash = 2166136261U;
    for (const char* character = path; *character != '\0'; ++character)
    {
        hash = (hash ^ static_cast<unsigned char>(*character)) * 16777619U;
    }
    // 0 stands for no key.
    return static_cast<int>(hash | 1U);
}

} // namespace LbOs::Linux
