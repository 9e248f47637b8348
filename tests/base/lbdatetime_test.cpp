#include "base/lbdatetime.h"

#include <gtest/gtest.h>

namespace
{

constexpr LbOs::SLocalTime c_Morning = {2024, 1, 2, 3, 4, 5};
constexpr LbOs::SLocalTime c_Evening = {1999, 12, 31, 23, 58, 59};

TEST(LbDateTime, FormatsEachFieldWithLeadingZeros)
{
    EXPECT_EQ(LbDateTime::Format(c_Morning, L"Y"), L"2024");
    EXPECT_EQ(LbDateTime::Format(c_Morning, L"m"), L"01");
    EXPECT_EQ(LbDateTime::Format(c_Morning, L"d"), L"02");
    EXPECT_EQ(LbDateTime::Format(c_Morning, L"H"), L"03");
    EXPECT_EQ(LbDateTime::Format(c_Morning, L"i"), L"04");
    EXPECT_EQ(LbDateTime::Format(c_Morning, L"s"), L"05");
}

TEST(LbDateTime, CopiesCharactersThatDenoteNoField)
{
    EXPECT_EQ(LbDateTime::Format(c_Evening, L"[Y-m-d]-[H-i-s]"), L"[1999-12-31]-[23-58-59]");
    EXPECT_EQ(LbDateTime::Format(c_Evening, L"d.m.Y, H:i:s %D M"), L"31.12.1999, 23:58:59 %D M");
}

TEST(LbDateTime, ReturnsEmptyTextForAnEmptyFormat)
{
    EXPECT_EQ(LbDateTime::Format(c_Morning, L""), L"");
}

TEST(LbDateTime, FormatsEarlyYearsWithFourDigits)
{
    EXPECT_EQ(LbDateTime::Format({33, 1, 1, 0, 0, 0}, L"Y"), L"0033");
}

TEST(LbDateTime, FormatsTheCurrentTime)
{
    // Midnight may pass before or after the second call, but not both.
    const std::wstring before = LbDateTime::Format(LbOs::GetLocalTimeNow(), L"Y-m-d");
    const std::wstring now = LbDateTime::FormatNow(L"Y-m-d");
    const std::wstring after = LbDateTime::Format(LbOs::GetLocalTimeNow(), L"Y-m-d");
    EXPECT_TRUE(now == before || now == after);
}

} // namespace
