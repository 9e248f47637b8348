#include "base/os/folderlock.h"

#include <cerrno>

#include <fcntl.h>
#include <sys/file.h>

#include "base/os/linux/descriptor.h"
#include "base/os/linux/systempath.h"

namespace LbOs
{

std::unique_ptr<CFolderLock> CFolderLock::acquire(const std::wstring& folder, bool mayWait, bool& isHeld)
{
    const std::string name = Linux::ToSystemPath(folder);
    const int operation = mayWait ? LOCK_EX : LOCK_EX | LOCK_NB;
    Linux::CDescriptor opened =
        Linux::AboveStandard(Linux::Retry([&name] { return open(name.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC); }));
    isHeld = false;
    if (!opened.IsOpen() || Linux::Retry([&] { return flock(opened.Get(), operation); }) != 0)
    {
        isHeld = opened.IsOpen() && errno == EWOULDBLOCK;
        return nullptr;
    }
    std::unique_ptr<CFolderLock> lock(new CFolderLock(opened.Get()));
    opened.Release();
    return lock;
}

CFolderLock::~CFolderLock()
{
    // Unlocks explicitly, because forks of the process may still have the folder open.
    flock(static_cast<int>(m_handle), LOCK_UN);
    close(static_cast<int>(m_handle));
}

} // namespace LbOs
