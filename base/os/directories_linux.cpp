#include "base/os/directories.h"

#include <algorithm>
#include <utility>

#include <linux/magic.h>
#include <sys/stat.h>
#include <sys/statfs.h>

#include "base/lbencoding.h"

namespace
{

std::int64_t toNanoseconds(const timespec& time)
{
    constexpr std::int64_t c_PerSecond = 1'000'000'000;
    return time.tv_sec * c_PerSecond + time.tv_nsec;
}

/// Follows links. False for a link without a target.
bool isDirectory(const std::string& path, struct stat status)
{
    return S_ISDIR(status.st_mode) ||
           (S_ISLNK(status.st_mode) && stat(path.c_str(), &status) == 0 && S_ISDIR(status.st_mode));
}

} // namespace

std::optional<LbOs::SDirectoryStamp> LbOs::GetDirectoryStamp(const std::wstring& directory)
{
    struct stat status = {};
    if (stat(LbEncoding::ToNative(directory).c_str(), &status) != 0 || !S_ISDIR(status.st_mode))
    {
        return std::nullopt;
    }
    return SDirectoryStamp{
        {status.st_dev, status.st_ino}, toNanoseconds(status.st_mtim), toNanoseconds(status.st_ctim)};
}

bool LbOs::HasTimesOfThisSystem(const std::wstring& directory)
{
    constexpr std::uint32_t c_Xfs = 0x58465342;
    constexpr std::uint32_t c_Zfs = 0x2FC12FC1;
    constexpr std::uint32_t c_LocalKinds[] = {EXT4_SUPER_MAGIC, BTRFS_SUPER_MAGIC,    F2FS_SUPER_MAGIC, c_Xfs, c_Zfs,
                                              TMPFS_MAGIC,      OVERLAYFS_SUPER_MAGIC};
    struct statfs status = {};
    return statfs(LbEncoding::ToNative(directory).c_str(), &status) == 0 &&
           std::ranges::find(c_LocalKinds, static_cast<std::uint32_t>(status.f_type)) != std::end(c_LocalKinds);
}

LbOs::CHomeDirectory::CHomeDirectory(std::wstring path) : m_path(std::move(path))
{
    m_identity = GetFileStatus(m_path).value_or(SFileStatus()).identity;
}

bool LbOs::CHomeDirectory::Ensure() const
{
    // Compares on each call. Keeping the directory open would avoid that, but a case may close any descriptor.
    struct stat status = {};
    const bool isThere = stat(".", &status) == 0 && SFileIdentity{status.st_dev, status.st_ino} == m_identity;
    return isThere || SetWorkingDirectory(m_path);
}

bool LbOs::HoldsFile(const std::wstring& directory, const std::wstring& name)
{
    const bool isName =
        !name.empty() && name.find(L'/') == std::wstring::npos && name.find(L'\0') == std::wstring::npos;
    if (directory.empty() || !isName)
    {
        return false;
    }
    const std::string bytes = LbEncoding::ToNative(name);
    std::string path = LbEncoding::ToNative(directory);
    path.append(1, '/').append(bytes);
    struct stat status = {};
    // Several texts can be converted to the same bytes; only one of these texts appears in a listing.
    return lstat(path.c_str(), &status) == 0 && !isDirectory(path, status) && LbEncoding::FromNative(bytes) == name;
}
