#include "testing/lutestsuite/heap/warmup.h"

#include <ctime>
#include <string>
#include <thread>

#include <gtest/gtest.h>

namespace
{

constexpr std::time_t c_Time = 1'700'000'000; // in 2023

} // namespace

TEST(WarmUpThread, DoesNotChangeTheLocalTimeOfAnotherThread)
{
    const std::tm* const time = std::localtime(&c_Time);
    std::thread(LuTestSuite::WarmUpThread).join();
    EXPECT_EQ(time->tm_year, 123);
}

TEST(WarmUpThread, DoesNotChangeTheTimeTextOfAnotherThread)
{
    const char* const text = std::ctime(&c_Time);
    const std::string before = text;
    std::thread(LuTestSuite::WarmUpThread).join();
    EXPECT_EQ(text, before);
}
