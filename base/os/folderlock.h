/// Locks of folders between processes.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "base/lbexport.h"

namespace LbOs
{

/// One holder at a time, of all threads and processes that lock one folder by whatever path. Nothing is written into
/// the folder, and whoever does not ask for the lock is not kept from anything. Released with the object, on the thread
/// that acquired it, and when the process ends, however it ends.
///
/// On Linux the lock is the folder's own (flock): it holds as far as the file system's locks do, which for folders of
/// the network may be the machine alone, or not at all. On Windows it holds on one machine.
class LB_API CFolderLock
{
public:
    /// Waits without limit until the lock is free. Null when the folder cannot be opened or takes no locks.
    static std::unique_ptr<CFolderLock> Acquire(const std::wstring& folder);

    ~CFolderLock();
    CFolderLock(const CFolderLock&) = delete;
    CFolderLock& operator=(const CFolderLock&) = delete;

private:
    explicit CFolderLock(std::intptr_t handle) : m_handle(handle) {}

    std::intptr_t m_handle;
};

} // namespace LbOs
