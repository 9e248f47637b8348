#include "base/os/signalstate.h"

#include <array>
#include <atomic>
#include <csignal>

#include <sys/time.h>

#include "base/os/linux/rawcalls.h"
#include "base/os/linux/recordedsignals.h"

namespace LbOs
{

namespace
{

using Linux::c_SignalSetSize;
using Linux::Call;
using Linux::SAction;

/// alarm() uses the first one; the others measure processor time. All three end the process when they expire, unless
/// there is a handler.
constexpr std::array c_Timers = {ITIMER_REAL, ITIMER_VIRTUAL, ITIMER_PROF};

/// The recorded state. Atomic and without a mutex, which another thread could hold during a fork.
std::atomic<bool> s_areRecorded = false;
std::atomic<std::uint64_t> s_blocked = 0;
std::atomic<std::uint64_t> s_ignored = 0;
std::array<std::atomic<bool>, c_Timers.size()> s_areArmed = {};

void restoreChildStatuses()
{
    SAction action = {};
    Call(SYS_rt_sigaction, SIGCHLD, 0, &action, c_SignalSetSize);
    const bool isIgnored = action.handler == SIG_IGN && (s_ignored & Linux::ToSignalBit(SIGCHLD)) == 0;
    if (isIgnored || (action.flags & SA_NOCLDWAIT) != 0)
    {
        action.handler = isIgnored ? SIG_DFL : action.handler;
        action.flags &= ~std::uint64_t{SA_NOCLDWAIT};
        Call(SYS_rt_sigaction, SIGCHLD, &action, 0, c_SignalSetSize);
    }
}

} // namespace

void RecordSignals() noexcept
{
    std::uint64_t blocked = 0;
    std::uint64_t ignored = 0;
    Call(SYS_rt_sigprocmask, SIG_SETMASK, 0, &blocked, c_SignalSetSize);
    for (int signal = 1; signal < NSIG; ++signal)
    {
        SAction action = {};
        const bool isKnown = Call(SYS_rt_sigaction, signal, 0, &action, c_SignalSetSize) == 0;
        ignored |= isKnown && action.handler == SIG_IGN ? Linux::ToSignalBit(signal) : 0;
    }
    for (std::size_t index = 0; index < c_Timers.size(); ++index)
    {
        itimerval timer = {};
        Call(SYS_getitimer, c_Timers[index], &timer);
        s_areArmed[index] = timer.it_value.tv_sec != 0 || timer.it_value.tv_usec != 0;
    }
    s_blocked = blocked;
    s_ignored = ignored;
    s_areRecorded = true;
}

void RestoreSignals() noexcept
{
    if (!s_areRecorded)
    {
        return;
    }
    restoreChildStatuses();
    const std::uint64_t blocked = s_blocked;
    Call(SYS_rt_sigprocmask, SIG_SETMASK, &blocked, 0, c_SignalSetSize);
}

// A timer that was armed before the run is a watchdog of the program that has started the run.
void DisarmTimers() noexcept
{
    if (!s_areRecorded)
    {
        return;
    }
    const itimerval none = {};
    for (std::size_t index = 0; index < c_Timers.size(); ++index)
    {
        if (!s_areArmed[index])
        {
            Call(SYS_setitimer, c_Timers[index], &none, 0);
        }
    }
}

std::optional<Linux::SSignals> Linux::GetRecordedSignals() noexcept
{
    return s_areRecorded ? std::optional(SSignals{s_blocked, s_ignored}) : std::nullopt;
}

} // namespace LbOs
