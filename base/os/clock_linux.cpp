#include "base/os/clock.h"

#include <cerrno>
#include <cstdlib>
#include <ctime>

#include <sys/random.h>
#include <sys/stat.h>

#include "base/lbencoding.h"
#include "base/lbexception.h"

namespace
{

LbOs::SLocalTime toLocalTime(std::time_t time)
{
    std::tm local = {};
    localtime_r(&time, &local);
    return {local.tm_year + 1900, local.tm_mon + 1, local.tm_mday, local.tm_hour, local.tm_min, local.tm_sec};
}

} // namespace

LbOs::SLocalTime LbOs::GetLocalTimeNow()
{
    return toLocalTime(std::time(nullptr));
}

void LbOs::WarmUpCalendar()
{
    // Initialises the time zone like localtime and ctime, but without changing their results, which threads share.
    toLocalTime(0);
}

void LbOs::NameTimeZone()
{
    constexpr int c_KeepExisting = 0;
    setenv("TZ", ":/etc/localtime", c_KeepExisting);
}

std::optional<LbOs::SLocalTime> LbOs::GetModificationTime(const std::wstring& path)
{
    struct stat status = {};
    const bool isKnown = stat(LbEncoding::ToNative(path).c_str(), &status) == 0;
    return isKnown ? std::optional(toLocalTime(status.st_mtime)) : std::nullopt;
}

void LbOs::FillRandom(void* buffer, std::size_t size)
{
    char* bytes = static_cast<char*>(buffer);
    while (size > 0)
    {
        const ssize_t count = getrandom(bytes, size, 0);
        if (count > 0)
        {
            bytes += count;
            size -= static_cast<std::size_t>(count);
        }
        else if (errno != EINTR)
        {
            throw LbException(L"Das System liefert keine Zufallszahlen");
        }
    }
}
