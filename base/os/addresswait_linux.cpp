#include "base/os/addresswait.h"

#include <cerrno>

#include <linux/futex.h>
#include <sys/syscall.h>
#include <unistd.h>

void LbOs::WaitOnNumber(const std::atomic<std::uint32_t>& number, std::uint32_t expected) noexcept
{
    // Callers such as free must not change errno.
    const int savedError = errno;
    syscall(SYS_futex, &number, FUTEX_WAIT_PRIVATE, expected, nullptr, nullptr, 0);
    errno = savedError;
}

void LbOs::WakeOne(const std::atomic<std::uint32_t>& number) noexcept
{
    syscall(SYS_futex, &number, FUTEX_WAKE_PRIVATE, 1, nullptr, nullptr, 0);
}
