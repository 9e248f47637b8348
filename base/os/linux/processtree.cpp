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

// The run-time's calls for folders and streams take memory, which a fork of a process with threads must not.

namespace LbOs::Linux
{

namespace
{

constexpr std::size_t c_TextSize = 1024;

/// A descriptor without the run-time's functions.
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

/// The beginning of a file of the kernel, which no signal interrupts; false when there is none.
bool readText(const SFile& folder, const char* path, char (&text)[c_TextSize])
{
    const SFile file(static_cast<int>(folder.number), path, O_RDONLY);
    const long size = Call(SYS_read, file.number, text, sizeof(text) - 1);
    text[size < 0 ? 0 : size] = '\0';
    return size > 0;
}

/// What the kernel says about a process.
struct SProcess
{
    pid_t parent = 0;
    bool hasEnded = false;
    bool isKeeper = false;     ///< to judge by its name
    bool isOwnersFork = false; ///< it has still the parent that forked it without a signal at its end, as keepers are
    std::uint64_t startTicks = 0;
};

/// Of the fields that stand behind the name, by the numbers that the kernel's documentation gives them.
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
            // One whose first thread alone has ended looks as if it had ended as a whole.
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

/// From the line "number (name) state parent ..." of a folder that lists processes; without a parent when there is no
/// such process.
SProcess readProcess(const SFile& folder, pid_t number)
{
    char path[32];
    std::strcpy(std::to_chars(path, path + sizeof(path), number).ptr, "/stat");
    char text[c_TextSize];
    if (!readText(folder, path, text))
    {
        return {};
    }
    // A name may hold brackets of its own.
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

/// Kills a process if it is a child of one of those, which are sorted; true when it has still to end, and can. With
/// `sparesKeepers` one that has lost its owner may end by itself.
bool killIfChild(const SFile& folder, pid_t number, std::span<const pid_t> parents, bool sparesKeepers)
{
    const SProcess process = readProcess(folder, number);
    // The keepers of the parents themselves end after these.
    if (!std::ranges::binary_search(parents, process.parent) || (process.isKeeper && process.isOwnersFork))
    {
        return false;
    }
    const bool isSpared = process.isKeeper && sparesKeepers;
    return (isSpared || Call(SYS_kill, number, SIGKILL) == 0) && !process.hasEnded;
}

/// Kills the children of all these processes; true when there were any.
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
            // 0 for what is no process.
            const auto number = static_cast<pid_t>(std::strtol(entry->d_name, nullptr, 10));
            wereThere = (number > 0 && killIfChild(folder, number, processes, sparesKeepers)) || wereThere;
            offset += entry->d_reclen;
        }
    }
    return wereThere;
}

/// Until none is left, or has to be waited for any longer.
void endDescendants(std::span<const pid_t> processes)
{
    constexpr std::int64_t c_Millisecond = 1'000'000;
    // Those that the system cannot end, in a driver's call say, are not waited for any longer.
    constexpr std::int64_t c_Longest = 3000 * c_Millisecond;
    // Keepers whose owners have just been killed need a moment for what these leave behind. Any process may have their
    // name, so it is no longer than a moment.
    constexpr std::int64_t c_LongestForKeepers = 500 * c_Millisecond;
    constexpr timespec c_Pause = {0, c_Millisecond};
    const std::int64_t begin = GetNanoseconds(CLOCK_MONOTONIC);
    for (std::int64_t taken = 0; taken < c_Longest; taken = GetNanoseconds(CLOCK_MONOTONIC) - begin)
    {
        // Children of those that end become its own, behind the back of one look perhaps.
        const bool sparesKeepers = taken < c_LongestForKeepers;
        if (!killChildren(processes, sparesKeepers) && !killChildren(processes, sparesKeepers))
        {
            return;
        }
        Call(SYS_nanosleep, &c_Pause, 0);
    }
}

/// Where no descriptor is free, a copy of the process has all of its own.
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
    // The kernel counts whole ticks, and leaves out what is no whole one.
    const auto tick = static_cast<std::uint64_t>(c_NanosecondsPerSecond / sysconf(_SC_CLK_TCK));
    return found.startTicks * tick > static_cast<std::uint64_t>(time);
}

void EndProcessTrees(std::span<pid_t> processes) noexcept
{
    std::ranges::sort(processes);
    // What those numbers stand for is no group or not the caller's: all processes, its own group, the first process.
    while (!processes.empty() && processes.front() <= 1)
    {
        processes = processes.subspan(1);
    }
    // They stand still, so that they start no more, and so that the numbers of their children stay theirs.
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
        // It may have gone to another group.
        Call(SYS_kill, process, SIGKILL);
    }
}

} // namespace LbOs::Linux
