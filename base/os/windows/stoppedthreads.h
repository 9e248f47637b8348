/// Threads of another process that this process suspends. Internal to the Windows side.
#pragma once

#include <optional>
#include <vector>

#include "base/os/windows/api.h"

namespace LbOs::Windows
{

/// A thread that is suspended.
struct SStoppedThread
{
    DWORD id = 0;
    Handle handle;
    ULONGLONG creation = 0; ///< time in the system's unit
};

/// The threads of a process, suspended for as long as the object lives, at most 64. Used by one thread.
class CStoppedThreads
{
public:
    /// `first`, unless 0, is suspended before the others. Omits threads that the current process may not suspend.
    CStoppedThreads(DWORD process, DWORD first);
    ~CStoppedThreads();

    CStoppedThreads(const CStoppedThreads&) = delete;
    CStoppedThreads& operator=(const CStoppedThreads&) = delete;

    const std::vector<SStoppedThread>& GetThreads() const { return m_threads; }

    /// Empty if the registers cannot be read.
    static std::optional<CONTEXT> ReadRegisters(const SStoppedThread& thread);

private:
    bool suspendNew(DWORD process);
    bool suspend(DWORD thread);

    std::vector<SStoppedThread> m_threads;
};

} // namespace LbOs::Windows
