#include "base/os/linux/keptentries.h"

#include <ctime>

#include "base/os/linux/rawcalls.h"

namespace LbOs::Linux
{

void EnterKeptGroup(SKeptGroup& group) noexcept
{
    group.entered = GetNanoseconds(CLOCK_BOOTTIME);
    group.process.store(static_cast<pid_t>(Call(SYS_getpid)));
}

int ToMemoryKey(const char* path) noexcept
{
    std::uint32_t hash = 2166136261U;
    for (const char* character = path; *character != '\0'; ++character)
    {
        hash = (hash ^ static_cast<unsigned char>(*character)) * 16777619U;
    }
    // A key of 0 would mean "no key".
    return static_cast<int>(hash | 1U);
}

} // namespace LbOs::Linux
