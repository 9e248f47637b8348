#include "base/os/files.h"

#include <memory>
#include <string_view>
#include <vector>

#include "base/lbexception.h"
#include "base/os/console.h"
#include "base/os/linkdata.h"
#include "base/os/windows/api.h"

// Needs windows.h before it.
#include <winioctl.h>

namespace
{

using LbOs::Windows::ReadText;
using LbOs::Windows::ToSystemPath;

/// Paths of folders must be 12 characters shorter than MAX_PATH, to leave room for a short file name.
constexpr std::size_t c_LongestPlainPath = MAX_PATH - 13;

bool isSeparator(wchar_t character)
{
    return character == L'\\' || character == L'/';
}

HANDLE toHandle(LbOs::FileHandle file)
{
    return reinterpret_cast<HANDLE>(file);
}

std::wstring withoutSeparators(std::wstring path)
{
    while (path.size() > 1 && isSeparator(path.back()) && path[path.size() - 2] != L':')
    {
        path.pop_back();
    }
    return path;
}

LbOs::FileHandle openFile(const std::wstring& path, DWORD access, DWORD sharing, DWORD creation)
{
    return reinterpret_cast<LbOs::FileHandle>(CreateFileW(ToSystemPath(path).c_str(), access, sharing, nullptr,
                                                          creation, FILE_ATTRIBUTE_NORMAL | FILE_FLAG_SEQUENTIAL_SCAN,
                                                          nullptr));
}

/// One system call transfers at most 4 GB.
DWORD toChunk(std::size_t size)
{
    constexpr std::size_t c_Largest = 0x40000000;
    return static_cast<DWORD>(std::min(size, c_Largest));
}

bool isDirectory(DWORD attributes)
{
    return (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
}

struct SCloseHandle
{
    void operator()(void* handle) const { CloseHandle(handle); }
};
using OwnedHandle = std::unique_ptr<void, SCloseHandle>;

/// Opens the entry at a path only to query it; null on failure. Directories need the backup flag.
OwnedHandle openToLookAt(const std::wstring& path, DWORD flags = 0)
{
    const HANDLE opened =
        CreateFileW(ToSystemPath(path).c_str(), 0, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                    OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS | flags, nullptr);
    return OwnedHandle(opened == INVALID_HANDLE_VALUE ? nullptr : opened);
}

std::int64_t toNumber(DWORD high, DWORD low)
{
    constexpr unsigned c_LowBits = 32;
    return static_cast<std::int64_t>(std::uint64_t{high} << c_LowBits | low);
}

std::optional<LbOs::SFileStatus> getStatus(const OwnedHandle& opened)
{
    BY_HANDLE_FILE_INFORMATION info = {};
    if (opened == nullptr || GetFileInformationByHandle(opened.get(), &info) == FALSE)
    {
        return std::nullopt;
    }
    const auto number = static_cast<std::uint64_t>(toNumber(info.nFileIndexHigh, info.nFileIndexLow));
    return LbOs::SFileStatus{{info.dwVolumeSerialNumber, number},
                             toNumber(info.nFileSizeHigh, info.nFileSizeLow),
                             toNumber(info.ftLastWriteTime.dwHighDateTime, info.ftLastWriteTime.dwLowDateTime),
                             GetFileType(opened.get()) == FILE_TYPE_DISK && !isDirectory(info.dwFileAttributes),
                             info.nNumberOfLinks > 1};
}

std::wstring getFinalPath(const OwnedHandle& opened)
{
    return opened == nullptr ? std::wstring() : ReadText([&opened](wchar_t* buffer, DWORD size) {
        return GetFinalPathNameByHandleW(opened.get(), buffer, size, 0);
    });
}

/// True for a link. Cloud files, deduplicated files and others have the reparse attribute, too, but other tags. For a
/// linked folder, Wine sets the attribute without a tag.
bool isLinkOf(DWORD attributes, DWORD tag)
{
    return (attributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0 &&
           (tag == IO_REPARSE_TAG_SYMLINK || tag == IO_REPARSE_TAG_MOUNT_POINT || tag == 0);
}

/// The target as stored in the link: relative, or with the system's prefix.
std::wstring readTarget(const OwnedHandle& link)
{
    std::vector<char> bytes(MAXIMUM_REPARSE_DATA_BUFFER_SIZE);
    DWORD size = 0;
    const bool isRead =
        link != nullptr && DeviceIoControl(link.get(), FSCTL_GET_REPARSE_POINT, nullptr, 0, bytes.data(),
                                           static_cast<DWORD>(bytes.size()), &size, nullptr) != FALSE;
    return isRead ? LbOs::GetTargetOfLinkData({bytes.data(), size}) : std::wstring();
}

/// Completes a target that is relative to the drive's root or to the link's folder; resolves ".." textually, as the
/// system does.
std::wstring completeTarget(const std::wstring& path, const std::wstring& target)
{
    const std::size_t colon = path.find(L':');
    const std::wstring start = !isSeparator(target.front())  ? path.substr(0, path.find_last_of(L"\\/") + 1)
                               : colon != std::wstring::npos ? path.substr(0, colon + 1)
                                                             : std::wstring();
    return start.empty() ? start : LbOs::GetFullPath(start + target);
}

/// Removes a write-protected file, which Windows, unlike Linux, refuses to delete. The protection applies to all names
/// of the file, so it is restored for the other names.
bool removeProtected(const std::wstring& name, DWORD attributes)
{
    if (SetFileAttributesW(name.c_str(), FILE_ATTRIBUTE_NORMAL) == FALSE)
    {
        return false;
    }
    bool isRemoved = false;
    // The system does not change times that are zero here.
    FILE_BASIC_INFO former = {};
    former.FileAttributes = attributes;
    constexpr DWORD c_Access = DELETE | FILE_READ_ATTRIBUTES | FILE_WRITE_ATTRIBUTES;
    constexpr DWORD c_Sharing = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;
    const HANDLE opened = CreateFileW(name.c_str(), c_Access, c_Sharing, nullptr, OPEN_EXISTING,
                                      FILE_FLAG_OPEN_REPARSE_POINT | FILE_FLAG_BACKUP_SEMANTICS, nullptr);
    if (const OwnedHandle file(opened == INVALID_HANDLE_VALUE ? nullptr : opened); file)
    {
        FILE_DISPOSITION_INFO disposition = {TRUE};
        isRemoved =
            SetFileInformationByHandle(file.get(), FileDispositionInfo, &disposition, sizeof(disposition)) != FALSE;
        SetFileInformationByHandle(file.get(), FileBasicInfo, &former, sizeof(former));
    }
    else
    {
        SetFileAttributesW(name.c_str(), attributes);
    }
    return isRemoved;
}

} // namespace

std::wstring LbOs::Windows::ToSystemPath(const std::wstring& path)
{
    if (path.find(L'\0') != std::wstring::npos)
    {
        return {};
    }
    if (path.size() <= c_LongestPlainPath || path.starts_with(L"\\\\?\\") || path.starts_with(L"\\\\.\\"))
    {
        return path;
    }
    // The system takes the long form literally: no "/", "." or "..", no relative paths.
    const std::wstring full = ReadText(
        [&path](wchar_t* buffer, DWORD size) { return GetFullPathNameW(path.c_str(), size, buffer, nullptr); });
    return full.starts_with(L"\\\\") ? L"\\\\?\\UNC\\" + full.substr(2) : L"\\\\?\\" + full;
}

bool LbOs::IsAbsolutePath(std::wstring_view path) noexcept
{
    if (path.size() >= 2 && isSeparator(path[0]) && isSeparator(path[1]))
    {
        return true;
    }
    const auto isLetter = [](wchar_t character) {
        return (character >= L'a' && character <= L'z') || (character >= L'A' && character <= L'Z');
    };
    return path.size() >= 3 && isLetter(path[0]) && path[1] == L':' && isSeparator(path[2]);
}

LbOs::EEntry LbOs::QueryEntry(const std::wstring& path)
{
    DWORD attributes = GetFileAttributesW(ToSystemPath(path).c_str());
    if (attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0 && IsLink(path))
    {
        // So far, these are the attributes of the link itself.
        const OwnedHandle target = openToLookAt(path);
        BY_HANDLE_FILE_INFORMATION info = {};
        const bool isThere = target != nullptr && GetFileInformationByHandle(target.get(), &info) != FALSE;
        attributes = isThere ? info.dwFileAttributes : INVALID_FILE_ATTRIBUTES;
    }
    if (attributes == INVALID_FILE_ATTRIBUTES)
    {
        return EEntry::Missing;
    }
    return isDirectory(attributes) ? EEntry::Directory : EEntry::File;
}

bool LbOs::IsMissing(const std::wstring& path)
{
    if (openToLookAt(path) != nullptr)
    {
        return false;
    }
    const DWORD error = GetLastError();
    return error == ERROR_FILE_NOT_FOUND || error == ERROR_PATH_NOT_FOUND || error == ERROR_CANT_RESOLVE_FILENAME;
}

std::optional<LbOs::SFileStatus> LbOs::GetFileStatus(const std::wstring& path)
{
    return getStatus(openToLookAt(path));
}

std::optional<LbOs::SFileStatus> LbOs::GetPlaceStatus(const std::wstring& path)
{
    return getStatus(openToLookAt(path, FILE_FLAG_OPEN_REPARSE_POINT));
}

bool LbOs::IsLink(const std::wstring& path)
{
    const std::wstring name = ToSystemPath(path);
    const DWORD attributes = GetFileAttributesW(name.c_str());
    if (attributes == INVALID_FILE_ATTRIBUTES || (attributes & FILE_ATTRIBUTE_REPARSE_POINT) == 0)
    {
        return false;
    }
    // Only a listing returns the tag without opening the file, which may be forbidden.
    WIN32_FIND_DATAW data = {};
    const HANDLE found = FindFirstFileW(name.c_str(), &data);
    if (found == INVALID_HANDLE_VALUE)
    {
        return false;
    }
    FindClose(found);
    return isLinkOf(data.dwFileAttributes, data.dwReserved0);
}

std::wstring LbOs::GetLinkTarget(const std::wstring& path)
{
    constexpr std::wstring_view c_SystemPrefix = L"\\??\\";
    const std::wstring target =
        IsLink(path) ? readTarget(openToLookAt(path, FILE_FLAG_OPEN_REPARSE_POINT)) : std::wstring();
    if (target.starts_with(c_SystemPrefix))
    {
        return L"\\\\?\\" + target.substr(c_SystemPrefix.size());
    }
    return target.empty() ? target : completeTarget(path, target);
}

bool LbOs::IsRegularFile(const std::wstring& path)
{
    const FileHandle file = OpenForReading(path);
    if (file == c_InvalidFile)
    {
        return false;
    }
    const bool isOnDisk = GetFileType(toHandle(file)) == FILE_TYPE_DISK;
    CloseFile(file);
    return isOnDisk;
}

bool LbOs::AreSameFile(const std::wstring& path, const std::wstring& otherPath)
{
    // A file's index is unique only while the file is open.
    const OwnedHandle file = openToLookAt(path);
    const OwnedHandle otherFile = openToLookAt(otherPath);
    const std::optional<SFileStatus> status = getStatus(file);
    const std::optional<SFileStatus> otherStatus = getStatus(otherFile);
    return status && otherStatus && status->identity == otherStatus->identity;
}

bool LbOs::VisitDirectory(const std::wstring& directory, const std::function<void(const SDirectoryEntry&)>& visit)
{
    const std::wstring pattern =
        directory.empty() || isSeparator(directory.back()) ? directory + L'*' : directory + L"\\*";
    WIN32_FIND_DATAW data = {};
    const HANDLE found = directory.empty()
                             ? INVALID_HANDLE_VALUE
                             : FindFirstFileExW(ToSystemPath(pattern).c_str(), FindExInfoBasic, &data,
                                                FindExSearchNameMatch, nullptr, FIND_FIRST_EX_LARGE_FETCH);
    if (found == INVALID_HANDLE_VALUE)
    {
        // The root of an empty drive does not even contain ".".
        return !directory.empty() && GetLastError() == ERROR_FILE_NOT_FOUND;
    }
    struct SClose
    {
        void operator()(void* handle) const { FindClose(handle); }
    };
    const std::unique_ptr<void, SClose> closer(found);
    std::wstring name;
    do
    {
        name = data.cFileName;
        if (name != L"." && name != L"..")
        {
            const bool isLink = isLinkOf(data.dwFileAttributes, data.dwReserved0);
            const std::wstring path = isLink ? pattern.substr(0, pattern.size() - 1) + name : std::wstring();
            visit({name, isLink ? QueryEntry(path) == EEntry::Directory : isDirectory(data.dwFileAttributes), isLink});
        }
    }
    while (FindNextFileW(found, &data) != FALSE);
    return GetLastError() == ERROR_NO_MORE_FILES;
}

bool LbOs::MakeDirectory(const std::wstring& path)
{
    return CreateDirectoryW(ToSystemPath(path).c_str(), nullptr) != FALSE || QueryEntry(path) == EEntry::Directory;
}

bool LbOs::RemoveFile(const std::wstring& path)
{
    const std::wstring name = ToSystemPath(path);
    if (DeleteFileW(name.c_str()) != FALSE)
    {
        return true;
    }
    const DWORD attributes = GetFileAttributesW(name.c_str());
    if (attributes == INVALID_FILE_ATTRIBUTES)
    {
        return false;
    }
    if (isDirectory(attributes))
    {
        return IsLink(path) && RemoveDirectoryW(name.c_str()) != FALSE;
    }
    return (attributes & FILE_ATTRIBUTE_READONLY) != 0 && removeProtected(name, attributes);
}

bool LbOs::RemoveEmptyDirectory(const std::wstring& path)
{
    return RemoveDirectoryW(ToSystemPath(path).c_str()) != FALSE;
}

std::wstring LbOs::GetWorkingDirectory()
{
    return ReadText([](wchar_t* buffer, DWORD size) { return GetCurrentDirectoryW(size, buffer); });
}

bool LbOs::SetWorkingDirectory(const std::wstring& path)
{
    return path.find(L'\0') == std::wstring::npos && SetCurrentDirectoryW(path.c_str()) != FALSE;
}

std::wstring LbOs::GetFullPath(const std::wstring& path)
{
    if (path.empty() || path.find(L'\0') != std::wstring::npos)
    {
        return path;
    }
    const std::wstring full = ReadText(
        [&path](wchar_t* buffer, DWORD size) { return GetFullPathNameW(path.c_str(), size, buffer, nullptr); });
    if (full.empty())
    {
        throw LbException(L"Der volle Pfad von " + path + L" ist nicht bekannt");
    }
    return full;
}

std::wstring LbOs::GetCanonicalPath(const std::wstring& path)
{
    return getFinalPath(openToLookAt(path));
}

std::wstring LbOs::GetCanonicalPlace(const std::wstring& path)
{
    return getFinalPath(openToLookAt(path, FILE_FLAG_OPEN_REPARSE_POINT));
}

std::wstring LbOs::GetExecutablePath()
{
    return ReadText([](wchar_t* buffer, DWORD size) { return GetModuleFileNameW(nullptr, buffer, size); });
}

std::wstring LbOs::GetUserDataDirectory()
{
    return withoutSeparators(GetEnvironmentText(L"APPDATA"));
}

std::wstring LbOs::GetTemporaryDirectory()
{
    return withoutSeparators(ReadText([](wchar_t* buffer, DWORD size) { return GetTempPathW(size, buffer); }));
}

LbOs::FileHandle LbOs::OpenForReading(const std::wstring& path)
{
    return openFile(path, GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, OPEN_EXISTING);
}

LbOs::FileHandle LbOs::OpenForWriting(const std::wstring& path)
{
    return openFile(path, GENERIC_WRITE, FILE_SHARE_READ, CREATE_ALWAYS);
}

std::int64_t LbOs::ReadFileBytes(FileHandle file, void* buffer, std::size_t size)
{
    DWORD count = 0;
    if (ReadFile(toHandle(file), buffer, toChunk(size), &count, nullptr) == FALSE)
    {
        return GetLastError() == ERROR_BROKEN_PIPE ? 0 : -1;
    }
    return count;
}

bool LbOs::WriteFileBytes(FileHandle file, const void* data, std::size_t size)
{
    const char* bytes = static_cast<const char*>(data);
    while (size > 0)
    {
        DWORD count = 0;
        if (WriteFile(toHandle(file), bytes, toChunk(size), &count, nullptr) == FALSE || count == 0)
        {
            return false;
        }
        bytes += count;
        size -= count;
    }
    return true;
}

std::int64_t LbOs::GetFileSize(FileHandle file)
{
    LARGE_INTEGER size = {};
    const bool hasSize = GetFileType(toHandle(file)) == FILE_TYPE_DISK && GetFileSizeEx(toHandle(file), &size) != FALSE;
    return hasSize ? size.QuadPart : -1;
}

bool LbOs::CloseFile(FileHandle file)
{
    // c_InvalidFile has the value of the current process's pseudo handle, which CloseHandle accepts.
    return file != c_InvalidFile && CloseHandle(toHandle(file)) != FALSE;
}
