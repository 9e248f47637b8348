// Death tests.

#include <cstdlib>

#include <gtest/gtest.h>

namespace
{

TEST(Deaths, AreSeen)
{
    EXPECT_DEATH(std::abort(), "");
    EXPECT_EXIT(std::exit(3), testing::ExitedWithCode(3), "");
}

TEST(Deaths, AreMissed)
{
    EXPECT_DEATH(static_cast<void>(0), "");
}

TEST(Deaths, HaveAnotherStyle)
{
    GTEST_FLAG_SET(death_test_style, std::string("threadsafe"));
    EXPECT_DEATH(std::abort(), "");
}

TEST(Deaths, HaveTheirStyleAgain)
{
    EXPECT_EXIT(std::exit(4), testing::ExitedWithCode(4), "");
}

} // namespace
