#include "base/os/linux/keeper.h"

#include <chrono>
#include <csignal>
#include <cstring>
#include <ctime>
#include <mutex>
#include <new>

#include <linux/futex.h>
#include <sys/mman.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include "base/os/linux/descriptor.h"
#include "base/os/linux/keeperprocess.h"

namespace LbOs::Linux
{

namespace
{

/// For waitid, which takes an int.
constexpr int c_WaitForClone = static_cast<int>(__WCLONE);

/// True if the keeper is running; removes the zombie of one that has ended. An ordinary wait() in this process does not
/// report the keeper.
bool isKeeperThere(pid_t keeper)
{
    siginfo_t end = {};
    return waitid(P_PID, static_cast<id_t>(keeper), &end, WEXITED | WNOHANG | c_WaitForClone) == 0 && end.si_pid == 0;
}

/// Waits until the keeper is ready: before that, code that ends this process's descendants cannot recognise the keeper
/// by its name. On a busy machine this may take long, and signals may interrupt single waits.
bool waitReady(const SKeeperState& state, pid_t keeper)
{
    using Clock = std::chrono::steady_clock;
    constexpr timespec c_PollInterval = {0, 100'000'000};
    const Clock::time_point end = Clock::now() + std::chrono::seconds(60);
    while (state.isReady == 0 && isKeeperThere(keeper) && Clock::now() < end)
    {
        syscall(SYS_futex, &state.isReady, FUTEX_WAIT, 0, &c_PollInterval, nullptr, 0);
    }
    return state.isReady != 0;
}

/// The id of a keeper that is ready; negative on failure.
pid_t startKeeper(SKeeperState& state)
{
    state.isReady = 0;
    const pid_t keeper = ForkKeeper(state);
    if (keeper > 0 && !waitReady(state, keeper))
    {
        siginfo_t end = {};
        kill(keeper, SIGKILL);
        Retry([&] { return waitid(P_PID, static_cast<id_t>(keeper), &end, WEXITED | c_WaitForClone); });
        return -1;
    }
    return keeper;
}

/// Ensures that a keeper is running; replaces one that was killed.
bool ensureKeeper(SKeeperState& state)
{
    static std::mutex s_lock;
    static pid_t s_keeper = -1;
    static const pid_t s_owner = getpid();
    // A fork made by a test uses its parent's keeper. It must not take the lock, which another thread may have held
    // during the fork.
    if (getpid() != s_owner)
    {
        return true;
    }
    const std::lock_guard lock(s_lock);
    if (s_keeper < 0 || !isKeeperThere(s_keeper))
    {
        s_keeper = startKeeper(state);
    }
    return s_keeper > 0;
}

SKeeperState* makeState()
{
    void* const memory = mmap(nullptr, sizeof(SKeeperState), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    return memory == MAP_FAILED ? nullptr : new (memory) SKeeperState;
}

/// Null if no keeper can be started. The state is never released, because the keeper needs it to the end.
SKeeperState* getState()
{
    static SKeeperState* const s_state = makeState();
    return s_state != nullptr && ensureKeeper(*s_state) ? s_state : nullptr;
}

} // namespace

void EnsureKeeper()
{
    getState();
}

SKeptGroup* TakeKeptGroup()
{
    SKeeperState* const state = getState();
    for (std::size_t index = 0; state != nullptr && index < c_KeptGroups; ++index)
    {
        pid_t free = 0;
        if (state->groups[index].process.compare_exchange_strong(free, -1))
        {
            return &state->groups[index];
        }
    }
    return nullptr;
}

void ReleaseKeptGroup(SKeptGroup* group) noexcept
{
    if (group != nullptr)
    {
        group->process = 0;
    }
}

SKeptFile* KeepFile(const char* path)
{
    SKeeperState* const state = std::strlen(path) < c_KeptPathCapacity ? getState() : nullptr;
    for (std::size_t index = 0; state != nullptr && index < c_KeptFiles; ++index)
    {
        SKeptFile& file = state->files[index];
        int free = SKeptFile::eS_Free;
        if (file.state.compare_exchange_strong(free, SKeptFile::eS_Writing))
        {
            std::strcpy(file.path, path);
            file.state = SKeptFile::eS_Kept;
            return &file;
        }
    }
    return nullptr;
}

void ReleaseKeptFile(SKeptFile* file) noexcept
{
    if (file != nullptr)
    {
        file->state = SKeptFile::eS_Free;
    }
}

} // namespace LbOs::Linux
