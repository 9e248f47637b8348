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

#include "base/os/linux/keepername.h"
#include "base/os/linux/processtree.h"
#include "base/os/linux/rawcalls.h"

namespace LbOs::Linux
{

namespace
{

/// Removes a segment if the owner was killed before it marked the segment for removal; marked segments vanish with
/// their last user.
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
        // The process may have been waited for, and its id reused by another process.
        if (const pid_t process = group.process.load(); process > 0 && !HasStartedAfter(process, group.entered))
        {
            processes[count++] = process;
        }
    }
    EndProcessTrees({processes, count});
}

/// The keeper's main function.
[[noreturn]] void keep(SKeeperState& state, pid_t owner)
{
    constexpr int c_PollInterval = 100;
    // A session of its own, so that the terminal's signals do not reach it.
    Call(SYS_setsid);
    Call(SYS_prctl, PR_SET_NAME, c_KeeperName);
    // Closes all inherited descriptors; otherwise the reader of an inherited pipe would wait until the keeper ends.
    Call(SYS_close_range, 0, UINT_MAX, 0);
    Call(SYS_chdir, "/");
    pollfd waiting = {static_cast<int>(Call(SYS_pidfd_open, owner, 0)), POLLIN, 0};
    state.isReady.store(1);
    Call(SYS_futex, &state.isReady, FUTEX_WAKE, 1, 0, 0, 0);
    // Waits until the parent's id changes; a readable descriptor is not enough. Once it has changed, each new child of
    // the owner sees by its own parent's id that the owner has ended, and runs no program.
    while (Call(SYS_getppid) == owner)
    {
        Call(SYS_poll, &waiting, 1, waiting.fd < 0 ? c_PollInterval : c_PollInterval * 10);
    }
    // Files first, because removing them takes little time.
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

} // namespace LbOs::Linux
