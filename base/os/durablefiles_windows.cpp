#include "base/os/durablefiles.h"

#include "base/os/windows/api.h"

LbOs::FileHandle LbOs::CreateForAppending(const std::wstring& path)
{
    constexpr DWORD c_Access = FILE_APPEND_DATA | FILE_READ_ATTRIBUTES | SYNCHRONIZE;
    return reinterpret_cast<FileHandle>(CreateFileW(Windows::ToSystemPath(path).c_str(), c_Access, FILE_SHARE_READ,
                                                    nullptr, CREATE_NEW, FILE_ATTRIBUTE_NORMAL, nullptr));
}

LbOs::FileHandle LbOs::OpenForReadingFrom(const std::wstring& path, std::uint64_t offset)
{
    const FileHandle file = OpenForReading(path);
    LARGE_INTEGER place = {};
    place.QuadPart = static_cast<LONGLONG>(offset);
    if (file != c_InvalidFile && SetFilePointerEx(reinterpret_cast<HANDLE>(file), place, nullptr, FILE_BEGIN) == FALSE)
    {
        CloseFile(file);
        return c_InvalidFile;
    }
    return file;
}

bool LbOs::SynchroniseFile(FileHandle file)
{
    return FlushFileBuffers(reinterpret_cast<HANDLE>(file)) != FALSE;
}

bool LbOs::SynchroniseDirectory(const std::wstring& path)
{
    return QueryEntry(path) == EEntry::Directory;
}
