#include "base/os/folderlock.h"

#include <fcntl.h>
#include <sys/file.h>

#include "base/os/linux/descriptor.h"
#include "base/os/linux/systempath.h"

namespace LbOs
{

std::unique_ptr<CFolderLock> CFolderLock::Acquire(const std::wstring& folder)
{
    const std::string name = Linux::ToSystemPath(folder);
    Linux::CDescriptor opened =
        Linux::AboveStandard(Linux::Retry([&name] { return open(name.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC); }));
    if (!opened.IsOpen() || Linux::Retry([&opened] { return flock(opened.Get(), LOCK_EX); }) != 0)
    {
        return nullptr;
    }
    std::unique_ptr<CFolderLock> lock(new CFolderLock(opened.Get()));
    opened.Release();
    return lock;
}

CFolderLock::~CFolderLock()
{
    // Forks of the process may still have the folder open.
    flock(static_cast<int>(m_handle), LOCK_UN);
    close(static_cast<int>(m_handle));
}

} // namespace LbOs
