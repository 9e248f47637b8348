/// Threads that wait for each other.
#pragma once

#include <condition_variable>
#include <mutex>

#include "base/inoncopyable.h"

/// Opens when its counter reaches zero. Replaces std::latch, which can lose wake-ups on Windows (GCC 12): without a
/// futex, its wait checks the value before it takes the lock.
class Latch : public INonCopyable
{
public:
    explicit Latch(unsigned count) : m_count(count) {}

    /// No effect once the latch is open.
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
