#include "testing/lutestsuite/heap/warmup.h"

#include <clocale>
#include <cstring>
#include <ctime>
#include <mutex>
#include <string>

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
    // The same again changes nothing but what the run-time keeps for it.
    if (const char* const locale = std::setlocale(LC_ALL, nullptr))
    {
        std::setlocale(LC_ALL, std::string(locale).c_str());
    }
    return true;
}

} // namespace

void WarmUpThread()
{
    [[maybe_unused]] thread_local const bool s_isWarm = warmUp();
}

} // namespace LuTestSuite
