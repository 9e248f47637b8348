#include "tests/support/os/testaids.h"

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <fstream>
#include <iterator>
#include <string>
#include <utility>

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

} // namespace

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
