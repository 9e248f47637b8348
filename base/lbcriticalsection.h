/// A re-entrant lock.
#pragma once

#include <mutex>

#include "base/inoncopyable.h"

/// May be entered again by the thread that holds it; left as often as entered. Serves std::lock_guard as it is.
class LbCriticalSection : public INonCopyable
{
public:
    void lock() { m_mutex.lock(); }
    bool try_lock() { return m_mutex.try_lock(); }
    void unlock() { m_mutex.unlock(); }

private:
    std::recursive_mutex m_mutex;
};

/// Holds a critical section for the life of a scope.
using LbCriticalSectionLock = std::lock_guard<LbCriticalSection>;
