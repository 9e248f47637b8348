#include "tests/support/os/testaids.h"

#include <algorithm>
#include <array>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <thread>
#include <utility>

#include <dlfcn.h>
#include <fcntl.h>
#include <grp.h>
#include <malloc.h>
#include <pthread.h>
#include <sched.h>
#include <sys/mman.h>
#include <sys/mount.h>
#include <sys/prctl.h>
#include <sys/ptrace.h>
#include <sys/resource.h>
#include <sys/shm.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/time.h>
#include <sys/wait.h>
#include <unistd.h>

#include "base/lbencoding.h"
#include "base/os/sharedmemory.h"

namespace
{

pid_t forkForAWhile()
{
    constexpr unsigned c_LimitSeconds = 60;
    const pid_t child = fork();
    if (child == 0)
    {
        alarm(c_LimitSeconds);
    }
    return child;
}

bool setForbidden(__rlimit_resource_t resource, bool isForbidden)
{
    rlimit limit = {};
    if (getrlimit(resource, &limit) != 0)
    {
        return false;
    }
    limit.rlim_cur = isForbidden ? 0 : limit.rlim_max;
    return setrlimit(resource, &limit) == 0;
}

} // namespace

bool LbOs::LoadAndUnloadModule(const std::wstring& path)
{
    void* const module = dlopen(LbEncoding::ToUtf8(path).c_str(), RTLD_NOW | RTLD_LOCAL);
    return module != nullptr && dlclose(module) == 0;
}

bool LbOs::MakeLink(const std::wstring& path, const std::wstring& target)
{
    return symlink(LbEncoding::ToNative(target).c_str(), LbEncoding::ToNative(path).c_str()) == 0;
}

std::optional<int> LbOs::RunInFork(const std::function<int()>& function)
{
    const pid_t child = forkForAWhile();
    if (child == 0)
    {
        _exit(function());
    }
    int status = 0;
    return child > 0 && waitpid(child, &status, 0) == child && WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

std::optional<int> LbOs::RunInForkWithSameId(const std::function<int()>& function)
{
    constexpr int c_Refused = 77;
    const auto runFirst = [&function] {
        // The first process of a namespace ignores its own alarm, so it must end when the alarm ends its parent.
        prctl(PR_SET_PDEATHSIG, SIGKILL);
        return unshare(CLONE_NEWPID) == 0 ? *RunInFork(function) : c_Refused;
    };
    const std::optional<int> status = RunInFork(
        [&runFirst] { return unshare(CLONE_NEWUSER | CLONE_NEWPID) == 0 ? *RunInFork(runFirst) : c_Refused; });
    return status == c_Refused ? std::nullopt : status;
}

bool LbOs::GiveUpRights()
{
    constexpr id_t c_Nobody = 65534;
    return geteuid() != 0 || (setgroups(0, nullptr) == 0 && setgid(c_Nobody) == 0 && setuid(c_Nobody) == 0);
}

bool LbOs::MountFolder(const std::wstring& place, const std::wstring& folder)
{
    return (unshare(CLONE_NEWNS) == 0 || unshare(CLONE_NEWUSER | CLONE_NEWNS) == 0) &&
           mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0 &&
           mount(LbEncoding::ToNative(folder).c_str(), LbEncoding::ToNative(place).c_str(), nullptr, MS_BIND,
                 nullptr) == 0;
}

bool LbOs::CallCanceled(const std::function<void()>& function)
{
    struct SCall
    {
        const std::function<void()>& function;
        bool isBack = false;
    };
    SCall call = {function};
    const auto run = [](void* argument) -> void* {
        auto& made = *static_cast<SCall*>(argument);
        pthread_cancel(pthread_self());
        made.function();
        made.isBack = true;
        pthread_testcancel();
        return nullptr;
    };
    pthread_t thread = {};
    return pthread_create(&thread, nullptr, run, &call) == 0 && pthread_join(thread, nullptr) == 0 && call.isBack;
}

std::optional<long> LbOs::Fork()
{
    return forkForAWhile();
}

void LbOs::WaitForFork(long id)
{
    waitpid(static_cast<pid_t>(id), nullptr, 0);
}

bool LbOs::CallWhileFlushing(void (*function)())
{
    cookie_io_functions_t calls = {};
    calls.write = [](void* cookie, const char* /*bytes*/, std::size_t size) {
        (*static_cast<void (**)()>(cookie))();
        return static_cast<ssize_t>(size);
    };
    std::FILE* const stream = fopencookie(&function, "w", calls);
    if (stream == nullptr)
    {
        return false;
    }
    std::fputs("x", stream);
    std::fflush(nullptr);
    std::fclose(stream);
    return true;
}

bool LbOs::ResetRealTimeSignals()
{
    for (int signal = SIGRTMIN; signal <= SIGRTMAX; ++signal)
    {
        std::signal(signal, SIG_DFL);
    }
    return true;
}

std::vector<unsigned long> LbOs::ListChildren()
{
    std::vector<unsigned long> children;
    for (const auto& thread : std::filesystem::directory_iterator("/proc/self/task"))
    {
        std::ifstream file(thread.path() / "children");
        for (unsigned long id = 0; file >> id;)
        {
            children.push_back(id);
        }
    }
    return children;
}

bool LbOs::MakePipe(const std::wstring& path)
{
    return mkfifo(LbEncoding::ToNative(path).c_str(), S_IRUSR | S_IWUSR) == 0;
}

std::optional<std::string> LbOs::CaptureThroughFullPipe(const std::function<void()>& function)
{
    constexpr int c_SmallestPipe = 4096;
    std::array<int, 2> ends = {};
    if (pipe2(ends.data(), O_CLOEXEC) != 0 || fcntl(ends[1], F_SETFL, O_NONBLOCK) != 0)
    {
        return std::nullopt;
    }
    fcntl(ends[1], F_SETPIPE_SZ, c_SmallestPipe);
    std::fflush(stdout);
    const int former = dup(STDOUT_FILENO);
    dup2(ends[1], STDOUT_FILENO);
    close(ends[1]);
    std::string captured;
    std::thread reader([&captured, file = ends[0]] {
        std::array<char, 512> part = {};
        for (ssize_t count = 1; count > 0;)
        {
            count = read(file, part.data(), part.size());
            captured.append(part.data(), count > 0 ? static_cast<std::size_t>(count) : 0);
        }
    });
    function();
    dup2(former, STDOUT_FILENO);
    close(former);
    reader.join();
    close(ends[0]);
    return captured;
}

std::shared_ptr<void> LbOs::HoldFile(const std::wstring& /*path*/)
{
    return nullptr;
}

std::shared_ptr<void> LbOs::HoldBytes(const std::wstring& /*path*/, std::uint32_t /*offset*/, std::uint32_t /*size*/)
{
    return nullptr;
}

bool LbOs::SetFilesForbidden(bool areForbidden)
{
    return setForbidden(RLIMIT_NOFILE, areForbidden);
}

std::optional<std::uint64_t> LbOs::MeasurePeakMemory(const std::function<bool()>& function)
{
    const auto getPeak = [] {
        constexpr std::uint64_t c_BytesPerKilobyte = 1024;
        rusage usage = {};
        getrusage(RUSAGE_SELF, &usage);
        return static_cast<std::uint64_t>(usage.ru_maxrss) * c_BytesPerKilobyte;
    };
    void* const shared =
        mmap(nullptr, sizeof(std::uint64_t), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    if (shared == MAP_FAILED)
    {
        return std::nullopt;
    }
    auto* const risen = static_cast<std::uint64_t*>(shared);
    // Returns free memory of the heap to the system. Otherwise the fork would reuse this memory, and the measured
    // growth would be too small.
    malloc_trim(0);
    const std::optional<int> status = RunInFork([&] {
        const std::uint64_t before = getPeak();
        const bool isDone = function();
        *risen = getPeak() - before;
        return isDone ? 0 : 1;
    });
    const std::uint64_t result = *risen;
    munmap(shared, sizeof(std::uint64_t));
    return status == 0 ? std::optional(result) : std::nullopt;
}

bool LbOs::SetInterruptedOften(bool isInterrupted)
{
    constexpr suseconds_t c_Microseconds = 500;
    itimerval timer = {};
    timer.it_interval.tv_usec = timer.it_value.tv_usec = isInterrupted ? c_Microseconds : 0;
    if (isInterrupted)
    {
        std::signal(SIGALRM, [](int) {});
    }
    return setitimer(ITIMER_REAL, &timer, nullptr) == 0;
}

bool LbOs::SetPagesForbidden(bool areForbidden)
{
    return setForbidden(RLIMIT_AS, areForbidden);
}

bool LbOs::SetSignalsForbidden(bool areForbidden)
{
    return setForbidden(RLIMIT_SIGPENDING, areForbidden);
}

bool LbOs::IsForOwnUserOnly(const std::wstring& name)
{
    constexpr mode_t c_AllRights = 0777;
    constexpr mode_t c_OwnRights = S_IRUSR | S_IWUSR;
    const std::string path = "/dev/shm/LuTestSuite-" + LbEncoding::ToNative(name);
    struct stat status = {};
    if (lstat(path.c_str(), &status) != 0 || status.st_uid != geteuid())
    {
        return false;
    }
    if (!S_ISLNK(status.st_mode))
    {
        return (status.st_mode & c_AllRights) == c_OwnRights;
    }
    // The name of shared memory is a link whose target ends in the id of the segment.
    shmid_ds memory = {};
    const int id = std::stoi(std::filesystem::read_symlink(path).filename().native());
    return shmctl(id, IPC_STAT, &memory) == 0 && memory.shm_perm.uid == geteuid() &&
           (memory.shm_perm.mode & c_AllRights) == c_OwnRights;
}

std::shared_ptr<void> LbOs::MakeMemoryOfAnotherUser(const std::wstring& name, std::size_t size)
{
    constexpr uid_t c_Nobody = 65534;
    std::shared_ptr<CSharedMemory> memory = CSharedMemory::Create(name, size);
    const std::string path = "/dev/shm/LuTestSuite-" + LbEncoding::ToNative(name);
    return memory && lchown(path.c_str(), c_Nobody, c_Nobody) == 0 ? memory : nullptr;
}

bool LbOs::JoinGroupOfParent()
{
    return setpgid(0, getpgid(getppid())) == 0;
}

bool LbOs::WaitForEndedChildren()
{
    while (waitpid(-1, nullptr, WNOHANG) > 0)
    {
    }
    return true;
}

bool LbOs::SetChildrenForgotten(bool areForgotten)
{
    return std::signal(SIGCHLD, areForgotten ? SIG_IGN : SIG_DFL) != SIG_ERR;
}

void LbOs::EndKeeper()
{
    for (const unsigned long child : ListChildren())
    {
        std::string name;
        std::ifstream("/proc/" + std::to_string(child) + "/comm") >> name;
        if (name == "LuKeeper")
        {
            kill(static_cast<pid_t>(child), SIGKILL);
            WaitForEnd(child);
        }
    }
}

void LbOs::WaitForEnd(unsigned long process)
{
    siginfo_t end = {};
    waitid(P_PID, static_cast<id_t>(process), &end, WEXITED | WNOWAIT | __WALL);
}

std::shared_ptr<void> LbOs::HoldEnd(std::uint64_t process)
{
    const auto held = static_cast<pid_t>(process);
    const pid_t holder = forkForAWhile();
    if (holder == 0)
    {
        siginfo_t end = {};
        const bool isHeld = ptrace(PTRACE_SEIZE, held, nullptr, nullptr) == 0 && kill(held, SIGKILL) == 0 &&
                            waitid(P_PID, static_cast<id_t>(held), &end, WEXITED | WNOWAIT) == 0;
        // The holder reports that it is ready by stopping itself.
        kill(getpid(), isHeld ? SIGSTOP : SIGKILL);
    }
    int status = 0;
    if (holder < 0 || waitpid(holder, &status, WUNTRACED) != holder || !WIFSTOPPED(status))
    {
        return nullptr;
    }
    return std::shared_ptr<pid_t>(new pid_t(holder), [](const pid_t* id) {
        kill(*id, SIGKILL);
        waitpid(*id, nullptr, 0);
        delete id;
    });
}

bool LbOs::SetRightsMasked(bool areMasked)
{
    constexpr mode_t c_All = 0777;
    static mode_t s_former = 0;
    if (areMasked)
    {
        s_former = umask(c_All);
    }
    else
    {
        umask(s_former);
    }
    return true;
}

bool LbOs::CloseForOthers(std::intptr_t handle)
{
    // Calls the system directly, because a sanitizer would report the misuse of the C library's close().
    return syscall(SYS_close, static_cast<int>(handle)) == 0;
}

bool LbOs::FloodEvent(const std::wstring& name)
{
    // The most bytes that a pipe can hold without privileges.
    const std::vector<char> bytes(std::size_t{1} << 20U);
    const std::string path = "/dev/shm/LuTestSuite-" + LbEncoding::ToNative(name);
    const int pipe = open(path.c_str(), O_RDWR | O_NONBLOCK | O_CLOEXEC);
    fcntl(pipe, F_SETPIPE_SZ, static_cast<int>(bytes.size()));
    const ssize_t written = write(pipe, bytes.data(), bytes.size());
    close(pipe);
    return written == static_cast<ssize_t>(bytes.size());
}

unsigned long LbOs::GetOwnThreadId()
{
    return static_cast<unsigned long>(gettid());
}

bool LbOs::HasThreadEnded(unsigned long id)
{
    std::ifstream file("/proc/self/task/" + std::to_string(id) + "/stat");
    std::string line;
    // The first thread remains a zombie until the last thread has ended.
    return !std::getline(file, line) || line.compare(line.rfind(')') + 1, 2, " Z") == 0;
}

void LbOs::ExitQuickly()
{
    std::quick_exit(0);
}

void LbOs::LeaveThread()
{
    pthread_exit(nullptr);
}

bool LbOs::AllowDumps()
{
    rlimit limit = {};
    getrlimit(RLIMIT_CORE, &limit);
    limit.rlim_cur = limit.rlim_max;
    return limit.rlim_max > 1 && setrlimit(RLIMIT_CORE, &limit) == 0;
}

bool LbOs::LimitMemory(std::size_t bytes)
{
    std::size_t pages = 0;
    std::ifstream("/proc/self/statm") >> pages;
    rlimit limit = {};
    getrlimit(RLIMIT_AS, &limit);
    limit.rlim_cur = pages * static_cast<std::size_t>(sysconf(_SC_PAGESIZE)) + bytes;
    return pages > 0 && setrlimit(RLIMIT_AS, &limit) == 0;
}

std::optional<std::uint64_t> LbOs::GetOpenFileLimit()
{
    rlimit limit = {};
    return getrlimit(RLIMIT_NOFILE, &limit) == 0 ? std::optional<std::uint64_t>(limit.rlim_cur) : std::nullopt;
}

bool LbOs::SetOpenFileLimit(std::uint64_t count)
{
    rlimit limit = {};
    getrlimit(RLIMIT_NOFILE, &limit);
    limit.rlim_cur = count;
    return setrlimit(RLIMIT_NOFILE, &limit) == 0;
}

std::uint32_t LbOs::CountOwnProcessors()
{
    cpu_set_t processors;
    const bool isKnown = sched_getaffinity(0, sizeof(processors), &processors) == 0;
    return isKnown ? static_cast<std::uint32_t>(CPU_COUNT(&processors)) : 1;
}
