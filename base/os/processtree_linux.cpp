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

constexpr std::size_t c_TextSize = 128;

/// The beginning of a file of the kernel; false when there is none.
bool readText(int folder, const char* path, char (&text)[c_TextSize])
{
    const CDescriptor file(openat(folder, path, O_RDONLY | O_CLOEXEC));
    const ssize_t size = file.IsOpen() ? Retry([&] { return read(file.Get(), text, sizeof(text) - 1); }) : -1;
    text[size < 0 ? 0 : size] = '\0';
    return size > 0;
}

struct SLine
{
    bool isChild = false;
    bool hasEnded = false;
};

/// Of a process's line "number (name) state parent ...". Keepers are nobody's children.
SLine readLine(std::string_view line, pid_t parent)
{
    // A name may hold brackets of its own.
    const std::size_t name = line.find('(') + 1;
    const std::size_t end = line.rfind(") ");
    if (end == std::string_view::npos || end < name)
    {
        return {};
    }
    const char state = line[end + 2];
    const bool isKeeper = line.substr(name, end - name) == c_KeeperName;
    return {!isKeeper && std::strtol(line.data() + end + 3, nullptr, 10) == parent, state == 'Z' || state == 'X'};
}

/// Kills a process if it is a child of that one; true when it has still to end.
bool killIfChild(int folder, pid_t process, pid_t parent)
{
    char path[32];
    std::strcpy(std::to_chars(path, path + sizeof(path), process).ptr, "/stat");
    char text[c_TextSize];
    const SLine line = readText(folder, path, text) ? readLine(text, parent) : SLine();
    if (line.isChild)
    {
        // One whose first thread alone has ended looks as if it had ended as a whole.
        kill(process, SIGKILL);
    }
    return line.isChild && !line.hasEnded;
}

/// Kills the children of a process; true when there were any.
bool killChildren(pid_t process)
{
    const CDescriptor folder(open("/proc", O_RDONLY | O_DIRECTORY | O_CLOEXEC));
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
            wereThere = (number > 0 && killIfChild(folder.Get(), number, process)) || wereThere;
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

void EndProcessTree(pid_t process) noexcept
{
    // Those that the system cannot end, in a driver's call say, are not waited for any longer.
    constexpr int c_MostRounds = 1000;
    constexpr timespec c_Pause = {0, 1'000'000};
    // It stands still, so that it starts no more, and so that the numbers of its children stay theirs.
    kill(process, SIGSTOP);
    bool wereThere = killChildren(process);
    for (int round = 0; round < c_MostRounds && wereThere; ++round)
    {
        nanosleep(&c_Pause, nullptr);
        // Children of those that end become its own, behind the back of one look perhaps.
        wereThere = killChildren(process) || killChildren(process);
    }
    kill(-process, SIGKILL);
    // It may have gone to another group.
    kill(process, SIGKILL);
}

} // namespace LbOs::Linux
