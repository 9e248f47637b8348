#include "base/os/testaids.h"

#include <dlfcn.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include "base/lbencoding.h"

bool LbOs::LoadAndUnloadModule(const std::wstring& path)
{
    void* const module = dlopen(LbEncoding::ToUtf8(path).c_str(), RTLD_NOW | RTLD_LOCAL);
    return module != nullptr && dlclose(module) == 0;
}

std::optional<int> LbOs::RunInFork(const std::function<int()>& function)
{
    constexpr unsigned c_LimitSeconds = 60;
    const pid_t child = fork();
    if (child == 0)
    {
        alarm(c_LimitSeconds);
        _exit(function());
    }
    int status = 0;
    return child > 0 && waitpid(child, &status, 0) == child && WIFEXITED(status) ? WEXITSTATUS(status) : -1;
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
