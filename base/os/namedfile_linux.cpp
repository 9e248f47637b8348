#include "base/os/namedfile_linux.h"

#include <cwctype>

#include <fcntl.h>
#include <sys/stat.h>

#include "base/lbencoding.h"

namespace LbOs::Linux
{

std::string ToObjectPath(const std::wstring& name)
{
    for (const wchar_t character : name)
    {
        const bool isPlain =
            character < 0x80 && (std::iswalnum(static_cast<wint_t>(character)) != 0 || character == L'-');
        if (!isPlain)
        {
            return {};
        }
    }
    // The system's place for memory between processes, a file system that never reaches a disk.
    return name.empty() ? std::string() : "/dev/shm/LuTestSuite-" + LbEncoding::ToNative(name);
}

CNamedFile::~CNamedFile()
{
    if (m_kept != nullptr)
    {
        unlink(m_kept->path);
        ReleaseKeptFile(m_kept);
    }
}

CDescriptor OpenOwnFile(const std::string& path, int flags, mode_t kind, int linkFlag)
{
    if (path.empty())
    {
        return {};
    }
    CDescriptor file(Retry([&] { return open(path.c_str(), flags | O_CLOEXEC | linkFlag | O_NONBLOCK); }));
    struct stat status = {};
    const bool isOwn = file.IsOpen() && fstat(file.Get(), &status) == 0 && (status.st_mode & S_IFMT) == kind &&
                       status.st_uid == geteuid();
    return isOwn ? std::move(file) : CDescriptor();
}

} // namespace LbOs::Linux
