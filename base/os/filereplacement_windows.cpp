#include "base/os/filereplacement.h"

#include "base/os/windows/api.h"

using LbOs::Windows::ToSystemPath;

namespace
{

/// True if the rename may succeed a moment later: virus scanners and indexers hold new files open, and two processes
/// may replace the same file at the same time.
bool isPassing(DWORD error)
{
    return error == ERROR_SHARING_VIOLATION || error == ERROR_ACCESS_DENIED || error == ERROR_LOCK_VIOLATION;
}

bool isReplaceable(const std::wstring& name)
{
    constexpr DWORD c_Refusing = FILE_ATTRIBUTE_READONLY | FILE_ATTRIBUTE_DIRECTORY;
    const DWORD attributes = GetFileAttributesW(name.c_str());
    return attributes == INVALID_FILE_ATTRIBUTES || (attributes & c_Refusing) == 0;
}

} // namespace

bool LbOs::MayAddFiles(const std::wstring& directory)
{
    const HANDLE opened = CreateFileW(ToSystemPath(directory).c_str(), FILE_ADD_FILE,
                                      FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr, OPEN_EXISTING,
                                      FILE_FLAG_BACKUP_SEMANTICS, nullptr);
    if (opened == INVALID_HANDLE_VALUE)
    {
        return false;
    }
    const Windows::Handle closer(opened);
    return true;
}

bool LbOs::RenameFile(const std::wstring& path, const std::wstring& newPath)
{
    constexpr int c_Attempts = 10;
    constexpr DWORD c_Pause = 10;
    const std::wstring name = ToSystemPath(path);
    const std::wstring newName = ToSystemPath(newPath);
    if (!isReplaceable(newName))
    {
        return false;
    }
    for (int attempt = 1; MoveFileExW(name.c_str(), newName.c_str(), MOVEFILE_REPLACE_EXISTING) == FALSE; ++attempt)
    {
        if (attempt == c_Attempts || !isPassing(GetLastError()))
        {
            return false;
        }
        Sleep(c_Pause);
    }
    return true;
}
