/// System calls for forks of a threaded process, and for children that share its memory. Internal to the Linux side.
///
/// A sanitizer may intercept the C library's functions and then wait for locks of threads that the fork does not have.
/// The files that use this header are built without sanitizers for the same reason.
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

/// Makes the system call with this number; negative on failure. Each argument fills a whole register, as the kernel
/// expects.
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

/// The time of a system clock.
inline std::int64_t GetNanoseconds(clockid_t clock) noexcept
{
    timespec now = {};
    Call(SYS_clock_gettime, clock, &now);
    return now.tv_sec * c_NanosecondsPerSecond + now.tv_nsec;
}

/// Size of the kernel's signal sets.
inline constexpr long c_SignalSetSize = 8;

/// Copies the process like fork(), but without an exit signal, so that only waits with __WCLONE see the copy; a test's
/// own wait() does not. All signals stay blocked in the copy, because the handlers belong to the original.
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

/// Ends a copy made by CopyProcess.
[[noreturn]] inline void EndCopy() noexcept
{
    while (true)
    {
        Call(SYS_exit_group, 0);
    }
}

} // namespace LbOs::Linux
