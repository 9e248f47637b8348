/// An auto-reset event between threads of one process.
#pragma once

#include <condition_variable>
#include <cstdint>
#include <mutex>

#include "base/inoncopyable.h"
#include "base/lbexport.h"

/// Set releases one waiting thread, now or later; setting a set event has no effect. Callable from any thread.
class LB_API LbEvent : public INonCopyable
{
public:
    static constexpr std::uint32_t sc_uiInfinite = 0xFFFFFFFFU;

    void Set();
    void Reset();

    /// Waits for up to `milliseconds`. Resets the event and returns true if it was set; false on time-out.
    bool Wait(std::uint32_t milliseconds = sc_uiInfinite);

private:
    std::mutex m_mutex;
    std::condition_variable m_changed;
    bool m_isSet = false;
};
