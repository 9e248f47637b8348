// Tests of each outcome.

#include <cstdlib>
#include <stdexcept>

#include <gtest/gtest.h>

namespace
{

TEST(Arithmetic, Adds)
{
    EXPECT_EQ(1 + 1, 2);
}

TEST(Arithmetic, Fails)
{
    EXPECT_EQ(1 + 1, 3) << "größer";
    EXPECT_TRUE(false);
}

TEST(Arithmetic, Skips)
{
    GTEST_SKIP() << "no coprocessor";
}

TEST(Arithmetic, Throws)
{
    throw std::runtime_error("broken");
}

TEST(Arithmetic, DISABLED_Divides)
{
    ADD_FAILURE() << "was run";
}

TEST(DISABLED_Roots, Square)
{
    ADD_FAILURE() << "was run";
}

TEST(Crashes, Aborts)
{
    std::abort();
}

} // namespace
