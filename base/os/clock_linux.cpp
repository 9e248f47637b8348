#include "base/os/clock.h"

#include <cerrno>
#include <ctime>

#include <sys/random.h>

#include "base/lbexception.h"

LbOs::SLocalTime LbOs::GetLocalTimeNow()
{
    const std::time_t now = std::time(nullptr);
    std::tm local = {};
    localtime_r(&now, &local);
    return {local.tm_year + 1900, local.tm_mon + 1, local.tm_mday, local.tm_hour, local.tm_min, local.tm_sec};
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
