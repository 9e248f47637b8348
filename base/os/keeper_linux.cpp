#include "base/os/keeper_linux.h"

#include <cerrno>
#include <climits>
#include <csignal>
#include <cstring>
#include <ctime>
#include <new>

#include <linux/futex.h>
#include <poll.h>
#include <sys/ipc.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/shm.h>
#include <sys/syscall.h>
#include <unistd.h>

#include "base/os/processtree_linux.h"

namespace LbOs::Linux
{

namespace
{

/// Shared with the keeper, and all zero at first.
struct SBooks
{
    std::atomic<int> isReady; ///< the keeper can no longer be taken for anything else
    SKeptGroup groups[c_KeptGroups];
    SKeptFile files[c_KeptFiles];
};

/// Removes what the owner had no time to: else it goes by itself.
void removeMemory(const char* path, pid_t owner)
{
    const int segment = shmget(ToMemoryKey(path), 0, 0);
    shmid_ds status = {};
    if (segment >= 0 && shmctl(segment, IPC_STAT, &status) == 0 && status.shm_cpid == owner)
    {
        shmctl(segment, IPC_RMID, nullptr);
    }
}

void clean(SBooks& books, pid_t owner)
{
    for (const SKeptGroup& group : books.groups)
    {
        // By now others may have waited for the process, and the system may have given its number to another one.
        if (const pid_t process = group.process; process > 0 && !HasStartedAfter(process, group.entered))
        {
            EndProcessTree(process);
        }
    }
    for (const SKeptFile& file : books.files)
    {
        if (file.state.load() == SKeptFile::eS_Kept)
        {
            removeMemory(file.path, owner);
            unlink(file.path);
        }
    }
}

/// Lets go of all that the fork has inherited: an open pipe, say, whose reader waits for its end.
int keepOnly(int file)
{
    const int kept = file < 0 ? -1 : dup2(file, 0);
    close_range(kept < 0 ? 0U : 1U, UINT_MAX, 0);
    return kept;
}

/// The keeper's whole life. The fork of a process with threads may only make system calls.
[[noreturn]] void keep(SBooks& books, pid_t owner, int ownerFile)
{
    constexpr int c_LookInterval = 100;
    // Out of reach of what a terminal sends to its processes.
    setsid();
    sigset_t all;
    sigfillset(&all);
    sigprocmask(SIG_SETMASK, &all, nullptr);
    prctl(PR_SET_NAME, c_KeeperName);
    books.isReady = 1;
    syscall(SYS_futex, &books.isReady, FUTEX_WAKE, 1, nullptr, nullptr, 0);
    [[maybe_unused]] const int left = chdir("/");
    pollfd waiting = {keepOnly(ownerFile), POLLIN, 0};
    // By the parent's number and not by the handle alone: once it has changed, no child-to-be can take the owner for
    // alive any more.
    while (getppid() == owner)
    {
        poll(&waiting, 1, waiting.fd < 0 ? c_LookInterval : c_LookInterval * 10);
    }
    clean(books, owner);
    _exit(0);
}

SBooks* startKeeper()
{
    void* const memory = mmap(nullptr, sizeof(SBooks), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    if (memory == MAP_FAILED)
    {
        return nullptr;
    }
    auto* const books = new (memory) SBooks;
    const pid_t owner = getpid();
    const auto ownerFile = static_cast<int>(syscall(SYS_pidfd_open, owner, 0));
    // Without a signal at its end the fork is none of the children that a test's own wait() would see.
    const long keeper = syscall(SYS_clone, 0, nullptr, nullptr, nullptr, nullptr);
    if (keeper == 0)
    {
        keep(*books, owner, ownerFile);
    }
    if (ownerFile >= 0)
    {
        close(ownerFile);
    }
    // Whoever ends the present process with all that belongs to it knows the keeper by its name and session. It may
    // take a while where there is much else to do, but not for ever.
    constexpr timespec c_Longest = {1, 0};
    while (keeper > 0 && books->isReady == 0 &&
           syscall(SYS_futex, &books->isReady, FUTEX_WAIT, 0, &c_Longest, nullptr, 0) != 0 && errno == EINTR)
    {
    }
    return keeper > 0 ? books : nullptr;
}

/// Null when there is no keeper. Never released: the keeper needs it to the end.
SBooks* getBooks()
{
    static SBooks* const s_books = startKeeper();
    return s_books;
}

} // namespace

SKeptGroup* TakeKeptGroup()
{
    SBooks* const books = getBooks();
    for (std::size_t index = 0; books != nullptr && index < c_KeptGroups; ++index)
    {
        pid_t free = 0;
        if (books->groups[index].process.compare_exchange_strong(free, -1))
        {
            return &books->groups[index];
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

void EnterKeptGroup(SKeptGroup& group) noexcept
{
    constexpr std::int64_t c_NanosecondsPerSecond = 1'000'000'000;
    timespec now = {};
    clock_gettime(CLOCK_BOOTTIME, &now);
    group.entered = now.tv_sec * c_NanosecondsPerSecond + now.tv_nsec;
    group.process = getpid();
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

SKeptFile* KeepFile(const char* path)
{
    SBooks* const books = std::strlen(path) < c_KeptPathCapacity ? getBooks() : nullptr;
    for (std::size_t index = 0; books != nullptr && index < c_KeptFiles; ++index)
    {
        SKeptFile& file = books->files[index];
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
