/// A thread that receives no signals.
#pragma once

#include <atomic>
#include <thread>

#include "base/inoncopyable.h"
#include "tests/support/os/breakpoint.h"

/// A thread that stays inside a breakpoint's handler from construction until Release. On Linux it receives no signals
/// there, so it cannot be stopped; Windows can stop any thread. One object at a time.
class StuckThread : public INonCopyable
{
public:
    /// The thread calls `function`, which executes a breakpoint.
    explicit StuckThread(void (*function)() = stop, bool blocksSignals = true)
    {
        s_isInside = false;
        s_mayLeave = false;
        LbOs::SetBreakpointHandler(wait, blocksSignals);
        m_thread = std::thread(function);
        while (!s_isInside)
        {
            std::this_thread::yield();
        }
    }
    ~StuckThread() { Release(); }

    /// Lets the thread leave the handler and end.
    void Release()
    {
        if (m_thread.joinable())
        {
            s_mayLeave = true;
            m_thread.join();
            LbOs::SetBreakpointHandler(nullptr);
        }
    }

private:
    static void stop() { asm volatile("int3"); }
    static void wait()
    {
        s_isInside = true;
        while (!s_mayLeave)
        {
            std::this_thread::yield();
        }
    }

    static inline std::atomic<bool> s_isInside = false;
    static inline std::atomic<bool> s_mayLeave = false;

    std::thread m_thread;
};
