/// Stopping all other threads of the process for a moment.
#pragma once

#include <cstddef>
#include <cstdint>

#include "base/lbexport.h"

namespace LbOs
{

/// All other threads, stopped wherever they are, from Freeze to Thaw or destruction. One object at a time in a process;
/// callers see to that.
///
/// While threads are frozen the caller must not allocate from the heap, use stdio or take any lock that another thread
/// may hold, for its holder may be among the frozen. The object itself keeps to that.
///
/// A thread that is stopped in a handler of its own (of a signal, an exception) may go back, by what that handler
/// saved, to an instruction that its instruction pointer does not tell. Code that threads may have been in is not to be
/// freed.
///
/// On Linux a free real-time signal is taken on first use and kept for good, one that no thread blocks (to wait for it,
/// say) if there is any; after a time-out, or when others gave it a handler, another one is taken. Calls that the
/// system does not take up again after a signal (sleep, poll and the like) end early in frozen threads, as with any
/// other signal.
class LB_API CThreadFreezer
{
public:
    CThreadFreezer() noexcept = default;
    ~CThreadFreezer() { Thaw(); }
    CThreadFreezer(const CThreadFreezer&) = delete;
    CThreadFreezer& operator=(const CThreadFreezer&) = delete;

    /// Stops all other threads, those too that start meanwhile. False when none did so for this time though one still
    /// had to (it blocks all signals, or the system has no room for more), when threads kept starting for this time
    /// (Windows, which stops any), or when the threads cannot be had (no "/proc" of this process's numbers); all
    /// run again then.
    bool Freeze(unsigned timeoutMs) noexcept;

    /// Lets them run. Does nothing when they do.
    void Thaw() noexcept;

    /// Number of frozen threads.
    std::size_t GetCount() const noexcept { return m_count; }

    /// Where a frozen thread, by index, goes on after Thaw. 0 when the system does not tell.
    std::uintptr_t GetInstructionPointer(std::size_t thread) const noexcept;
    /// False when the system refuses.
    bool SetInstructionPointer(std::size_t thread, std::uintptr_t address) noexcept;

private:
    std::size_t m_count = 0;
    bool m_isFrozen = false;
};

} // namespace LbOs
