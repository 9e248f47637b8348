#include "testing/lutestsuiterunner/execution/cancellationwatch.h"

#include <utility>

#include "base/os/interruption.h"

namespace Runner
{

CCancellationWatch::CCancellationWatch(std::function<void()> announce, std::function<void()> giveUp)
    : m_announce(std::move(announce)), m_giveUp(std::move(giveUp)), m_thread([this] { watch(); })
{
}

CCancellationWatch::~CCancellationWatch()
{
    {
        const std::lock_guard lock(m_mutex);
        m_isEnding = true;
    }
    m_ending.notify_one();
    m_thread.join();
}

void CCancellationWatch::watch()
{
    constexpr std::chrono::milliseconds c_Interval(200);
    constexpr std::chrono::milliseconds c_Grace(5000);
    while (LbOs::GetInterruption() == LbOs::EInterruption::None)
    {
        if (waitForEnd(c_Interval))
        {
            return;
        }
    }
    // A run whose cases end at once needs no announcement.
    if (waitForEnd(c_Interval))
    {
        return;
    }
    m_announce();
    if (!waitForEnd(c_Grace - c_Interval))
    {
        m_giveUp();
    }
}

bool CCancellationWatch::waitForEnd(std::chrono::milliseconds time)
{
    std::unique_lock lock(m_mutex);
    return m_ending.wait_for(lock, time, [this] { return m_isEnding; });
}

} // namespace Runner
