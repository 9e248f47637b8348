/// Threads that wait for each other.
#pragma once

#include <condition_variable>
#include <mutex>

#include "base/inoncopyable.h"

/// Opens when it has been counted down. In place of std::latch, which loses wake-ups where there is no futex (GCC 12
/// for Windows: its wait looks at the value before it takes the lock).
class Latch : public INonCopyable
{
public:
    explicit Latch(unsigned count) : m_count(count) {}

    /// Changes nothing once it is open.
    void CountDown()
    {
        const std::lock_guard lock(m_mutex);
        m_count -= m_count > 0 ? 1U : 0U;
        m_changed.notify_all();
    }

    void Wait()
    {
        std::unique_lock lock(m_mutex);
        m_changed.wait(lock, [this] { return m_count == 0; });
    }

    void ArriveAndWait()
    {
        CountDown();
        Wait();
    }

private:
    std::mutex m_mutex;
    std::condition_variable m_changed;
    unsigned m_count;
};
