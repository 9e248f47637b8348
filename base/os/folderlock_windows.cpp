#include "base/os/folderlock.h"

#include <mutex>
#include <optional>
#include <set>
#include <utility>

#include "base/os/files.h"
#include "base/os/windows/api.h"

namespace LbOs
{

namespace
{

/// The names of the mutexes that this process holds. Needed because Windows lets a thread acquire a mutex that it
/// already holds.
class CHeldMutexes
{
public:
    static CHeldMutexes& Get()
    {
        static CHeldMutexes s_mutexes;
        return s_mutexes;
    }

    bool Contains(const std::wstring& name)
    {
        const std::lock_guard lock(m_lock);
        return m_names.contains(name);
    }

    void Add(const std::wstring& name)
    {
        const std::lock_guard lock(m_lock);
        m_names.insert(name);
    }

    void Remove(const std::wstring& name)
    {
        const std::lock_guard lock(m_lock);
        m_names.erase(name);
    }

private:
    std::mutex m_lock;
    std::set<std::wstring> m_names;
};

struct SHeldLock
{
    std::wstring name;
    Windows::Handle mutex;
};

/// Creates or opens the mutex. Opens another user's mutex with only the rights that the lock needs.
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
    std::wstring name = L"Global\\LuTestSuite-Folder-" + std::to_wstring(status->identity.volume) + L"-" +
                        std::to_wstring(status->identity.number);
    isHeld = !mayWait && CHeldMutexes::Get().Contains(name);
    if (isHeld)
    {
        return nullptr;
    }
    Windows::Handle mutex(openMutex(name));
    // A mutex whose owner ended without releasing it is acquired, too.
    const DWORD result = mutex == nullptr ? WAIT_FAILED : WaitForSingleObject(mutex.get(), mayWait ? INFINITE : 0);
    isHeld = result == WAIT_TIMEOUT;
    if (result != WAIT_OBJECT_0 && result != WAIT_ABANDONED)
    {
        return nullptr;
    }
    CHeldMutexes::Get().Add(name);
    auto held = std::make_unique<SHeldLock>(SHeldLock{std::move(name), std::move(mutex)});
    return std::unique_ptr<CFolderLock>(new CFolderLock(reinterpret_cast<std::intptr_t>(held.release())));
}

CFolderLock::~CFolderLock()
{
    const std::unique_ptr<SHeldLock> held(reinterpret_cast<SHeldLock*>(m_handle));
    CHeldMutexes::Get().Remove(held->name);
    ReleaseMutex(held->mutex.get());
}

} // namespace LbOs
