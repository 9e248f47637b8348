#include "base/os/linux/processtree.h"

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <climits>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <string_view>

#include <dirent.h>
#include <fcntl.h>
#include <sys/prctl.h>
#include <sys/wait.h>

#include "base/os/linux/keepername.h"
#include "base/os/linux/rawcalls.h"

// The C library's calls for folders and streams allocate memory, which is forbidden in a fork of a threaded process.

namespace LbOs::Linux
{

namespace
{

constexpr std::size_t c_TextSize = 1024;

/// A descriptor used without the C library.
struct SFile
{
    long number;

    explicit SFile(long opened) : number(opened) {}
    SFile(int folder, const char* path, int flags) : number(Call(SYS_openat, folder, path, flags | O_CLOEXEC)) {}
    SFile(const SFile&) = delete;
    SFile& operator=(const SFile&) = delete;
    ~SFile()
    {
        if (number >= 0)
        {
            Call(SYS_close, number);
        }
    }
};

/// Opens a file of a process in /proc.
SFile openProcessFile(const SFile& folder, pid_t id, const char* name)
{
    char path[32];
    std::strcpy(std::to_chars(path, path + sizeof(path), id).ptr, name);
    return {static_cast<int>(folder.number), path, O_RDONLY};
}

/// Reads the start of a kernel file; signals do not interrupt such reads. False on failure.
bool readText(const SFile& file, char (&text)[c_TextSize])
{
    const long size = Call(SYS_read, file.number, text, sizeof(text) - 1);
    text[size < 0 ? 0 : size] = '\0';
    return size > 0;
}

/// The kernel's data about a process.
struct SProcess
{
    pid_t parent = 0;
    bool hasEnded = false;
    bool isKeeper = false;     ///< has the keeper's name, which other processes may also have
    bool isOwnersFork = false; ///< a fork without an exit signal whose creator still runs, like a keeper
    std::uint64_t startTicks = 0;
};

/// Fields after the name, numbered as in the kernel's documentation.
enum EField : int
{
    eF_State = 3,
    eF_Parent = 4,
    eF_Threads = 20,
    eF_StartTicks = 22,
    eF_EndSignal = 38
};

SProcess readFields(const char* text, bool isKeeper)
{
    SProcess process;
    process.isKeeper = isKeeper;
    const bool isZombie = *text == 'Z' || *text == 'X';
    for (int field = eF_State; text != nullptr && field <= eF_EndSignal; ++field)
    {
        const std::uint64_t number = field == eF_State ? 0 : std::strtoull(text, nullptr, 10);
        switch (field)
        {
        case eF_Parent:
            process.parent = static_cast<pid_t>(number);
            break;
        case eF_Threads:
            // A process whose first thread has ended is shown as a zombie while its other threads run.
            process.hasEnded = isZombie && number <= 1;
            break;
        case eF_StartTicks:
            process.startTicks = number;
            break;
        case eF_EndSignal:
            process.isOwnersFork = number == 0;
            break;
        default:
            break;
        }
        text = std::strchr(text, ' ');
        text = text == nullptr ? nullptr : text + 1;
    }
    return process;
}

/// Reads the line "id (name) state parent ..." of /proc; no parent if there is no such process.
SProcess readProcess(const SFile& folder, pid_t id)
{
    char text[c_TextSize];
    if (!readText(openProcessFile(folder, id, "/stat"), text))
    {
        return {};
    }
    // The name may contain parentheses.
    const std::string_view line = text;
    const std::size_t name = line.find('(') + 1;
    const std::size_t end = line.rfind(") ");
    return end == std::string_view::npos || end < name
               ? SProcess()
               : readFields(text + end + 2, line.substr(name, end - name) == c_KeeperName);
}

SFile openProcesses()
{
    return {AT_FDCWD, "/proc", O_RDONLY | O_DIRECTORY};
}

/// Kills a process if its parent is in `parents`, which is sorted. True if the process has not ended yet. With
/// `sparesKeepers`, keepers that have lost their owner are not killed, because they end by themselves.
bool killIfChild(const SFile& folder, pid_t id, std::span<const pid_t> parents, bool sparesKeepers)
{
    const SProcess process = readProcess(folder, id);
    // Spares this process, which may be a fork that kills the children of its parent.
    if (id == Call(SYS_getpid))
    {
        return false;
    }
    // The keepers of these parents end by themselves after their owners.
    if (!std::ranges::binary_search(parents, process.parent) || (process.isKeeper && process.isOwnersFork))
    {
        return false;
    }
    const bool isSpared = process.isKeeper && sparesKeepers;
    return (isSpared || Call(SYS_kill, id, SIGKILL) == 0) && !process.hasEnded;
}

/// Calls `visit(folder, id)` for each process; true if any call returned true.
template<typename F>
bool visitProcesses(const F& visit)
{
    const SFile folder = openProcesses();
    bool isAny = false;
    alignas(dirent64) char entries[4096];
    long size = 0;
    while ((size = Call(SYS_getdents64, folder.number, entries, sizeof(entries))) > 0)
    {
        for (long offset = 0; offset < size;)
        {
            const auto* const entry = reinterpret_cast<const dirent64*>(entries + offset);
            // 0 for entries that are not processes.
            const auto id = static_cast<pid_t>(std::strtol(entry->d_name, nullptr, 10));
            isAny = (id > 0 && visit(folder, id)) || isAny;
            offset += entry->d_reclen;
        }
    }
    return isAny;
}

/// Kills the children of all these processes; true if some are still ending.
bool killChildren(std::span<const pid_t> processes, bool sparesKeepers)
{
    return visitProcesses(
        [=](const SFile& folder, pid_t id) { return killIfChild(folder, id, processes, sparesKeepers); });
}

/// True if the variable was in the environment with which the process started its program.
bool hasVariable(const SFile& folder, pid_t id, std::string_view variable)
{
    const SFile file = openProcessFile(folder, id, "/environ");
    char text[4 * c_TextSize];
    std::size_t kept = 0;
    long size = 0;
    while ((size = Call(SYS_read, file.number, text + kept, sizeof(text) - kept)) > 0)
    {
        const std::string_view known(text, kept + static_cast<std::size_t>(size));
        if (known.find(variable) != std::string_view::npos)
        {
            return true;
        }
        // The variable may continue in the next block.
        kept = std::min(known.size(), variable.size() - 1);
        std::memmove(text, text + known.size() - kept, kept);
    }
    return false;
}

/// Kills a process that has the variable; true if it is still ending.
bool killIfMarked(const SFile& folder, pid_t id, std::string_view variable, bool sparesKeepers)
{
    if (!hasVariable(folder, id, variable))
    {
        return false;
    }
    // The variable is checked again below, because the id may have been reused before the descriptor was opened. The
    // descriptor keeps denoting the same process even if the id is reused later.
    const SFile process(Call(SYS_pidfd_open, id, 0));
    const bool isSpared = sparesKeepers && readProcess(folder, id).isKeeper;
    return hasVariable(folder, id, variable) &&
           (isSpared || Call(SYS_pidfd_send_signal, process.number, SIGKILL, 0, 0) == 0);
}

constexpr std::int64_t c_Millisecond = 1'000'000;

/// Calls `kill(sparesKeepers)` until it returns false, because no process is left, or until the time limit is reached.
template<typename F>
void killUntilGone(const F& kill)
{
    // Limits the wait for processes that the system cannot end, for example inside a driver.
    constexpr std::int64_t c_Longest = 3000 * c_Millisecond;
    // Keepers of killed owners need a moment to end the processes that their owners left. The wait is short because any
    // process may use the keepers' name.
    constexpr std::int64_t c_LongestForKeepers = 500 * c_Millisecond;
    constexpr timespec c_Pause = {0, c_Millisecond};
    const std::int64_t begin = GetNanoseconds(CLOCK_MONOTONIC);
    for (std::int64_t taken = 0; taken < c_Longest; taken = GetNanoseconds(CLOCK_MONOTONIC) - begin)
    {
        // Children of ended processes get a new parent and may be missed by one pass, hence two.
        const bool sparesKeepers = taken < c_LongestForKeepers;
        if (!kill(sparesKeepers) && !kill(sparesKeepers))
        {
            return;
        }
        Call(SYS_nanosleep, &c_Pause, 0);
    }
}

void endDescendants(std::span<const pid_t> processes)
{
    killUntilGone([processes](bool sparesKeepers) { return killChildren(processes, sparesKeepers); });
}

void endMarked(std::string_view variable)
{
    killUntilGone([variable](bool sparesKeepers) {
        return visitProcesses(
            [=](const SFile& folder, pid_t id) { return killIfMarked(folder, id, variable, sparesKeepers); });
    });
}

/// Calls the function. If no descriptor is free, calls it in a fork that first closes its own copies of the
/// descriptors.
template<typename F>
void callWithFiles(const F& function)
{
    if (openProcesses().number >= 0)
    {
        function();
        return;
    }
    const pid_t copy = CopyProcess();
    if (copy == 0)
    {
        Call(SYS_close_range, 0, UINT_MAX, 0);
        function();
        EndCopy();
    }
    while (copy > 0 && Call(SYS_waitid, P_PID, copy, 0, WEXITED | __WCLONE, 0) != 0 && errno == EINTR)
    {
    }
}

} // namespace

void KeepDescendants() noexcept
{
    Call(SYS_prctl, PR_SET_CHILD_SUBREAPER, 1, 0, 0, 0);
}

bool HasStartedAfter(pid_t process, std::int64_t time) noexcept
{
    const SFile folder = openProcesses();
    const SProcess found = readProcess(folder, process);
    // The kernel counts whole ticks and rounds down.
    const auto tick = static_cast<std::uint64_t>(c_NanosecondsPerSecond / sysconf(_SC_CLK_TCK));
    return found.startTicks * tick > static_cast<std::uint64_t>(time);
}

void EndProcessTrees(std::span<pid_t> processes) noexcept
{
    std::ranges::sort(processes);
    // As targets of kill, -1 means all processes, 0 the caller's group, and 1 the first process.
    while (!processes.empty() && processes.front() <= 1)
    {
        processes = processes.subspan(1);
    }
    // Stopped processes start no others, and the ids of their children cannot be reused.
    for (const pid_t process : processes)
    {
        Call(SYS_kill, process, SIGSTOP);
    }
    if (!processes.empty())
    {
        callWithFiles([processes] { endDescendants(processes); });
    }
    for (const pid_t process : processes)
    {
        Call(SYS_kill, -process, SIGKILL);
        // The process may have changed its group.
        Call(SYS_kill, process, SIGKILL);
    }
}

void EndOwnDescendants() noexcept
{
    siginfo_t end = {};
    if (Call(SYS_waitid, P_ALL, 0, &end, WEXITED | WNOHANG | WNOWAIT, 0) == 0)
    {
        KeepDescendants();
        const auto self = static_cast<pid_t>(Call(SYS_getpid));
        callWithFiles([&self] { endDescendants({&self, 1}); });
    }
}

void EndMarkedProcesses(std::string_view variable) noexcept
{
    callWithFiles([variable] { endMarked(variable); });
}

} // namespace LbOs::Linux
