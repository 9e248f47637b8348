#include "base/os/testaids.h"

#include <csignal>
#include <cstdio>

#include <dlfcn.h>
#include <sys/resource.h>
#include <sys/time.h>
#include <sys/wait.h>
#include <unistd.h>

#include "base/lbencoding.h"

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
