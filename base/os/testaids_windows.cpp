#include "base/os/testaids.h"

#include <vector>

#include "base/os/files.h"
#include "base/os/windows_api.h"

namespace
{

/// Wine takes locks of bytes, but lets everybody read them.
bool canRead(const std::wstring& path, std::uint32_t offset)
{
    const LbOs::FileHandle file = LbOs::OpenForReading(path);
    std::vector<char> bytes(std::size_t{offset} + 1);
    const bool isRead = LbOs::ReadFileBytes(file, bytes.data(), bytes.size()) == std::int64_t{offset} + 1;
    LbOs::CloseFile(file);
    return isRead;
}

} // namespace

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
    const bool isLocked = LockFileEx(file, c_Kind, 0, size, 0, &place) != FALSE;
    return isLocked && !canRead(path, offset) ? held : nullptr;
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
