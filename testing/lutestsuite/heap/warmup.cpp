#include "testing/lutestsuite/heap/warmup.h"

#include <cstring>
#include <mutex>

#include "base/os/clock.h"

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
    LbOs::WarmUpCalendar();
    [[maybe_unused]] const char* const error = std::strerror(0);
    return true;
}

} // namespace

void WarmUpThread()
{
    [[maybe_unused]] thread_local const bool s_isWarm = warmUp();
}

} // namespace LuTestSuite
