#include "base/os/clock.h"

#include "base/lbexception.h"
#include "base/os/windows_api.h"

// Behind windows.h, which it needs.
#include <bcrypt.h>

LbOs::SLocalTime LbOs::GetLocalTimeNow()
{
    SYSTEMTIME local = {};
    GetLocalTime(&local);
    return {local.wYear, local.wMonth, local.wDay, local.wHour, local.wMinute, local.wSecond};
}

void LbOs::FillRandom(void* buffer, std::size_t size)
{
    constexpr std::size_t c_LargestChunk = 0x40000000;
    auto* bytes = static_cast<UCHAR*>(buffer);
    while (size > 0)
    {
        const std::size_t chunk = std::min(size, c_LargestChunk);
        if (BCryptGenRandom(nullptr, bytes, static_cast<ULONG>(chunk), BCRYPT_USE_SYSTEM_PREFERRED_RNG) < 0)
        {
            throw LbException(L"Das System liefert keine Zufallszahlen");
        }
        bytes += chunk;
        size -= chunk;
    }
}
