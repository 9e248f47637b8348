/// An auto-reset event between threads of one process.
#pragma once

#include <condition_variable>
#include <cstdint>
#include <mutex>

#include "base/inoncopyable.h"
#include "base/lbexport.h"

/// Set releases one thread: one that is waiting, or the next one that waits. Setting an event that is set has no
/// effect. Callable from any thread.
class LB_API LbEvent : public INonCopyable
{
public:
    static constexpr std::uint32_t sc_uiInfinite = 0xFFFFFFFFU;

    void Set();
    void Reset();

    /// Waits for up to `milliseconds` until the event is set, then resets it and returns true; false on time-out.
    bool Wait(std::uint32_t milliseconds = sc_uiInfinite);

private:
    std::mutex m_mutex;
    std::condition_variable m_changed;
    bool m_isSet = false;
};
