#include "base/os/clock.h"

#include <ctime>

#include "base/lbexception.h"
#include "base/os/windows/api.h"

// Needs windows.h before it.
#include <ntsecapi.h>

namespace
{

LbOs::SLocalTime toLocalTime(const SYSTEMTIME& local)
{
    return {local.wYear, local.wMonth, local.wDay, local.wHour, local.wMinute, local.wSecond};
}

} // namespace

LbOs::SLocalTime LbOs::GetLocalTimeNow()
{
    SYSTEMTIME local = {};
    GetLocalTime(&local);
    return toLocalTime(local);
}

void LbOs::WarmUpCalendar()
{
    // Each thread allocates its own buffers with its first call.
    const std::time_t begin = 0;
    [[maybe_unused]] const char* const text = std::ctime(&begin);
}

void LbOs::NameTimeZone() {}

std::optional<LbOs::SLocalTime> LbOs::GetModificationTime(const std::wstring& path)
{
    // Opens the file, because the directory entry of a link holds the link's time. Directories need the backup flag.
    const HANDLE opened = CreateFileW(Windows::ToSystemPath(path).c_str(), FILE_READ_ATTRIBUTES,
                                      FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr, OPEN_EXISTING,
                                      FILE_FLAG_BACKUP_SEMANTICS, nullptr);
    if (opened == INVALID_HANDLE_VALUE)
    {
        return std::nullopt;
    }
    const Windows::Handle closer(opened);
    FILETIME written = {};
    SYSTEMTIME universal = {};
    SYSTEMTIME local = {};
    const bool isKnown = GetFileTime(opened, nullptr, nullptr, &written) != FALSE &&
                         FileTimeToSystemTime(&written, &universal) != FALSE &&
                         SystemTimeToTzSpecificLocalTime(nullptr, &universal, &local) != FALSE;
    return isKnown ? std::optional(toLocalTime(local)) : std::nullopt;
}

void LbOs::FillRandom(void* buffer, std::size_t size)
{
    constexpr std::size_t c_LargestChunk = 0x40000000;
    auto* bytes = static_cast<UCHAR*>(buffer);
    while (size > 0)
    {
        const std::size_t chunk = std::min(size, c_LargestChunk);
        if (RtlGenRandom(bytes, static_cast<ULONG>(chunk)) == FALSE)
        {
            throw LbException(L"Das System liefert keine Zufallszahlen");
        }
        bytes += chunk;
        size -= chunk;
    }
}
