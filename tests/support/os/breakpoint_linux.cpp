#include "tests/support/os/breakpoint.h"

#include <atomic>
#include <cerrno>
#include <csignal>

namespace
{

std::atomic<LbOs::FBreakpointHandler> s_handler = nullptr;

void onTrap(int /*signal*/)
{
    const int savedError = errno;
    if (const LbOs::FBreakpointHandler handler = s_handler)
    {
        handler();
    }
    errno = savedError;
}

} // namespace

void LbOs::SetBreakpointHandler(FBreakpointHandler handler, bool blocksSignals) noexcept
{
    s_handler = handler;
    struct sigaction action = {};
    action.sa_handler = handler != nullptr ? onTrap : SIG_DFL;
    if (blocksSignals)
    {
        sigfillset(&action.sa_mask);
    }
    sigaction(SIGTRAP, &action, nullptr);
}
