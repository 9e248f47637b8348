/// Prints, in nanoseconds, the cost of a request with its answer between two processes, and of starting a process,
/// without a runner.

#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>
#include <vector>

#include "base/lbfilesystem.h"
#include "base/lbuniqueid.h"
#include "base/os/childprocess.h"
#include "base/os/namedevent.h"
#include "base/os/process.h"

namespace
{

constexpr std::uint32_t c_LongestWait = 5000;

std::unique_ptr<LbOs::CChildProcess> startCopy(const std::wstring& arguments)
{
    LbOs::SChildOptions options;
    options.program = LbOs::GetExecutablePath();
    options.commandLine = L"process_pairs " + arguments;
    options.isSilent = true;
    return LbOs::CChildProcess::Start(options);
}

int answer(const std::wstring& name)
{
    const auto question = LbOs::CNamedEvent::Open(name + L"-q");
    const auto reply = LbOs::CNamedEvent::Open(name + L"-a");
    while (question && reply && question->Wait(c_LongestWait) == LbOs::EEventWait::Signaled)
    {
        reply->Set();
    }
    return EXIT_SUCCESS;
}

/// Nanoseconds per call; negative if a call returned false.
template<typename F>
double measure(int count, const F& call)
{
    const auto begin = std::chrono::steady_clock::now();
    for (int index = 0; index < count; ++index)
    {
        if (!call())
        {
            return -1;
        }
    }
    return std::chrono::duration<double, std::nano>(std::chrono::steady_clock::now() - begin).count() / count;
}

double measurePairs(int count)
{
    const std::wstring name = LbUniqueId::Generate();
    const auto question = LbOs::CNamedEvent::Create(name + L"-q");
    const auto reply = LbOs::CNamedEvent::Create(name + L"-a");
    const auto child = startCopy(L"answer " + name);
    const auto ask = [&] {
        return question->Set() && reply->Wait(c_LongestWait, child.get()) == LbOs::EEventWait::Signaled;
    };
    // The first request includes the start of the child and is not measured.
    return question && reply && child && ask() ? measure(count, ask) : -1;
}

double measureStarts(int count)
{
    return measure(count, [] {
        const auto child = startCopy(L"nothing");
        return child && child->Wait();
    });
}

} // namespace

int main(int argumentCount, char** argumentTexts)
{
    constexpr int c_Pairs = 5000;
    constexpr int c_Starts = 50;
    const std::vector<std::wstring> arguments = LbOs::GetArguments(argumentCount, argumentTexts);
    if (arguments.size() > 1)
    {
        return arguments.size() > 2 ? answer(arguments[2]) : EXIT_SUCCESS;
    }
    const double pair = measurePairs(c_Pairs);
    const double start = measureStarts(c_Starts);
    std::printf("%.0f %.0f\n", pair, start);
    return pair > 0 && start > 0 ? EXIT_SUCCESS : EXIT_FAILURE;
}
