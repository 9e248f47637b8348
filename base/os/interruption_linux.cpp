#include "base/os/interruption.h"

#include <atomic>
#include <csignal>

#include <unistd.h>

namespace
{

std::atomic<int> s_signal = 0;
static_assert(std::atomic<int>::is_always_lock_free, "a signal handler uses it");

LbOs::EInterruption toInterruption(int signal) noexcept
{
    return signal == 0        ? LbOs::EInterruption::None
           : signal == SIGINT ? LbOs::EInterruption::User
                              : LbOs::EInterruption::Terminate;
}

extern "C" void handleRequest(int signal)
{
    int none = 0;
    if (!s_signal.compare_exchange_strong(none, signal))
    {
        _exit(LbOs::GetExitStatus(toInterruption(signal)));
    }
}

} // namespace

void LbOs::CatchInterruptions()
{
    struct sigaction action = {};
    action.sa_handler = &handleRequest;
    // Cases must not see interrupted system calls.
    action.sa_flags = SA_RESTART;
    for (const int signal : {SIGINT, SIGTERM, SIGHUP})
    {
        struct sigaction former = {};
        // Keeps an ignored signal ignored: with nohup the process survives the end of the terminal.
        if (sigaction(signal, nullptr, &former) == 0 && former.sa_handler != SIG_IGN)
        {
            sigaction(signal, &action, nullptr);
        }
    }
}

LbOs::EInterruption LbOs::GetInterruption() noexcept
{
    return toInterruption(s_signal);
}

int LbOs::GetExitStatus(EInterruption interruption) noexcept
{
    return interruption == EInterruption::None ? 0 : 128 + (interruption == EInterruption::User ? SIGINT : SIGTERM);
}
