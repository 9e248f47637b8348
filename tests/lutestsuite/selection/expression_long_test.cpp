// Expressions and names that need much stack.

#include <limits>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "testing/lutestsuite/lutestsuiteutils.h"
#include "testing/lutestsuite/selection/automaton.h"
#include "tests/support/apart.h"
#include "tests/support/deepstacks.h"

namespace
{

/// Forces the standard library's engine without changing the expression's meaning.
const std::wstring c_ForEngine = L"(?=[^]|$)";

std::wstring Repeat(const std::wstring& text, std::size_t count)
{
    std::wstring repeated;
    for (std::size_t index = 0; index < count; ++index)
    {
        repeated += text;
    }
    return repeated;
}

/// `count` names of the given length, joined by "|".
std::wstring MakeChoice(std::size_t count, std::size_t length)
{
    std::wstring choice;
    for (std::size_t index = 0; index < count; ++index)
    {
        const std::wstring number = std::to_wstring(index);
        choice += (index > 0 ? L"|" : L"") + std::wstring(length - number.size(), L'n') + number;
    }
    return choice;
}

/// The number of cases with these names that `include` selects. Their path names begin with "/daten/CLang:".
std::size_t CountSelected(const std::vector<std::wstring>& names, const std::wstring& include)
{
    LuTestSuite::SUnitTest test;
    test.dataDirectory = L"/daten/";
    test.className = L"CLang";
    for (const std::wstring& name : names)
    {
        test.cases.push_back({{}, name, {}});
    }
    std::vector<LuTestSuite::SUnitTest> tests{test};
    LuTestSuiteUtils::FilterTestCases(tests, L"", {include}, {}, std::numeric_limits<std::uint32_t>::max(), false);
    return tests.empty() ? 0 : tests[0].cases.size();
}

std::wstring GetMessage(const std::vector<std::wstring>& names, const std::wstring& include)
{
    try
    {
        CountSelected(names, include);
    }
    catch (const std::wstring& message)
    {
        return message;
    }
    return L"no exception";
}

/// The parameter is true for the standard library's engine, false for the automaton.
class LongExpression : public testing::TestWithParam<bool>
{
protected:
    /// Calls ::CountSelected. Expects that the automaton takes the expression if and only if the parameter is false.
    static std::size_t CountSelected(const std::vector<std::wstring>& names, const std::wstring& expression)
    {
        const std::wstring include = (GetParam() ? c_ForEngine : L"") + expression;
        const auto syntax = LuTestSuite::ParseExpression(include);
        EXPECT_EQ(syntax && LuTestSuite::CAutomaton::CanTake(*syntax), !GetParam());
        return ::CountSelected(names, include);
    }
};

TEST_P(LongExpression, OfHundredsOfNamesIsSearchedInLongPaths)
{
    const std::wstring choice = MakeChoice(300, 45);
    const std::wstring name = std::wstring(332 - 13 - 45, L'x') + choice.substr(choice.size() - 45);

    EXPECT_EQ(choice.size(), 13'799U);
    EXPECT_EQ(CountSelected({name, L"xxx"}, L"(" + choice + L")$"), 1U);
}

TEST_P(LongExpression, IsSearchedInNamesOfTensOfThousandsOfCharacters)
{
    if (!c_AllowsDeepStacks)
    {
        GTEST_SKIP() << "AddressSanitizer does not support stacks that deep";
    }
    const std::wstring name(60'000, L'x');

    EXPECT_EQ(CountSelected({name + L"!", name}, L"(x|y)*!$"), 1U);
}

TEST_P(LongExpression, MayHaveDeeplyNestedGroups)
{
    // The automaton's parser supports 50 levels.
    const std::size_t levels = GetParam() ? 10'000 : 50;
    const std::wstring nested = Repeat(L"(?:", levels) + L"ab" + Repeat(L")", levels);

    EXPECT_EQ(CountSelected({L"ab", L"ba"}, nested), 1U);
}

TEST_P(LongExpression, MayHaveThousandsOfAlternatives)
{
    const std::size_t count = GetParam() ? 5'000 : 2'400;

    EXPECT_EQ(CountSelected({L"n123", L"n124x"}, L":(?:" + MakeChoice(count, 4) + L")$"), 1U);
}

INSTANTIATE_TEST_SUITE_P(WithAutomatonAndEngine, LongExpression, testing::Bool());

TEST(LongExpressionAlone, WithTooManyNestedGroupsIsRefusedEvenWithoutCases)
{
    const std::wstring nested = Repeat(L"(", 60'000) + Repeat(L")", 60'000);

    EXPECT_EQ(GetMessage({}, nested), L"Regulärer Ausdruck '" + std::wstring(80, L'(') + L"...' ist zu groß");
}

TEST(LongExpressionAlone, ThatIsInvalidIsQuotedUpTo80Characters)
{
    EXPECT_EQ(GetMessage({}, Repeat(L"a", 80) + L"["),
              L"Ungültiger regulärer Ausdruck '" + std::wstring(80, L'a') + L"...'");
    EXPECT_EQ(GetMessage({}, Repeat(L"a", 79) + L"["),
              L"Ungültiger regulärer Ausdruck '" + std::wstring(79, L'a') + L"['");
}

TEST(LongExpressionAlone, ThatExhaustsTheStackIsReported)
{
    if (!c_AllowsDeepStacks)
    {
        GTEST_SKIP() << "AddressSanitizer does not support stacks that deep";
    }
    const std::wstring message = GetMessage({std::wstring(800'000, L'x') + L"y"}, L":(x)*\\1z?y$");

    EXPECT_EQ(message, L"Regulärer Ausdruck ':(x)*\\1z?y$' braucht mehr Stack, als es gibt");
}

TEST(LongExpressionAlone, ThatExhaustsTheStackIsQuotedUpTo80Characters)
{
    if (!c_AllowsDeepStacks)
    {
        GTEST_SKIP() << "AddressSanitizer does not support stacks that deep";
    }
    const std::wstring expression = L":(x)*\\1z?y$|" + std::wstring(5'000, L'z');

    EXPECT_EQ(GetMessage({std::wstring(800'000, L'x') + L"y"}, expression),
              L"Regulärer Ausdruck '" + expression.substr(0, 80) + L"...' braucht mehr Stack, als es gibt");
}

TEST(LongExpressionAlone, IsSearchedInALimitedAddressSpace)
{
    if (!c_AllowsDeepStacks)
    {
        GTEST_SKIP() << "AddressSanitizer needs more address space";
    }
    for (const std::size_t megabytes : {160U, 80U, 48U})
    {
        const bool isChecked =
            CheckApart([megabytes] { return LbOs::LimitMemory(std::size_t{megabytes} << 20U); },
                       [] {
                           const std::wstring name(2'000, L'x');
                           EXPECT_EQ(CountSelected({name + L"!", name}, c_ForEngine + L"(x|y)*!$"), 1U);
                       });
        if (!isChecked)
        {
            GTEST_SKIP() << "the address space cannot be limited";
        }
    }
}

TEST(LongExpressionAlone, ThatExhaustsTheSmallestStackIsReported)
{
    if (!c_AllowsDeepStacks)
    {
        GTEST_SKIP() << "AddressSanitizer needs more address space";
    }
    constexpr std::size_t c_RoomForTheSmallest = std::size_t{48} << 20U;
    const bool isChecked =
        CheckApart([] { return LbOs::LimitMemory(c_RoomForTheSmallest); },
                   [] {
                       EXPECT_EQ(GetMessage({std::wstring(200'000, L'x') + L"y"}, L":(x)*\\1z?y$"),
                                 L"Regulärer Ausdruck ':(x)*\\1z?y$' braucht mehr Stack, als es gibt");
                   });
    if (!isChecked)
    {
        GTEST_SKIP() << "the address space cannot be limited";
    }
}

TEST(LongExpressionAlone, WithoutGroupsIsSearchedInNamesOfMillionsOfCharacters)
{
    EXPECT_EQ(CountSelected({std::wstring(5'000'000, L'x'), L"y"}, L"^.*y$"), 1U);
}

TEST(LongExpressionAlone, IsNotSlowerForManyWaysToMatch)
{
    EXPECT_EQ(CountSelected({std::wstring(60, L'a')}, L":(?:(?:a*)*)*b$"), 0U);
}

} // namespace
