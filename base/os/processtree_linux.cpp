#include "base/os/processtree_linux.h"

#include <charconv>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <string_view>

#include <dirent.h>
#include <fcntl.h>
#include <sys/prctl.h>
#include <unistd.h>

#include "base/os/descriptor_linux.h"
#include "base/os/keeper_linux.h"

// The run-time's calls for folders and streams take memory, which a fork of a process with threads must not.

namespace LbOs::Linux
{

namespace
{

constexpr std::size_t c_TextSize = 1024;

/// The beginning of a file of the kernel; false when there is none.
bool readText(int folder, const char* path, char (&text)[c_TextSize])
{
    const CDescriptor file(openat(folder, path, O_RDONLY | O_CLOEXEC));
    const ssize_t size = file.IsOpen() ? Retry([&] { return read(file.Get(), text, sizeof(text) - 1); }) : -1;
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
SProcess readProcess(int folder, pid_t number)
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

CDescriptor openProcesses()
{
    return CDescriptor(open("/proc", O_RDONLY | O_DIRECTORY | O_CLOEXEC));
}

/// Kills a process if it is a child of that one; true when it has still to end. With `sparesKeepers` one that has lost
/// its owner may end by itself.
bool killIfChild(int folder, pid_t number, pid_t parent, bool sparesKeepers)
{
    const SProcess process = readProcess(folder, number);
    // The keeper of the parent itself ends after that.
    if (process.parent != parent || (process.isKeeper && process.isOwnersFork))
    {
        return false;
    }
    if (!process.isKeeper || !sparesKeepers)
    {
        kill(number, SIGKILL);
    }
    return !process.hasEnded;
}

/// Kills the children of a process; true when there were any.
bool killChildren(pid_t process, bool sparesKeepers)
{
    const CDescriptor folder = openProcesses();
    bool wereThere = false;
    alignas(dirent64) char entries[4096];
    ssize_t size = 0;
    while (folder.IsOpen() && (size = getdents64(folder.Get(), entries, sizeof(entries))) > 0)
    {
        for (ssize_t offset = 0; offset < size;)
        {
            const auto* const entry = reinterpret_cast<const dirent64*>(entries + offset);
            // 0 for what is no process.
            const auto number = static_cast<pid_t>(std::strtol(entry->d_name, nullptr, 10));
            wereThere = (number > 0 && killIfChild(folder.Get(), number, process, sparesKeepers)) || wereThere;
            offset += entry->d_reclen;
        }
    }
    return wereThere;
}

} // namespace

void KeepDescendants() noexcept
{
    prctl(PR_SET_CHILD_SUBREAPER, 1);
}

bool HasStartedAfter(pid_t process, std::int64_t time) noexcept
{
    constexpr std::uint64_t c_NanosecondsPerSecond = 1'000'000'000;
    const CDescriptor folder = openProcesses();
    const SProcess found = folder.IsOpen() ? readProcess(folder.Get(), process) : SProcess();
    // The kernel counts whole ticks, and leaves out what is no whole one.
    const auto tick = c_NanosecondsPerSecond / static_cast<std::uint64_t>(sysconf(_SC_CLK_TCK));
    return found.startTicks * tick > static_cast<std::uint64_t>(time);
}

void EndProcessTree(pid_t process) noexcept
{
    // Those that the system cannot end, in a driver's call say, are not waited for any longer.
    constexpr int c_MostRounds = 1000;
    // Keepers whose owners have just been killed need a moment for what these leave behind. Any process may have their
    // name, so it is no longer than a moment.
    constexpr int c_RoundsForKeepers = 300;
    constexpr timespec c_Pause = {0, 1'000'000};
    // It stands still, so that it starts no more, and so that the numbers of its children stay theirs.
    kill(process, SIGSTOP);
    bool wereThere = killChildren(process, true);
    for (int round = 0; round < c_MostRounds && wereThere; ++round)
    {
        nanosleep(&c_Pause, nullptr);
        // Children of those that end become its own, behind the back of one look perhaps.
        const bool sparesKeepers = round < c_RoundsForKeepers;
        wereThere = killChildren(process, sparesKeepers) || killChildren(process, sparesKeepers);
    }
    kill(-process, SIGKILL);
    // It may have gone to another group.
    kill(process, SIGKILL);
}

} // namespace LbOs::Linux
