#include "base/lbevent.h"

#include <chrono>

void LbEvent::Set()
{
    // Notifies under the lock, because a waiting thread may destroy the event as soon as it continues.
    const std::lock_guard lock(m_mutex);
    m_isSet = true;
    m_changed.notify_one();
}

void LbEvent::Reset()
{
    const std::lock_guard lock(m_mutex);
    m_isSet = false;
}

bool LbEvent::Wait(std::uint32_t milliseconds)
{
    std::unique_lock lock(m_mutex);
    const auto isSet = [this] { return m_isSet; };
    if (milliseconds == sc_uiInfinite)
    {
        m_changed.wait(lock, isSet);
    }
    else if (!m_changed.wait_for(lock, std::chrono::milliseconds(milliseconds), isSet))
    {
        return false;
    }
    m_isSet = false;
    return true;
}
