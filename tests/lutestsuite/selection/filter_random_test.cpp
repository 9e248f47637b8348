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
#include "tests/lutestsuite/selection/randomnames.h"

namespace
{

using namespace RandomNames;

/// Mostly valid expressions.
class CRandomExpression
{
public:
    explicit CRandomExpression(CRandom& random) : m_random(random) {}

    std::wstring Make(int depth)
    {
        std::wstring choice = makeSequence(depth);
        while (m_random.Below(5) == 0)
        {
            choice += L"|" + makeSequence(depth);
        }
        return choice;
    }

private:
    std::wstring makeSequence(int depth)
    {
        constexpr std::array<std::wstring_view, 8> c_Quantifiers = {L"*",    L"+",     L"?",     L"{2}",
                                                                    L"{1,}", L"{0,2}", L"{2,1}", L"*?"};
        std::wstring sequence;
        for (std::uint32_t count = m_random.Below(4); count > 0; --count)
        {
            sequence += makeAtom(depth);
            sequence += m_random.Below(3) == 0 ? m_random.Pick(c_Quantifiers) : L"";
        }
        return sequence;
    }

    std::wstring makeAtom(int depth)
    {
        constexpr std::array<std::wstring_view, 26> c_Atoms = {
            L"a", L"b",   L"c",   L"1",   L".",   L"\\.", L"\\w", L"\\W",   L"\\d",     L"\\D", L"\\s", L"\\S",  L"^",
            L"$", L"\\b", L"\\B", L"\\1", L"\\n", L"[",   L"]",   L"\\x61", L"\\u0062", L"ab",  L"}",   L"\\cA", L"{"};
        constexpr std::array<std::wstring_view, 4> c_Groups = {L"(", L"(?:", L"(?=", L"(?!"};
        if (depth > 0 && m_random.Below(4) == 0)
        {
            return m_random.Pick(c_Groups) + Make(depth - 1) + L")";
        }
        return m_random.Below(5) == 0 ? makeBracket() : m_random.Pick(c_Atoms);
    }

    std::wstring makeBracket()
    {
        constexpr std::array<std::wstring_view, 18> c_Members = {
            L"a",           L"b-c",       L"-",         L"\\w", L"\\D", L"\\]", L"[",  L"[:alpha:]", L"[:punct:]",
            L"[:nothing:]", L"[:cntrl:]", L"[:punct:]", L".",   L"\\-", L"1",   L"a-", L"\\n",       L"c-a"};
        std::wstring bracket = m_random.Below(3) == 0 ? L"[^" : L"[";
        for (std::uint32_t count = m_random.Below(4); count > 0; --count)
        {
            bracket += m_random.Pick(c_Members);
        }
        return bracket + L"]";
    }

    CRandom& m_random;
};

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

/// Like Select, with the standard library only. The unit test has no directory and no class name.
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
    // Otherwise the test would check too little.
    EXPECT_GT(validCount, 2'000U);
    EXPECT_GT(selectedCount, 10'000U);
    EXPECT_LT(selectedCount, validCount * 15);
}

TEST(RandomExpressions, SelectTheSameTogetherAndAlone)
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

} // namespace
