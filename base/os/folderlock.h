/// Locks on folders, shared by processes.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "base/lbexport.h"

namespace LbOs
{

/// One holder at a time among all threads and processes that lock the folder, by any path. Writes nothing into the
/// folder, and does not affect code that does not lock it. The lock is released with the object, which the thread that
/// acquired it must destroy, or when the process ends in any way. A thread must not wait for a lock that it holds.
///
/// On Linux the lock is a flock of the folder: on network file systems it may be limited to one machine or unsupported.
/// On Windows it is limited to one machine.
class LB_API CFolderLock
{
public:
    /// Waits without limit until the lock is free. Null if the folder cannot be opened or does not support locks.
    static std::unique_ptr<CFolderLock> Acquire(const std::wstring& folder)
    {
        bool isHeld = false;
        return acquire(folder, true, isHeld);
    }

    /// As Acquire, but never waits: also null if another thread or process, or the calling thread itself, holds the
    /// lock. `isHeld` receives true in this case, otherwise false.
    static std::unique_ptr<CFolderLock> TryAcquire(const std::wstring& folder, bool& isHeld)
    {
        return acquire(folder, false, isHeld);
    }

    static std::unique_ptr<CFolderLock> TryAcquire(const std::wstring& folder)
    {
        bool isHeld = false;
        return acquire(folder, false, isHeld);
    }

    ~CFolderLock();
    CFolderLock(const CFolderLock&) = delete;
    CFolderLock& operator=(const CFolderLock&) = delete;

private:
    /// `isHeld` receives true only if the lock is held and `mayWait` is false.
    static std::unique_ptr<CFolderLock> acquire(const std::wstring& folder, bool mayWait, bool& isHeld);
    explicit CFolderLock(std::intptr_t handle) : m_handle(handle) {}

    std::intptr_t m_handle;
};

} // namespace LbOs
