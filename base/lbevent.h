/// An auto-reset event between threads of one process.
#pragma once

#include <condition_variable>
#include <cstdint>
#include <mutex>

#include "base/inoncopyable.h"
#include "base/lbexport.h"

/// One Set releases one waiting thread, now or later; setting a set event changes nothing. Any thread.
class LB_API LbEvent : public INonCopyable
{
public:
    static constexpr std::uint32_t sc_uiInfinite = 0xFFFFFFFFU;

    void Set();
    void Reset();

    /// Waits for up to `milliseconds`; true when the event was set (and is reset by this), false on time-out.
    bool Wait(std::uint32_t milliseconds = sc_uiInfinite);

private:
    std::mutex m_mutex;
    std::condition_variable m_changed;
    bool m_isSet = false;
};
