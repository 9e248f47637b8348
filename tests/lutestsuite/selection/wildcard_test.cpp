// The expressions for wildcard names.

#include <regex>
#include <string>

#include <gtest/gtest.h>

#include "testing/lutestsuite/lutestsuiteutils.h"
#include "testing/lutestsuite/selection/wildcard.h"

namespace
{

bool Matches(const std::wstring& wildcard, const std::wstring& name)
{
    return std::regex_match(name, LuTestSuiteUtils::GenerateWildcardRegex(wildcard));
}

TEST(GenerateWildcardRegex, MatchesPlainNamesExactly)
{
    EXPECT_TRUE(Matches(L"wort", L"wort"));
    EXPECT_FALSE(Matches(L"wort", L"Wort"));
    EXPECT_FALSE(Matches(L"wort", L"worte"));
    EXPECT_FALSE(Matches(L"wort", L"antwort"));
}

TEST(GenerateWildcardRegex, TreatsAQuestionMarkAsOneCharacter)
{
    EXPECT_TRUE(Matches(L"wort?", L"worte"));
    EXPECT_TRUE(Matches(L"wort?", L"wort."));
    EXPECT_FALSE(Matches(L"wort?", L"wort"));
    EXPECT_FALSE(Matches(L"wort?", L"worten"));
}

TEST(GenerateWildcardRegex, TreatsADotLiterally)
{
    EXPECT_TRUE(Matches(L"a.b", L"a.b"));
    EXPECT_FALSE(Matches(L"a.b", L"axb"));
}

TEST(GenerateWildcardRegex, TreatsAStarAsAnyText)
{
    EXPECT_TRUE(Matches(L"*", L""));
    EXPECT_TRUE(Matches(L"*", L"ganz: beliebig/\\+"));
    EXPECT_TRUE(Matches(L"a*c", L"ac"));
    EXPECT_TRUE(Matches(L"a*c", L"abbc"));
    EXPECT_FALSE(Matches(L"a*c", L"acb"));
}

TEST(GenerateWildcardRegex, CombinesAWordAndAllWildcards)
{
    EXPECT_TRUE(Matches(L"wort?.*", L"wort1.txt"));
    EXPECT_TRUE(Matches(L"wort?.*", L"wortx."));
    EXPECT_FALSE(Matches(L"wort?.*", L"wort.txt"));
    EXPECT_FALSE(Matches(L"wort?.*", L"wort1-txt"));
}

TEST(JoinStars, JoinsOnlyConsecutiveStars)
{
    EXPECT_EQ(LuTestSuite::JoinStars(L"***a**bb??*?*"), L"*a*bb??*?*");
    EXPECT_EQ(LuTestSuite::JoinStars(L""), L"");
}

TEST(GetTexts, ReturnsTheTextsBetweenWildcards)
{
    using Texts = std::vector<std::wstring_view>;
    EXPECT_EQ(LuTestSuite::GetTexts(L"*ab?cde*fgh?"), (Texts{L"ab", L"cde", L"fgh"}));
    EXPECT_EQ(LuTestSuite::GetTexts(L"abc*d"), (Texts{L"abc", L"d"}));
    EXPECT_EQ(LuTestSuite::GetTexts(L"*d**abc"), (Texts{L"d", L"abc"}));
    EXPECT_EQ(LuTestSuite::GetTexts(L"*?*"), Texts());
    EXPECT_EQ(LuTestSuite::GetTexts(L""), Texts());
}

class GenerateWildcardRegexSpecial : public testing::TestWithParam<wchar_t>
{
};

TEST_P(GenerateWildcardRegexSpecial, CharacterStandsForItself)
{
    const std::wstring wildcard = std::wstring(L"a") + GetParam() + L"b";

    EXPECT_TRUE(Matches(wildcard, wildcard));
    EXPECT_FALSE(Matches(wildcard, L"ab"));
    EXPECT_FALSE(Matches(wildcard, L"aab"));
    EXPECT_FALSE(Matches(wildcard, L"a"));
    EXPECT_FALSE(Matches(wildcard, L"axb"));
}

INSTANTIATE_TEST_SUITE_P(All, GenerateWildcardRegexSpecial,
                         testing::Values(L'\\', L'^', L'.', L'$', L'|', L'(', L')', L'[', L']', L'+', L'/'));

TEST(GenerateWildcardRegex, TreatsWideFormsOfOperatorsLiterally)
{
    for (const wchar_t form : std::wstring(L"＊．＋｜（）［］｛｝＼＾＄∗∣？"))
    {
        const std::wstring name = std::wstring(L"level") + form + L"{1}.txt";
        EXPECT_TRUE(Matches(name, std::wstring(L"level") + form + L".txt")) << static_cast<unsigned>(form);
        EXPECT_FALSE(Matches(name, L"level.txt")) << static_cast<unsigned>(form);
        EXPECT_FALSE(Matches(name, L"levelx.txt")) << static_cast<unsigned>(form);
    }
}

TEST(GenerateWildcardRegex, DoesNotMatchLineEndsByWildcards)
{
    for (const wchar_t lineEnd : {L'\n', L'\r', L'\u2028', L'\u2029'})
    {
        const std::wstring name = std::wstring(L"a") + lineEnd + L"b";
        EXPECT_FALSE(Matches(L"a?b", name));
        EXPECT_FALSE(Matches(L"a*", name));
        EXPECT_TRUE(Matches(name, name));
    }
}

TEST(GenerateWildcardRegex, TreatsABackslashLiterally)
{
    EXPECT_TRUE(Matches(L"a\\*", L"a\\bc"));
    EXPECT_FALSE(Matches(L"a\\*", L"a*"));
    EXPECT_TRUE(Matches(L"\\d", L"\\d"));
    EXPECT_FALSE(Matches(L"\\d", L"1"));
}

TEST(GenerateWildcardRegex, KeepsBracesAsRepetitionCounts)
{
    EXPECT_TRUE(Matches(L"fa{3}l", L"faaal"));
    EXPECT_FALSE(Matches(L"fa{3}l", L"fal"));
    EXPECT_FALSE(Matches(L"fa{3}l", L"fa{3}l"));
    EXPECT_TRUE(Matches(L"?{2,3}", L"xyz"));
    EXPECT_FALSE(Matches(L"?{2,3}", L"x"));
}

TEST(GenerateWildcardRegex, ThrowsForAnInvalidRepetitionCount)
{
    EXPECT_THROW(LuTestSuiteUtils::GenerateWildcardRegex(L"a{x}"), std::regex_error);
}

TEST(GenerateWildcardRegex, MatchesOnlyAnEmptyNameForAnEmptyWildcard)
{
    EXPECT_TRUE(Matches(L"", L""));
    EXPECT_FALSE(Matches(L"", L"a"));
}

} // namespace
