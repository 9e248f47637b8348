#include "base/os/folderlock.h"

#include <optional>

#include "base/os/files.h"
#include "base/os/windows/api.h"

namespace LbOs
{

namespace
{

/// Creates the mutex or opens it. Asks another user's mutex only for the rights that the lock needs.
HANDLE openMutex(const std::wstring& name)
{
    const HANDLE made = CreateMutexW(nullptr, FALSE, name.c_str());
    return made != nullptr ? made : OpenMutexW(SYNCHRONIZE | MUTEX_MODIFY_STATE, FALSE, name.c_str());
}

} // namespace

std::unique_ptr<CFolderLock> CFolderLock::acquire(const std::wstring& folder, bool mayWait, bool& isHeld)
{
    isHeld = false;
    const std::optional<SFileStatus> status = GetFileStatus(folder);
    if (!status)
    {
        return nullptr;
    }
    Windows::Handle mutex(openMutex(L"Global\\LuTestSuite-Folder-" + std::to_wstring(status->identity.volume) + L"-" +
                                    std::to_wstring(status->identity.number)));
    // A mutex whose owner ended without releasing it is acquired, too.
    const DWORD result = mutex == nullptr ? WAIT_FAILED : WaitForSingleObject(mutex.get(), mayWait ? INFINITE : 0);
    isHeld = result == WAIT_TIMEOUT;
    if (result != WAIT_OBJECT_0 && result != WAIT_ABANDONED)
    {
        return nullptr;
    }
    return std::unique_ptr<CFolderLock>(new CFolderLock(reinterpret_cast<std::intptr_t>(mutex.release())));
}

CFolderLock::~CFolderLock()
{
    const Windows::Handle mutex(reinterpret_cast<HANDLE>(m_handle));
    ReleaseMutex(mutex.get());
}

} // namespace LbOs
