#include "base/os/addresswait.h"

#include <linux/futex.h>
#include <sys/syscall.h>
#include <unistd.h>

void LbOs::WaitOnNumber(const std::atomic<std::uint32_t>& number, std::uint32_t expected) noexcept
{
    syscall(SYS_futex, &number, FUTEX_WAIT_PRIVATE, expected, nullptr, nullptr, 0);
}

void LbOs::WakeOne(const std::atomic<std::uint32_t>& number) noexcept
{
    syscall(SYS_futex, &number, FUTEX_WAKE_PRIVATE, 1, nullptr, nullptr, 0);
}
