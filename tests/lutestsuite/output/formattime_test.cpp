#include <string>

#include <gtest/gtest.h>

#include "testing/lutestsuite/lutestsuiteutils.h"

namespace
{

std::wstring Format(double seconds, std::uint32_t decimals)
{
    return LuTestSuiteUtils::FormatTime(seconds, decimals);
}

TEST(FormatTime, FormatsZeroInSecondsWithoutDecimals)
{
    EXPECT_EQ(Format(0.0, 3), L"0 s");
    EXPECT_EQ(Format(0.0, 0), L"0 s");
    EXPECT_EQ(Format(-0.0, 2), L"0 s");
}

TEST(FormatTime, CountsNanosecondsBelowAMicrosecond)
{
    EXPECT_EQ(Format(0.0000005, 1), L"500.0ns");
    EXPECT_EQ(Format(1e-9, 0), L"1ns");
    EXPECT_EQ(Format(9.99e-7, 2), L"999.00ns");
}

TEST(FormatTime, CountsMicrosecondsBelowAMillisecond)
{
    EXPECT_EQ(Format(1e-6, 1), L"1.0\u00B5s");
    EXPECT_EQ(Format(0.0005, 3), L"500.000\u00B5s");
    EXPECT_EQ(Format(0.000999, 0), L"999\u00B5s");
}

TEST(FormatTime, CountsMillisecondsBelowASecond)
{
    EXPECT_EQ(Format(0.001, 1), L"1.0ms");
    EXPECT_EQ(Format(0.0025, 2), L"2.50ms");
    EXPECT_EQ(Format(0.999, 0), L"999ms");
}

TEST(FormatTime, CountsSecondsFromOneSecond)
{
    EXPECT_EQ(Format(1.0, 2), L"1.00s");
    EXPECT_EQ(Format(2.0, 0), L"2s");
    EXPECT_EQ(Format(3661.5, 1), L"3661.5s");
}

TEST(FormatTime, KeepsTheUnitWhenRoundingReachesTheNext)
{
    EXPECT_EQ(Format(0.9999, 0), L"1000ms");
    EXPECT_EQ(Format(0.0009999, 0), L"1000\u00B5s");
}

TEST(FormatTime, FormatsNegativeTimesInNanoseconds)
{
    EXPECT_EQ(Format(-2.0, 0), L"-2000000000ns");
}

} // namespace
