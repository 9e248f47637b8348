/// System calls for forks of a process with threads, and for children that share its memory. Internal to the Linux
/// side.
///
/// The run-time's functions may be a sanitizer's, which wait for locks of threads that a fork does not have. The files
/// of those that use this are built without sanitizers for the same reason.
#pragma once

#include <cstdint>
#include <ctime>
#include <type_traits>

#include <sys/syscall.h>
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

} // namespace LbOs::Linux
