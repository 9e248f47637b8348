#include "testing/lutestsuite/selection/requiredtext.h"

#include <string>

#include <gtest/gtest.h>

namespace
{

/// The required text of an expression that the parser supports.
std::wstring GetTextOf(const std::wstring& expression)
{
    const auto syntax = LuTestSuite::ParseExpression(expression);
    EXPECT_TRUE(syntax) << testing::PrintToString(expression);
    return syntax ? LuTestSuite::GetRequiredText(syntax->root) : L"no syntax";
}

TEST(RequiredText, IsTheWholeOfAPlainText)
{
    EXPECT_EQ(GetTextOf(L"data set"), L"data set");
    EXPECT_EQ(GetTextOf(L"\\.txt"), L".txt");
    EXPECT_EQ(GetTextOf(L"[x]"), L"x");
    EXPECT_EQ(GetTextOf(L""), L"");
}

TEST(RequiredText, IsTheLongestOfSeveralTexts)
{
    EXPECT_EQ(GetTextOf(L"ab.*cde.fg"), L"cde");
    EXPECT_EQ(GetTextOf(L"abc[de]fgh"), L"abc");
}

TEST(RequiredText, IgnoresAssertions)
{
    EXPECT_EQ(GetTextOf(L"^abc$"), L"abc");
    EXPECT_EQ(GetTextOf(L"\\babc\\b"), L"abc");
    EXPECT_EQ(GetTextOf(L"(?!.*longer)abc"), L"abc");
    EXPECT_EQ(GetTextOf(L"(?=longer)abc"), L"abc");
    EXPECT_EQ(GetTextOf(L"ab(?=longer)cd"), L"ab");
}

TEST(RequiredText, IgnoresOptionalParts)
{
    EXPECT_EQ(GetTextOf(L"(?:abc)*d"), L"d");
    EXPECT_EQ(GetTextOf(L"(?:abc)?d"), L"d");
    EXPECT_EQ(GetTextOf(L"(?:abc){0,3}d"), L"d");
    EXPECT_EQ(GetTextOf(L"abc|abd"), L"");
    EXPECT_EQ(GetTextOf(L"(abc|def)g"), L"g");
}

TEST(RequiredText, IncludesPartsRepeatedAtLeastOnce)
{
    EXPECT_EQ(GetTextOf(L"(?:abc)+d"), L"abc");
    EXPECT_EQ(GetTextOf(L"(?:abc){2,}d"), L"abc");
    EXPECT_EQ(GetTextOf(L"a+"), L"a");
}

TEST(RequiredText, DoesNotJoinTextsThatARepetitionSeparates)
{
    EXPECT_EQ(GetTextOf(L"ab+cd"), L"cd");
    EXPECT_EQ(GetTextOf(L"ab*cd"), L"cd");
}

TEST(RequiredText, IsFoundInsideGroups)
{
    EXPECT_EQ(GetTextOf(L"((a.)(bcd))\\1"), L"bcd");
}

} // namespace
