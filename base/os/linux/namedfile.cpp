#include "base/os/linux/namedfile.h"

#include <cerrno>
#include <cwctype>
#include <system_error>

#include <unistd.h>

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
    // The system's file system for shared memory, which is never written to a disk.
    return name.empty() ? std::string() : "/dev/shm/LuTestSuite-" + LbEncoding::ToNative(name);
}

void DescribeFailure(std::wstring* failure, const char* step)
{
    if (failure != nullptr)
    {
        *failure = LbEncoding::FromNative(step + (": " + std::generic_category().message(errno)));
    }
}

void DescribeMissingKeeper(std::wstring* failure)
{
    if (failure != nullptr)
    {
        *failure = L"der Prozess LuKeeper fehlt oder führt schon zu viele Einträge";
    }
}

CNamedFile::~CNamedFile()
{
    if (m_kept != nullptr)
    {
        unlink(m_kept->path);
        ReleaseKeptFile(m_kept);
    }
}

} // namespace LbOs::Linux
