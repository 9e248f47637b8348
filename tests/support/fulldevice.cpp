#include "tests/support/fulldevice.h"

#include <filesystem>

#include "base/lbencoding.h"
#include "base/lbfilesystem.h"

std::wstring GetFullDevice()
{
    const std::wstring device = L"/dev/full";
    return LbFileSystem::IsFile(device) ? device : std::wstring();
}

std::wstring MakeFullFile(const ScopedFolder& folder, const std::wstring& name)
{
    if (GetFullDevice().empty())
    {
        return {};
    }
    const std::wstring path = folder.GetPathOf(name);
    std::filesystem::create_symlink(LbEncoding::ToNative(GetFullDevice()), LbEncoding::ToNative(path));
    return path;
}
