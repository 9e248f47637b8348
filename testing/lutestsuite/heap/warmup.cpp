#include "testing/lutestsuite/heap/warmup.h"

#include <cstring>
#include <ctime>
#include <mutex>

namespace LuTestSuite
{

namespace
{

void raiseException()
{
    try
    {
        throw false;
    }
    catch (bool)
    {
        return;
    }
}

bool warmUp()
{
    raiseException();
    std::once_flag once;
    std::call_once(once, [] {});
    const std::time_t begin = 0;
    // It calls localtime, which looks up the time zone.
    [[maybe_unused]] const char* const time = std::ctime(&begin);
    [[maybe_unused]] const char* const error = std::strerror(0);
    return true;
}

} // namespace

void WarmUpThread()
{
    [[maybe_unused]] thread_local const bool s_isWarm = warmUp();
}

} // namespace LuTestSuite
