// Compares the search of random elements for random names with a sequential search.

#include <algorithm>
#include <array>
#include <cstdint>
#include <regex>
#include <string>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>

#include "base/luunittest.h"
#include "testing/lutestsuite/lutestsuiteutils.h"
#include "tests/lutestsuite/selection/randomnames.h"
#include "tests/support/capturedoutput.h"
#include "tests/support/scopedfolder.h"

namespace
{

using namespace RandomNames;

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

/// Replaces "&#10;", the only character reference that the XML texts contain.
std::wstring Unescape(std::wstring text)
{
    for (std::size_t at = text.find(L"&#10;"); at != std::wstring::npos; at = text.find(L"&#10;"))
    {
        text.replace(at, 5, L"\n");
    }
    return text;
}

/// Returns, for each name, the number of the last element that matches it, or 0. Tries all elements in order.
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
            // Discovery ignores an invalid element with a warning.
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
