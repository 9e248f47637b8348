#include <gtest/gtest.h>

#include "testing/lutestsuite/lutestsuiteutils.h"

namespace
{

TEST(GetTrimmedLines, KeepsTheFirstLinesWithTheirLineFeeds)
{
    EXPECT_EQ(LuTestSuiteUtils::GetTrimmedLines(L"a\nb\nc", 2), L"a\nb\n");
    EXPECT_EQ(LuTestSuiteUtils::GetTrimmedLines(L"a\nb\nc\n", 1), L"a\n");
}

TEST(GetTrimmedLines, KeepsAllLinesWhenThereAreFewer)
{
    EXPECT_EQ(LuTestSuiteUtils::GetTrimmedLines(L"a\nb\nc", 5), L"a\nb\nc");
    EXPECT_EQ(LuTestSuiteUtils::GetTrimmedLines(L"a\nb\nc", 3), L"a\nb\nc");
    EXPECT_EQ(LuTestSuiteUtils::GetTrimmedLines(L"", 5), L"");
}

TEST(GetTrimmedLines, KeepsNothingForAMaximumOfZero)
{
    EXPECT_EQ(LuTestSuiteUtils::GetTrimmedLines(L"a\nb", 0), L"");
}

TEST(GetTrimmedLines, CountsEmptyLinesAndKeepsCarriageReturns)
{
    EXPECT_EQ(LuTestSuiteUtils::GetTrimmedLines(L"\r\n\n\rx\n", 2), L"\r\n\n");
}

} // namespace
