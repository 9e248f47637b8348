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

#include "base/os/linux/keeper.h"
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

/// Reads the start of a kernel file; signals do not interrupt such reads. False on failure.
bool readText(const SFile& folder, const char* path, char (&text)[c_TextSize])
{
    const SFile file(static_cast<int>(folder.number), path, O_RDONLY);
    const long size = Call(SYS_read, file.number, text, sizeof(text) - 1);
    text[size < 0 ? 0 : size] = '\0';
    return size > 0;
}

/// The kernel's data about a process.
struct SProcess
{
    pid_t parent = 0;
    bool hasEnded = false;
    bool isKeeper = false;     ///< only by its name, which other processes may use
    bool isOwnersFork = false; ///< forked without an exit signal, as keepers are, and still a child of its creator
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

/// Reads the line "number (name) state parent ..." of /proc; no parent if there is no such process.
SProcess readProcess(const SFile& folder, pid_t number)
{
    char path[32];
    std::strcpy(std::to_chars(path, path + sizeof(path), number).ptr, "/stat");
    char text[c_TextSize];
    if (!readText(folder, path, text))
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

/// Kills a process if its parent is in `parents`, which is sorted. True if it is still ending. With `sparesKeepers`
/// does not kill keepers that have lost their owner: they end by themselves.
bool killIfChild(const SFile& folder, pid_t number, std::span<const pid_t> parents, bool sparesKeepers)
{
    const SProcess process = readProcess(folder, number);
    // The parents' own keepers end after their owners.
    if (!std::ranges::binary_search(parents, process.parent) || (process.isKeeper && process.isOwnersFork))
    {
        return false;
    }
    const bool isSpared = process.isKeeper && sparesKeepers;
    return (isSpared || Call(SYS_kill, number, SIGKILL) == 0) && !process.hasEnded;
}

/// Kills the children of all these processes; true if some are still ending.
bool killChildren(std::span<const pid_t> processes, bool sparesKeepers)
{
    const SFile folder = openProcesses();
    bool wereThere = false;
    alignas(dirent64) char entries[4096];
    long size = 0;
    while ((size = Call(SYS_getdents64, folder.number, entries, sizeof(entries))) > 0)
    {
        for (long offset = 0; offset < size;)
        {
            const auto* const entry = reinterpret_cast<const dirent64*>(entries + offset);
            // 0 for entries that are no processes.
            const auto number = static_cast<pid_t>(std::strtol(entry->d_name, nullptr, 10));
            wereThere = (number > 0 && killIfChild(folder, number, processes, sparesKeepers)) || wereThere;
            offset += entry->d_reclen;
        }
    }
    return wereThere;
}

/// Repeats until no descendant is left or the time limit is reached.
void endDescendants(std::span<const pid_t> processes)
{
    constexpr std::int64_t c_Millisecond = 1'000'000;
    // Limits the wait for processes that the system cannot end, for example inside a driver.
    constexpr std::int64_t c_Longest = 3000 * c_Millisecond;
    // Keepers of killed owners need a moment to end what their owners left. The wait is short because any process may
    // use their name.
    constexpr std::int64_t c_LongestForKeepers = 500 * c_Millisecond;
    constexpr timespec c_Pause = {0, c_Millisecond};
    const std::int64_t begin = GetNanoseconds(CLOCK_MONOTONIC);
    for (std::int64_t taken = 0; taken < c_Longest; taken = GetNanoseconds(CLOCK_MONOTONIC) - begin)
    {
        // Children of ended processes get a new parent and may be missed by one pass, hence two.
        const bool sparesKeepers = taken < c_LongestForKeepers;
        if (!killChildren(processes, sparesKeepers) && !killChildren(processes, sparesKeepers))
        {
            return;
        }
        Call(SYS_nanosleep, &c_Pause, 0);
    }
}

/// If no descriptor is free, a fork closes its own copies and does the work.
void endDescendantsFromCopy(std::span<const pid_t> processes)
{
    const pid_t copy = CopyProcess();
    if (copy == 0)
    {
        Call(SYS_close_range, 0, UINT_MAX, 0);
        endDescendants(processes);
        EndCopy();
    }
    while (copy > 0 && Call(SYS_waitid, P_PID, copy, 0, WEXITED | __WCLONE, 0) != 0 && errno == EINTR)
    {
    }
}

bool canLookAtProcesses()
{
    return openProcesses().number >= 0;
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
    // As targets of kill, these numbers mean all processes, the caller's group and the first process.
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
        (canLookAtProcesses() ? endDescendants : endDescendantsFromCopy)(processes);
    }
    for (const pid_t process : processes)
    {
        Call(SYS_kill, -process, SIGKILL);
        // The process may have changed its group.
        Call(SYS_kill, process, SIGKILL);
    }
}

} // namespace LbOs::Linux
