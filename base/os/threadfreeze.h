/// Stopping all other threads of the process for a moment.
#pragma once

#include <cstddef>
#include <cstdint>

#include "base/lbexport.h"

namespace LbOs
{

/// Stops all other threads of the process, wherever they are, from Freeze to Thaw or destruction. Callers ensure that a
/// process has at most one object at a time.
///
/// While threads are frozen the caller must not allocate from the heap, use stdio, or take a lock that a frozen thread
/// may hold. The object itself follows this rule.
///
/// A thread that is stopped inside a signal or exception handler may later return to the interrupted instruction, whose
/// address its instruction pointer does not show. So code that threads may have executed must not be freed.
///
/// On Linux, the first use reserves a free real-time signal for the life of the process, if possible one that no thread
/// blocks. After a time-out, or if other code installs a handler for it, another signal is reserved. System calls that
/// do not resume after a signal (sleep, poll and similar) end early in frozen threads, as with any other signal.
class LB_API CThreadFreezer
{
public:
    CThreadFreezer() noexcept = default;
    ~CThreadFreezer() { Thaw(); }
    CThreadFreezer(const CThreadFreezer&) = delete;
    CThreadFreezer& operator=(const CThreadFreezer&) = delete;

    /// Stops all other threads, including threads that start meanwhile. False on failure; then all threads run again.
    /// Fails if some threads still run and none has stopped for `timeoutMs` (they block all signals, or the signal
    /// queue is full); if threads keep starting for `timeoutMs` and 16 enumerations (Windows); if there are more than
    /// 8192 threads; if no signal is free (Linux); or if the threads cannot be listed (no "/proc" of this process id
    /// namespace).
    bool Freeze(unsigned timeoutMs) noexcept;

    /// Lets the threads run again. No effect if they are running.
    void Thaw() noexcept;

    /// Number of frozen threads.
    std::size_t GetCount() const noexcept { return m_count; }

    /// The address where the frozen thread with this index continues after Thaw; 0 if unknown.
    std::uintptr_t GetInstructionPointer(std::size_t thread) const noexcept;
    /// False if the system refuses.
    bool SetInstructionPointer(std::size_t thread, std::uintptr_t address) noexcept;

private:
    std::size_t m_count = 0;
    bool m_isFrozen = false;
};

} // namespace LbOs
