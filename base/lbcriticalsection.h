/// A re-entrant lock.
#pragma once

#include <atomic>
#include <cstdint>
#include <mutex>

#include "base/lbexport.h"
#include "base/os/platform.h"

/// The owning thread may lock it again and must unlock it once for each lock. Works with std::lock_guard.
///
/// Never allocates, so it may guard the heap's own functions. Its destructor does nothing, so a static object can be
/// used until the process ends.
class LB_API LbCriticalSection
{
public:
    constexpr LbCriticalSection() noexcept = default;
    LbCriticalSection(const LbCriticalSection&) = delete;
    LbCriticalSection& operator=(const LbCriticalSection&) = delete;

    void lock() noexcept
    {
        if (!try_lock())
        {
            waitAndLock();
        }
    }

    bool try_lock() noexcept
    {
        const std::uintptr_t thread = LbOs::GetThreadKey();
        // Only this thread ever writes its own key, so relaxed order suffices.
        if (m_owner.load(std::memory_order_relaxed) == thread)
        {
            ++m_depth;
            return true;
        }
        std::uint32_t expected = sc_uiFree;
        if (!m_state.compare_exchange_strong(expected, sc_uiLocked, std::memory_order_acquire,
                                             std::memory_order_relaxed))
        {
            return false;
        }
        m_owner.store(thread, std::memory_order_relaxed);
        m_depth = 1;
        return true;
    }

    void unlock() noexcept
    {
        if (--m_depth > 0)
        {
            return;
        }
        m_owner.store(0, std::memory_order_relaxed);
        if (m_state.exchange(sc_uiFree, std::memory_order_release) == sc_uiContended)
        {
            wakeWaiter();
        }
    }

private:
    static constexpr std::uint32_t sc_uiFree = 0;
    static constexpr std::uint32_t sc_uiLocked = 1;
    static constexpr std::uint32_t sc_uiContended = 2; ///< locked, and a thread may be waiting

    void waitAndLock() noexcept;
    void wakeWaiter() noexcept;

    std::atomic<std::uint32_t> m_state = sc_uiFree;
    std::uint32_t m_depth = 0;
    std::atomic<std::uintptr_t> m_owner = 0;
};

/// Holds a critical section during a scope.
using LbCriticalSectionLock = std::lock_guard<LbCriticalSection>;
