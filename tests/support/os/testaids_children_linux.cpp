#include "tests/support/os/testaids.h"

#include <algorithm>
#include <array>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iterator>
#include <string>
#include <utility>

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/time.h>
#include <sys/utsname.h>
#include <unistd.h>

#include "base/lbencoding.h"

namespace
{

std::vector<std::wstring> readArguments(const std::string& process)
{
    std::ifstream file("/proc/" + process + "/cmdline", std::ios::binary);
    std::vector<std::wstring> arguments;
    for (std::string argument; std::getline(file, argument, '\0');)
    {
        arguments.push_back(LbEncoding::FromNative(argument));
    }
    return arguments;
}

constexpr std::array c_Timers = {ITIMER_REAL, ITIMER_VIRTUAL, ITIMER_PROF};

/// Uses processor time until the timer has expired.
void expire(__itimer_which_t which)
{
    const itimerval soon = {{0, 0}, {0, 1000}};
    itimerval left = {};
    setitimer(which, &soon, nullptr);
    do
    {
        getitimer(which, &left);
    }
    while (left.it_value.tv_usec != 0);
}

void writeWithoutReader()
{
    std::array<int, 2> ends = {};
    static_cast<void>(pipe2(ends.data(), O_CLOEXEC));
    close(ends[0]);
    static_cast<void>(write(ends[1], "x", 1));
    close(ends[1]);
}

void exceedFileSize()
{
    rlimit limit = {};
    getrlimit(RLIMIT_FSIZE, &limit);
    limit.rlim_cur = 1;
    setrlimit(RLIMIT_FSIZE, &limit);
    std::FILE* const file = std::tmpfile();
    static_cast<void>(ftruncate(fileno(file), 2));
    std::fclose(file);
}

/// The number of the signal with this name, -1 if there is none.
int findSignal(const std::wstring& name)
{
    for (int signal = 1; signal < SIGRTMIN; ++signal)
    {
        const char* const shortName = sigabbrev_np(signal);
        if (shortName != nullptr && name == LbEncoding::FromUtf8(std::string("SIG") + shortName))
        {
            return signal;
        }
    }
    return -1;
}

} // namespace

bool LbOs::SetTimersArmed(bool areArmed)
{
    constexpr time_t c_Hour = 3600;
    const itimerval timer = {{0, 0}, {areArmed ? c_Hour : 0, 0}};
    return std::ranges::all_of(c_Timers, [&timer](auto which) { return setitimer(which, &timer, nullptr) == 0; });
}

void LbOs::SetAlarm()
{
    constexpr unsigned c_Hour = 3600;
    alarm(c_Hour);
}

int LbOs::CountArmedTimers()
{
    return static_cast<int>(std::ranges::count_if(c_Timers, [](auto which) {
        itimerval timer = {};
        return getitimer(which, &timer) == 0 && timer.it_value.tv_sec + timer.it_value.tv_usec > 0;
    }));
}

bool LbOs::CauseSignal(const std::wstring& name)
{
    if (name == L"SIGPIPE")
    {
        writeWithoutReader();
        return true;
    }
    if (name == L"SIGXFSZ")
    {
        exceedFileSize();
        return true;
    }
    if (name == L"SIGALRM" || name == L"SIGVTALRM" || name == L"SIGPROF")
    {
        expire(name == L"SIGALRM" ? ITIMER_REAL : name == L"SIGPROF" ? ITIMER_PROF : ITIMER_VIRTUAL);
        return true;
    }
    return raise(findSignal(name)) == 0;
}

std::vector<std::pair<int, std::string>> LbOs::ListEndingSignals()
{
    constexpr std::array c_Harmless = {SIGCHLD, SIGCONT, SIGSTOP, SIGTSTP, SIGTTIN, SIGTTOU, SIGURG, SIGWINCH};
    std::vector<std::pair<int, std::string>> signals;
    for (int signal = 1; signal <= SIGRTMAX; ++signal)
    {
        // The system describes the third real-time signal as "Real-time signal 2".
        std::string description = strsignal(signal);
        const char* const shortName = sigabbrev_np(signal);
        std::string name = shortName == nullptr ? "RTMIN+" + description.substr(description.rfind(' ') + 1) : shortName;
        name = "SIG" + (name == "POLL" ? "IO" : name == "RTMIN+0" ? "RTMIN" : name);
        const bool isUnused = shortName == nullptr && signal < SIGRTMIN;
        if (!isUnused && std::ranges::find(c_Harmless, signal) == c_Harmless.end())
        {
            signals.emplace_back(signal, name);
        }
    }
    return signals;
}

void LbOs::RaiseOwnException() {}

std::vector<std::wstring> LbOs::GetOwnArguments()
{
    return readArguments("self");
}

bool LbOs::RemembersForgottenChildren()
{
    utsname system = {};
    int major = 0;
    int minor = 0;
    return uname(&system) == 0 && std::sscanf(system.release, "%d.%d", &major, &minor) == 2 &&
           std::pair(major, minor) >= std::pair(6, 15);
}

bool LbOs::SetSignalsDisturbed(bool areDisturbed)
{
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, SIGUSR1);
    sigaddset(&signals, SIGTERM);
    return SetChildrenForgotten(areDisturbed) &&
           pthread_sigmask(areDisturbed ? SIG_BLOCK : SIG_UNBLOCK, &signals, nullptr) == 0;
}

std::wstring LbOs::DescribeSignals()
{
    std::ifstream file("/proc/thread-self/status");
    std::string signals;
    for (std::string line; std::getline(file, line);)
    {
        signals += line.starts_with("SigBlk:") || line.starts_with("SigIgn:") ? line + " " : "";
    }
    return LbEncoding::FromNative(signals);
}

bool LbOs::RemoveObjectNames(unsigned long process)
{
    const std::vector<std::wstring> arguments = readArguments(std::to_string(process));
    bool areRemoved = true;
    for (const wchar_t* const option : {L"--memory-id", L"--request-event-id", L"--response-event-id"})
    {
        const auto found = std::ranges::find(arguments, option);
        const bool isTold = std::distance(found, arguments.end()) > 1;
        areRemoved =
            isTold && unlink(("/dev/shm/LuTestSuite-" + LbEncoding::ToNative(found[1])).c_str()) == 0 && areRemoved;
    }
    return areRemoved;
}
