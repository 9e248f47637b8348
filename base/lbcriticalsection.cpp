#include "base/lbcriticalsection.h"

#include "base/os/addresswait.h"

void LbCriticalSection::waitAndLock() noexcept
{
    // Most callers hold the lock for a few instructions only, so polling costs less than sleeping and being woken.
    constexpr int c_SpinCount = 40;
    for (int count = 0; count < c_SpinCount; ++count)
    {
        if (m_state.load(std::memory_order_relaxed) == sc_uiFree && try_lock())
        {
            return;
        }
        __builtin_ia32_pause();
    }
    while (m_state.exchange(sc_uiContended, std::memory_order_acquire) != sc_uiFree)
    {
        LbOs::WaitOnNumber(m_state, sc_uiContended);
    }
    m_owner.store(LbOs::GetThreadKey(), std::memory_order_relaxed);
    m_depth = 1;
}

void LbCriticalSection::wakeWaiter() noexcept
{
    LbOs::WakeOne(m_state);
}
