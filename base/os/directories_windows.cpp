#include "base/os/directories.h"

#include <utility>

#include "base/os/windows/api.h"

namespace
{

using LbOs::Windows::ToSystemPath;

/// Converts the system's steps of 100 ns since 1601 to nanoseconds since 1970; nanoseconds since 1601 would overflow.
std::int64_t toNanoseconds(const LARGE_INTEGER& steps)
{
    constexpr std::int64_t c_StepsUntil1970 = 116'444'736'000'000'000;
    constexpr std::int64_t c_PerStep = 100;
    return (steps.QuadPart - c_StepsUntil1970) * c_PerStep;
}

std::uint64_t toNumber(DWORD high, DWORD low)
{
    constexpr unsigned c_LowBits = 32;
    return std::uint64_t{high} << c_LowBits | low;
}

std::wstring joinPath(const std::wstring& directory, const std::wstring& name)
{
    const bool hasSeparator = directory.back() == L'\\' || directory.back() == L'/';
    return directory + (hasSeparator ? L"" : L"\\") + name;
}

} // namespace

std::optional<LbOs::SDirectoryStamp> LbOs::GetDirectoryStamp(const std::wstring& directory)
{
    constexpr DWORD c_Sharing = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;
    const HANDLE opened = CreateFileW(ToSystemPath(directory).c_str(), 0, c_Sharing, nullptr, OPEN_EXISTING,
                                      FILE_FLAG_BACKUP_SEMANTICS, nullptr);
    if (opened == INVALID_HANDLE_VALUE)
    {
        return std::nullopt;
    }
    BY_HANDLE_FILE_INFORMATION identity = {};
    FILE_BASIC_INFO times = {};
    const bool isKnown = GetFileInformationByHandle(opened, &identity) != FALSE &&
                         GetFileInformationByHandleEx(opened, FileBasicInfo, &times, sizeof(times)) != FALSE &&
                         (times.FileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
    CloseHandle(opened);
    if (!isKnown)
    {
        return std::nullopt;
    }
    return SDirectoryStamp{{identity.dwVolumeSerialNumber, toNumber(identity.nFileIndexHigh, identity.nFileIndexLow)},
                           toNanoseconds(times.LastWriteTime),
                           toNanoseconds(times.ChangeTime)};
}

bool LbOs::HasTimesOfThisSystem(const std::wstring& directory)
{
    // The canonical path contains no links, which could lead to a server.
    const std::wstring path = ToSystemPath(GetCanonicalPath(directory));
    std::wstring root(path.size() + MAX_PATH, L'\0');
    return GetVolumePathNameW(path.c_str(), root.data(), static_cast<DWORD>(root.size())) != FALSE &&
           GetDriveTypeW(root.c_str()) == DRIVE_FIXED;
}

LbOs::CHomeDirectory::CHomeDirectory(std::wstring path) : m_path(std::move(path)) {}

bool LbOs::CHomeDirectory::Ensure() const
{
    // GetWorkingDirectory returns a trailing separator only for the root of a drive.
    std::wstring current = GetWorkingDirectory();
    if (!m_path.empty() && m_path.back() == L'\\' && !current.ends_with(L'\\'))
    {
        current += L'\\';
    }
    return current == m_path || SetWorkingDirectory(m_path);
}

bool LbOs::HoldsFile(const std::wstring& directory, const std::wstring& name)
{
    constexpr const wchar_t* c_NotInNames = L"\\/:*?\"<>|";
    if (directory.empty() || name.empty() || name.find_first_of(c_NotInNames) != std::wstring::npos)
    {
        return false;
    }
    const std::wstring path = joinPath(directory, name);
    WIN32_FIND_DATAW data = {};
    const HANDLE found =
        FindFirstFileExW(ToSystemPath(path).c_str(), FindExInfoBasic, &data, FindExSearchNameMatch, nullptr, 0);
    if (found == INVALID_HANDLE_VALUE)
    {
        return false;
    }
    FindClose(found);
    // The system also finds names in other letter case, short names, and names with added dots. Only links and
    // directories need the second query, which tells what a link leads to.
    const bool isSpecial = (data.dwFileAttributes & (FILE_ATTRIBUTE_REPARSE_POINT | FILE_ATTRIBUTE_DIRECTORY)) != 0;
    return data.cFileName == name && (!isSpecial || QueryEntry(path) != EEntry::Directory);
}
