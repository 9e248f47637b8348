/// Locks on folders, shared by processes.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "base/lbexport.h"

namespace LbOs
{

/// Among all threads and processes that lock a folder, by any path to it, only one holds the lock at a time. Writes
/// nothing into the folder, and does not affect code that does not lock it. The destructor releases the lock; only the
/// thread that acquired the lock may destroy the object. The lock is also released when the process ends in any way. A
/// thread must not wait for a lock that it holds.
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

    /// Like Acquire, but never waits: also null if another thread or process, or the calling thread itself, holds the
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
