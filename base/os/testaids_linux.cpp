#include "base/os/testaids.h"

#include <csignal>
#include <cstdio>

#include <dlfcn.h>
#include <malloc.h>
#include <pthread.h>
#include <sched.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/time.h>
#include <sys/wait.h>
#include <unistd.h>

#include "base/lbencoding.h"
#include "base/os/machine_linux.h"

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

} // namespace

bool LbOs::LoadAndUnloadModule(const std::wstring& path)
{
    void* const module = dlopen(LbEncoding::ToUtf8(path).c_str(), RTLD_NOW | RTLD_LOCAL);
    return module != nullptr && dlclose(module) == 0;
}

bool LbOs::MakePipeFile(const std::wstring& path)
{
    constexpr mode_t c_OwnersOnly = 0600;
    return mkfifo(LbEncoding::ToNative(path).c_str(), c_OwnersOnly) == 0;
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

std::optional<int> LbOs::RunInForkOfSameNumber(const std::function<int()>& function)
{
    constexpr int c_Refused = 77;
    const auto runFirst = [&function] {
        // As the first process it hears no alarm of its own, so it ends with its parent, which does.
        prctl(PR_SET_PDEATHSIG, SIGKILL);
        return unshare(CLONE_NEWPID) == 0 ? *RunInFork(function) : c_Refused;
    };
    const std::optional<int> status = RunInFork(
        [&runFirst] { return unshare(CLONE_NEWUSER | CLONE_NEWPID) == 0 ? *RunInFork(runFirst) : c_Refused; });
    return status == c_Refused ? std::nullopt : status;
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

void LbOs::WaitForFork(long number)
{
    waitpid(static_cast<pid_t>(number), nullptr, 0);
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

bool LbOs::MakePipe(const std::wstring& path)
{
    return mkfifo(LbEncoding::ToNative(path).c_str(), S_IRUSR | S_IWUSR) == 0;
}

std::shared_ptr<void> LbOs::HoldFile(const std::wstring& /*path*/)
{
    return nullptr;
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
    // What the heap keeps for later would not be seen when it is used again.
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

std::optional<std::wstring> LbOs::DescribeGraphicsIn(const std::wstring& folder)
{
    return Linux::DescribeGraphics(folder);
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
    rlimit limit = {};
    if (getrlimit(RLIMIT_AS, &limit) != 0)
    {
        return false;
    }
    limit.rlim_cur = areForbidden ? 0 : limit.rlim_max;
    return setrlimit(RLIMIT_AS, &limit) == 0;
}

bool LbOs::SetSignalsForbidden(bool areForbidden)
{
    rlimit limit = {};
    if (getrlimit(RLIMIT_SIGPENDING, &limit) != 0)
    {
        return false;
    }
    limit.rlim_cur = areForbidden ? 0 : limit.rlim_max;
    return setrlimit(RLIMIT_SIGPENDING, &limit) == 0;
}
