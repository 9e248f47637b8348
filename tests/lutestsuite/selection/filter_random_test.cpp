// Compares random expressions on random names with the standard library's engine.

#include <algorithm>
#include <array>
#include <limits>
#include <optional>
#include <regex>
#include <string>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>

#include "testing/lutestsuite/lutestsuiteutils.h"
#include "tests/lutestsuite/selection/randomexpressions.h"
#include "tests/lutestsuite/selection/randomnames.h"

namespace
{

using namespace RandomNames;

std::optional<std::wregex> Compile(const std::wstring& source)
{
    try
    {
        return std::wregex(source, std::regex_constants::ECMAScript);
    }
    catch (const std::regex_error&)
    {
        return std::nullopt;
    }
}

/// The names that the patterns select; empty if a pattern is invalid.
std::optional<Texts> Select(const Texts& names, const Texts& includes)
{
    LuTestSuite::SUnitTest test;
    for (const std::wstring& name : names)
    {
        test.cases.push_back({{}, name, {}});
    }
    std::vector<LuTestSuite::SUnitTest> tests{test};
    try
    {
        LuTestSuiteUtils::FilterTestCases(tests, L"", includes, {}, std::numeric_limits<std::uint32_t>::max(), false);
    }
    catch (const std::wstring&)
    {
        return std::nullopt;
    }
    Texts selected;
    for (const LuTestSuite::SUnitTest& each : tests)
    {
        for (const LuTestSuite::STestCase& testCase : each.cases)
        {
            selected.push_back(testCase.name);
        }
    }
    return selected;
}

/// Does the same as Select with the standard library only. Assumes that the unit test has no directory and no class
/// name.
std::optional<Texts> SelectPlainly(const Texts& names, const Texts& includes)
{
    std::vector<std::wregex> expressions;
    for (const std::wstring& source : includes)
    {
        const std::optional<std::wregex> expression = Compile(source);
        if (!expression)
        {
            return std::nullopt;
        }
        expressions.push_back(*expression);
    }
    Texts selected;
    for (const std::wstring& name : names)
    {
        const std::wstring pathName = L":" + name;
        if (std::ranges::any_of(expressions, [&](const auto& each) { return std::regex_search(pathName, each); }))
        {
            selected.push_back(name);
        }
    }
    return selected;
}

TEST(RandomExpressions, AgreeWithTheStandardLibrary)
{
    CRandom random(1);
    CRandomExpression expressions(random);
    std::size_t validCount = 0;
    std::size_t selectedCount = 0;
    for (int count = 0; count < 4'000; ++count)
    {
        const std::wstring source = expressions.Make(3);
        const Texts names = MakeNames(random, 20);
        const std::optional<Texts> selected = Select(names, {source});
        ASSERT_EQ(selected, SelectPlainly(names, {source})) << testing::PrintToString(source);
        validCount += selected ? 1U : 0U;
        selectedCount += selected ? selected->size() : 0;
    }
    // With fewer valid expressions, matches or misses, the test would check too little.
    EXPECT_GT(validCount, 2'000U);
    EXPECT_GT(selectedCount, 10'000U);
    EXPECT_LT(selectedCount, validCount * 15);
}

TEST(RandomExpressions, SelectTheSameCasesTogetherAsAlone)
{
    CRandom random(2);
    CRandomExpression expressions(random);
    for (int count = 0; count < 20; ++count)
    {
        Texts includes;
        while (includes.size() < 60)
        {
            const std::wstring source = L":" + expressions.Make(2) + L"c";
            if (Compile(source))
            {
                includes.push_back(source);
            }
        }
        const Texts names = MakeNames(random, 100);
        ASSERT_EQ(Select(names, includes), SelectPlainly(names, includes)) << testing::PrintToString(includes);
    }
}

/// An expression that only the engine can match, and that few names match.
std::wstring MakeRareLookAhead(CRandom& random)
{
    constexpr std::array<std::wstring_view, 6> c_Forms = {L"(?!.*c$)%s",   L"%s(?=[^]*1)", L"(%s)(?!\\1)",
                                                          L"\\b(?:%s)\\b", L".(?=%s)",     L"(?=%s|x)."};
    std::wstring text;
    while (text.size() < 3)
    {
        text += MakeName(random);
    }
    text.resize(3);
    std::wstring literal;
    for (const wchar_t character : text)
    {
        literal += (std::wstring_view(L"*?{}\\(.").find(character) == std::wstring_view::npos ? L"" : L"\\");
        literal += character;
    }
    std::wstring expression = random.Pick(c_Forms);
    return expression.replace(expression.find(L"%s"), 2, literal);
}

TEST(RandomExpressions, WithLookAheadsSelectTheSameCasesTogetherAsAlone)
{
    CRandom random(3);
    std::size_t selectedCount = 0;
    constexpr std::size_t c_Rounds = 8;
    constexpr std::size_t c_Names = 60;
    for (std::size_t count = 0; count < c_Rounds; ++count)
    {
        Texts includes;
        while (includes.size() < 300)
        {
            includes.push_back(MakeRareLookAhead(random));
        }
        Texts names;
        while (names.size() < c_Names)
        {
            names.push_back(MakeName(random) + MakeName(random) + MakeName(random));
        }
        const std::optional<Texts> selected = Select(names, includes);
        ASSERT_TRUE(selected) << testing::PrintToString(includes);
        ASSERT_EQ(selected, SelectPlainly(names, includes)) << testing::PrintToString(includes);
        selectedCount += selected->size();
    }
    // With fewer matches or misses, the test would check too little.
    EXPECT_GT(selectedCount, c_Rounds * c_Names / 10);
    EXPECT_LT(selectedCount, c_Rounds * c_Names * 9 / 10);
}

} // namespace
