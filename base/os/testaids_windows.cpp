#include "base/os/testaids.h"

#include "base/os/files.h"
#include "base/os/windows_api.h"

bool LbOs::LoadAndUnloadModule(const std::wstring& path)
{
    const HMODULE module = LoadLibraryExW(path.c_str(), nullptr, LOAD_WITH_ALTERED_SEARCH_PATH);
    return module != nullptr && FreeLibrary(module) != FALSE;
}

bool LbOs::MakeLink(const std::wstring& path, const std::wstring& target)
{
    const std::size_t name = path.find_last_of(L"\\/") + 1;
    const std::wstring place = IsAbsolutePath(target) ? target : path.substr(0, name) + target;
    const DWORD kind = QueryEntry(place) == EEntry::Directory ? SYMBOLIC_LINK_FLAG_DIRECTORY : 0;
    // Wine says that it has done so without doing anything.
    return CreateSymbolicLinkW(path.c_str(), target.c_str(), kind | SYMBOLIC_LINK_FLAG_ALLOW_UNPRIVILEGED_CREATE) !=
               FALSE &&
           IsLink(path);
}

std::optional<int> LbOs::RunInFork(const std::function<int()>& /*function*/)
{
    return std::nullopt;
}

std::optional<long> LbOs::Fork()
{
    return std::nullopt;
}

void LbOs::WaitForFork(long /*number*/) {}

bool LbOs::CallWhileFlushing(void (* /*function*/)())
{
    return false;
}

bool LbOs::ResetRealTimeSignals()
{
    return false;
}

bool LbOs::MakePipe(const std::wstring& /*path*/)
{
    return false;
}

std::shared_ptr<void> LbOs::HoldFile(const std::wstring& path)
{
    const HANDLE file = CreateFileW(path.c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr);
    return file == INVALID_HANDLE_VALUE ? nullptr : std::shared_ptr<void>(file, CloseHandle);
}

std::shared_ptr<void> LbOs::HoldBytes(const std::wstring& path, std::uint32_t offset, std::uint32_t size)
{
    constexpr DWORD c_Sharing = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;
    const HANDLE file = CreateFileW(path.c_str(), GENERIC_READ, c_Sharing, nullptr, OPEN_EXISTING, 0, nullptr);
    if (file == INVALID_HANDLE_VALUE)
    {
        return nullptr;
    }
    std::shared_ptr<void> held(file, CloseHandle);
    OVERLAPPED place = {};
    place.Offset = offset;
    constexpr DWORD c_Kind = LOCKFILE_EXCLUSIVE_LOCK | LOCKFILE_FAIL_IMMEDIATELY;
    return LockFileEx(file, c_Kind, 0, size, 0, &place) != FALSE ? held : nullptr;
}

bool LbOs::SetFilesForbidden(bool /*areForbidden*/)
{
    return false;
}

std::optional<std::uint64_t> LbOs::MeasurePeakMemory(const std::function<bool()>& /*function*/)
{
    return std::nullopt;
}

std::optional<std::wstring> LbOs::DescribeGraphicsIn(const std::wstring& /*folder*/)
{
    return std::nullopt;
}

bool LbOs::SetInterruptedOften(bool /*isInterrupted*/)
{
    return false;
}

bool LbOs::SetPagesForbidden(bool /*areForbidden*/)
{
    return false;
}

bool LbOs::SetSignalsForbidden(bool /*areForbidden*/)
{
    return false;
}
