// Compares random expressions and wildcards on random names with the standard library's engine.

#include <algorithm>
#include <array>
#include <limits>
#include <optional>
#include <random>
#include <regex>
#include <string>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>

#include "base/luunittest.h"
#include "testing/lutestsuite/lutestsuiteutils.h"
#include "tests/support/capturedoutput.h"
#include "tests/support/scopedfolder.h"

namespace
{

using Texts = std::vector<std::wstring>;

/// The same sequence on all platforms.
class CRandom
{
public:
    explicit CRandom(std::uint32_t seed) : m_engine(seed) {}

    std::uint32_t Below(std::size_t limit) { return static_cast<std::uint32_t>(m_engine() % limit); }

    template<std::size_t Count>
    std::wstring Pick(const std::array<std::wstring_view, Count>& texts)
    {
        return std::wstring(texts[Below(Count)]);
    }

private:
    std::mt19937 m_engine;
};

std::wstring MakeName(CRandom& random)
{
    constexpr std::wstring_view c_Characters = L"aabbc1_-. \n\r\t*?{}\\(";
    std::wstring name;
    for (std::uint32_t length = random.Below(9); length > 0; --length)
    {
        name += c_Characters[random.Below(c_Characters.size())];
    }
    return name;
}

Texts MakeNames(CRandom& random, std::size_t count)
{
    Texts names;
    while (names.size() < count)
    {
        names.push_back(MakeName(random));
    }
    return names;
}

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

/// Like Select, with the standard library only. The test has no directory and no class name.
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

Texts& GetScannedNames()
{
    static Texts s_Names;
    return s_Names;
}

class CScanRandomNames : public LuUnitTest
{
    LB_RTTI(CScanRandomNames)
    void InitSubtests() override
    {
        for (const std::wstring& name : GetScannedNames())
        {
            AddSubtest(name, [] {});
        }
    }
};

} // namespace

LB_RTTI_CLASS(CScanRandomNames, LuUnitTest)

namespace
{

std::wstring MakeWildcard(CRandom& random)
{
    constexpr std::array<std::wstring_view, 16> c_Parts = {L"*", L"*", L"*", L"?",   L"a",     L"a",   L"b",     L"b",
                                                           L"c", L"1", L".", L"{2}", L"{0,2}", L"{x}", L"&#10;", L"_"};
    std::wstring wildcard;
    for (std::uint32_t count = random.Below(6); count > 0; --count)
    {
        wildcard += random.Pick(c_Parts);
    }
    return wildcard;
}

/// The text between quotes in XML, without its one character reference.
std::wstring Unescape(std::wstring text)
{
    for (std::size_t at = text.find(L"&#10;"); at != std::wstring::npos; at = text.find(L"&#10;"))
    {
        text.replace(at, 5, L"\n");
    }
    return text;
}

/// For each case the index of the last matching element, found by trying all of them in order.
std::vector<std::uint32_t> FindLastPlainly(const Texts& names, const Texts& wildcards)
{
    std::vector<std::uint32_t> last(names.size());
    for (std::uint32_t number = 1; number <= wildcards.size(); ++number)
    {
        try
        {
            const std::wregex expression = LuTestSuiteUtils::GenerateWildcardRegex(Unescape(wildcards[number - 1]));
            for (std::size_t index = 0; index < names.size(); ++index)
            {
                last[index] = std::regex_match(names[index], expression) ? number : last[index];
            }
        }
        catch (const std::regex_error&)
        {
            // Prints a warning.
            continue;
        }
    }
    return last;
}

std::vector<std::uint32_t> FindLast(const ScopedFolder& folder, const Texts& wildcards)
{
    std::string content = "<ExtraInfo>";
    for (std::size_t index = 0; index < wildcards.size(); ++index)
    {
        const std::string name(wildcards[index].begin(), wildcards[index].end());
        content +=
            "<TestCase name='" + name + "'><TimeOutSec>" + std::to_string(index + 1) + "</TimeOutSec></TestCase>";
    }
    folder.WriteFile(L"CScanRandomNames/#ExtraInfo.xml", content + "</ExtraInfo>");
    std::vector<std::uint32_t> last;
    const auto tests = LuTestSuiteUtils::ScanDirectoryForUnitTests(folder.GetPath(), false);
    for (const LuTestSuite::STestCase& testCase : tests.at(0).cases)
    {
        const auto entry = testCase.parameters.find(L"TimeOutSec");
        last.push_back(entry == testCase.parameters.end() ? 0 : entry->second.ToUInt32().value());
    }
    return last;
}

TEST(RandomElements, ApplyLikeASequentialSearch)
{
    const CapturedOutput output;
    const ScopedFolder folder;
    CRandom random(3);
    std::size_t matchedCount = 0;
    for (int count = 0; count < 60; ++count)
    {
        GetScannedNames() = MakeNames(random, 100);
        Texts wildcards;
        while (wildcards.size() < 60)
        {
            wildcards.push_back(random.Below(3) == 0 ? GetScannedNames()[random.Below(10)] : MakeWildcard(random));
            if (wildcards.back().find_first_of(L"\n\r\t") != std::wstring::npos)
            {
                wildcards.pop_back();
            }
        }
        const std::vector<std::uint32_t> last = FindLast(folder, wildcards);
        ASSERT_EQ(last, FindLastPlainly(GetScannedNames(), wildcards)) << testing::PrintToString(wildcards);
        matchedCount += last.size() - static_cast<std::size_t>(std::ranges::count(last, 0U));
    }
    EXPECT_GT(matchedCount, 1'000U);
}

} // namespace
