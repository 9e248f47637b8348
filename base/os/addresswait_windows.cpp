#include "base/os/addresswait.h"

#include "base/os/windows/api.h"

namespace
{

void* toSystem(const std::atomic<std::uint32_t>& number) noexcept
{
    // The system only reads the number; its parameter lacks the const.
    return const_cast<std::atomic<std::uint32_t>*>(&number); // NOLINT(cppcoreguidelines-pro-type-const-cast)
}

} // namespace

void LbOs::WaitOnNumber(const std::atomic<std::uint32_t>& number, std::uint32_t expected) noexcept
{
    WaitOnAddress(toSystem(number), &expected, sizeof(expected), INFINITE);
}

void LbOs::WakeOne(const std::atomic<std::uint32_t>& number) noexcept
{
    WakeByAddressSingle(toSystem(number));
}
