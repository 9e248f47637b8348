/// System calls for forks of a process with threads, and for children that share its memory. Internal to the Linux
/// side.
///
/// The run-time's functions may be a sanitizer's, which wait for locks of threads that a fork does not have. The files
/// of those that use this are built without sanitizers for the same reason.
#pragma once

#include <csignal>
#include <cstdint>
#include <ctime>
#include <type_traits>

#include <sys/syscall.h>
#include <sys/types.h>
#include <unistd.h>

namespace LbOs::Linux
{

/// Makes the call of that number; negative on failure. Each argument fills a whole register, as the kernel reads it.
template<typename... T>
long Call(long number, T... arguments) noexcept
{
    [[maybe_unused]] const auto toWord = [](auto argument) {
        if constexpr (std::is_pointer_v<decltype(argument)>)
        {
            return reinterpret_cast<long>(argument);
        }
        else
        {
            return static_cast<long>(argument);
        }
    };
    return syscall(number, toWord(arguments)...);
}

inline constexpr std::int64_t c_NanosecondsPerSecond = 1'000'000'000;

/// What a clock of the system shows.
inline std::int64_t GetNanoseconds(clockid_t clock) noexcept
{
    timespec now = {};
    Call(SYS_clock_gettime, clock, &now);
    return now.tv_sec * c_NanosecondsPerSecond + now.tv_nsec;
}

/// Size of the kernel's sets of signals.
inline constexpr long c_SignalSetSize = 8;

/// Copies the process as fork() does, but the copy is none of the children that a test's own wait() would see: without
/// a signal at its end only __WCLONE asks for it. Signals stay blocked there, since the handlers are the original's.
inline pid_t CopyProcess() noexcept
{
    constexpr std::uint64_t c_AllSignals = ~std::uint64_t{0};
    std::uint64_t former = 0;
    Call(SYS_rt_sigprocmask, SIG_SETMASK, &c_AllSignals, &former, c_SignalSetSize);
    const long copy = Call(SYS_clone, 0, 0, 0, 0, 0);
    if (copy != 0)
    {
        Call(SYS_rt_sigprocmask, SIG_SETMASK, &former, 0, c_SignalSetSize);
    }
    return static_cast<pid_t>(copy);
}

/// Ends a copy.
[[noreturn]] inline void EndCopy() noexcept
{
    while (true)
    {
        Call(SYS_exit_group, 0);
    }
}

} // namespace LbOs::Linux
