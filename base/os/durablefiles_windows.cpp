#include "base/os/durablefiles.h"

#include "base/os/windows/api.h"

LbOs::FileHandle LbOs::CreateForAppending(const std::wstring& path)
{
    constexpr DWORD c_Access = FILE_APPEND_DATA | FILE_READ_ATTRIBUTES | SYNCHRONIZE;
    return reinterpret_cast<FileHandle>(CreateFileW(Windows::ToSystemPath(path).c_str(), c_Access, FILE_SHARE_READ,
                                                    nullptr, CREATE_NEW, FILE_ATTRIBUTE_NORMAL, nullptr));
}

bool LbOs::SynchroniseFile(FileHandle file)
{
    return FlushFileBuffers(reinterpret_cast<HANDLE>(file)) != FALSE;
}

bool LbOs::SynchroniseDirectory(const std::wstring& path)
{
    return QueryEntry(path) == EEntry::Directory;
}
