#include "base/os/linux/descriptor.h"

#include <algorithm>
#include <array>
#include <chrono>

#include <fcntl.h>
#include <poll.h>

namespace LbOs::Linux
{

namespace
{

using Clock = std::chrono::steady_clock;

/// The time-out for poll, rounded up so that no wait ends early.
int toPollTime(std::uint32_t milliseconds, Clock::time_point end)
{
    if (milliseconds == c_WaitInfinite)
    {
        return -1;
    }
    constexpr std::int64_t c_Longest = 3'600'000;
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(end - Clock::now()).count();
    return static_cast<int>(std::clamp<std::int64_t>(left, 0, c_Longest));
}

} // namespace

CDescriptor AboveStandard(int number)
{
    CDescriptor opened(number);
    return number > STDERR_FILENO || number < 0 ? std::move(opened)
                                                : CDescriptor(fcntl(number, F_DUPFD_CLOEXEC, STDERR_FILENO + 1));
}

int WaitReadable(std::initializer_list<int> descriptors, std::uint32_t milliseconds)
{
    std::array<pollfd, 2> entries{};
    std::ranges::transform(descriptors, entries.begin(), [](int number) { return pollfd{number, POLLIN, 0}; });
    const auto end = Clock::now() + std::chrono::milliseconds(milliseconds);
    while (true)
    {
        const int time = toPollTime(milliseconds, end);
        const int count = poll(entries.data(), descriptors.size(), time);
        if (count > 0)
        {
            const auto ready = std::ranges::find_if(entries, [](const pollfd& entry) { return entry.revents != 0; });
            return (ready->revents & POLLNVAL) != 0 ? c_WaitFailed : static_cast<int>(ready - entries.begin());
        }
        if (count < 0 && errno != EINTR)
        {
            return c_WaitFailed;
        }
        if (count == 0 && time >= 0 && Clock::now() >= end)
        {
            return c_WaitTimedOut;
        }
    }
}

} // namespace LbOs::Linux
