// Selection of cases.

#include <algorithm>
#include <limits>
#include <string>
#include <utility>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "testing/lutestsuite/lutestsuiteutils.h"
#include "tests/support/scopedfolder.h"

namespace
{

using LuTestSuite::SUnitTest;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using Patterns = std::vector<std::wstring>;

SUnitTest MakeTest(const std::wstring& directory, const std::wstring& className, const Patterns& caseNames)
{
    SUnitTest test;
    test.className = className;
    test.dataDirectory = directory;
    for (const std::wstring& name : caseNames)
    {
        test.cases.push_back({{}, name, {}});
    }
    return test;
}

class FilterTestCases : public testing::Test
{
protected:
    /// Two tests with separators of both platforms in their directories.
    FilterTestCases()
        : m_tests{MakeTest(L"C:\\daten\\alpha\\CErster\\", L"CErster", {L"eins", L"zwei", L"drei"}),
                  MakeTest(L"/daten/beta/CZweiter/", L"CZweiter", {L"eins", L"eins.txt", L"kleineins"})}
    {
    }

    void Filter(const Patterns& includes, const Patterns& excludes = {})
    {
        LuTestSuiteUtils::FilterTestCases(m_tests, m_includeConfig, includes, excludes, m_maxCases, m_noRegex);
    }

    /// The selected cases as "class:case", in order.
    Patterns GetSelected() const
    {
        Patterns names;
        for (const SUnitTest& test : m_tests)
        {
            for (const LuTestSuite::STestCase& testCase : test.cases)
            {
                names.push_back(test.className + L":" + testCase.name);
            }
        }
        return names;
    }

    void ExpectAllSelected() const
    {
        EXPECT_THAT(GetSelected(), ElementsAre(L"CErster:eins", L"CErster:zwei", L"CErster:drei", L"CZweiter:eins",
                                               L"CZweiter:eins.txt", L"CZweiter:kleineins"));
    }

    std::vector<SUnitTest> m_tests;
    std::wstring m_includeConfig;
    std::uint32_t m_maxCases = std::numeric_limits<std::uint32_t>::max();
    bool m_noRegex = false;
};

TEST_F(FilterTestCases, KeepsEverythingWithoutPatterns)
{
    Filter({});
    ExpectAllSelected();
}

TEST_F(FilterTestCases, SearchesPlainLettersAnywhereInThePathName)
{
    Filter({L"ein"});
    EXPECT_THAT(GetSelected(),
                ElementsAre(L"CErster:eins", L"CZweiter:eins", L"CZweiter:eins.txt", L"CZweiter:kleineins"));
}

TEST_F(FilterTestCases, SearchesDirectoryAndClassAsWell)
{
    Filter({L"alpha", L"CZweiter:k"});
    EXPECT_THAT(GetSelected(), ElementsAre(L"CErster:eins", L"CErster:zwei", L"CErster:drei", L"CZweiter:kleineins"));
}

TEST_F(FilterTestCases, DistinguishesLetterCases)
{
    Filter({L"EINS"});
    EXPECT_THAT(GetSelected(), IsEmpty());
}

TEST_F(FilterTestCases, FormsThePathNameWithForwardSlashes)
{
    Filter({L"^C:/daten/alpha/CErster/CErster:zwei$", L"^/daten/beta/CZweiter/CZweiter:eins$"});
    EXPECT_THAT(GetSelected(), ElementsAre(L"CErster:zwei", L"CZweiter:eins"));
}

TEST_F(FilterTestCases, NeverMatchesABackslashAsSeparator)
{
    Filter({L"daten\\\\alpha", L"\\\\CZweiter"});
    EXPECT_THAT(GetSelected(), IsEmpty());
}

TEST_F(FilterTestCases, ConvertsBackslashesOnlyInDirectoryAndClass)
{
    m_tests[0].cases[0].name = L"a\\b";
    Filter({L":a\\\\b$"});
    EXPECT_THAT(GetSelected(), ElementsAre(L"CErster:a\\b"));
}

TEST_F(FilterTestCases, AnchorsAtTheStartOfTheDirectory)
{
    Filter({L"^CErster", L"^/daten"});
    EXPECT_THAT(GetSelected(), ElementsAre(L"CZweiter:eins", L"CZweiter:eins.txt", L"CZweiter:kleineins"));
}

TEST_F(FilterTestCases, ReadsPatternsAsEcmaScript)
{
    Filter({L":(?:zwei|\\w+\\.\\w{3})$"});
    EXPECT_THAT(GetSelected(), ElementsAre(L"CErster:zwei", L"CZweiter:eins.txt"));
}

TEST_F(FilterTestCases, ExcludesFromAllCasesWithoutIncludePatterns)
{
    Filter({}, {L"eins", L"drei"});
    EXPECT_THAT(GetSelected(), ElementsAre(L"CErster:zwei"));
}

TEST_F(FilterTestCases, PrefersExcludePatternsToIncludePatterns)
{
    Filter({L":eins$", L":zwei$"}, {L"CErster:eins"});
    EXPECT_THAT(GetSelected(), ElementsAre(L"CErster:zwei", L"CZweiter:eins"));
}

TEST_F(FilterTestCases, DropsUnitTestsWithoutSelectedCases)
{
    Filter({L"CZweiter:eins$"});
    ASSERT_EQ(m_tests.size(), 1U);
    EXPECT_EQ(m_tests[0].className, L"CZweiter");
    EXPECT_EQ(m_tests[0].cases.size(), 1U);
}

TEST_F(FilterTestCases, KeepsAllDataOfSelectedTestsAndCases)
{
    SUnitTest& test = m_tests[1];
    test.contacts = {{L"Anna", L"anna@example.org", L"Autorin"}};
    test.moduleName = L"Modul.dll";
    test.cases[1].dataSetFile = L"/daten/beta/CZweiter/eins.txt";
    test.cases[1].parameters[L"TimeOutSec"] = 5U;

    Filter({L"txt$"});

    ASSERT_EQ(m_tests.size(), 1U);
    const SUnitTest& left = m_tests[0];
    EXPECT_EQ(left.dataDirectory, L"/daten/beta/CZweiter/");
    EXPECT_EQ(left.moduleName, L"Modul.dll");
    EXPECT_THAT(left.GetDataSetFiles(), ElementsAre(L"/daten/beta/CZweiter/eins.txt"));
    ASSERT_EQ(left.contacts.size(), 1U);
    EXPECT_EQ(left.contacts[0].email, L"anna@example.org");
    EXPECT_EQ(left.cases[0].dataSetFile, L"/daten/beta/CZweiter/eins.txt");
    EXPECT_EQ(left.cases[0].parameters.at(L"TimeOutSec"), LbVariant(5U));
}

TEST_F(FilterTestCases, DistinguishesUnitTestsOfTheSameClass)
{
    m_tests[1].className = L"CErster";
    Filter({L"eins$"});
    ASSERT_EQ(m_tests.size(), 2U);
    EXPECT_EQ(m_tests[0].dataDirectory, L"C:\\daten\\alpha\\CErster\\");
    EXPECT_EQ(m_tests[1].dataDirectory, L"/daten/beta/CZweiter/");
}

TEST_F(FilterTestCases, StopsAtTheMaximumOfCases)
{
    m_maxCases = 4;
    Filter({});
    EXPECT_THAT(GetSelected(), ElementsAre(L"CErster:eins", L"CErster:zwei", L"CErster:drei", L"CZweiter:eins"));
}

TEST_F(FilterTestCases, StopsBetweenUnitTestsIfTheMaximumIsReached)
{
    m_maxCases = 3;
    Filter({});
    EXPECT_EQ(m_tests.size(), 1U);
    EXPECT_EQ(GetSelected().size(), 3U);
}

TEST_F(FilterTestCases, KeepsOneCaseForAMaximumOfOneOrZero)
{
    for (const std::uint32_t maximum : {1U, 0U})
    {
        m_maxCases = maximum;
        Filter({L"eins"});
        EXPECT_THAT(GetSelected(), ElementsAre(L"CErster:eins")) << maximum;
    }
}

TEST_F(FilterTestCases, CountsOnlySelectedCasesTowardsTheMaximum)
{
    m_maxCases = 2;
    Filter({}, {L"eins$"});
    EXPECT_THAT(GetSelected(), ElementsAre(L"CErster:zwei", L"CErster:drei"));
}

TEST_F(FilterTestCases, AcceptsAnEmptyList)
{
    m_tests.clear();
    Filter({L"x"}, {L"y"});
    EXPECT_THAT(m_tests, IsEmpty());
}

// Patterns as plain text instead of expressions.

TEST_F(FilterTestCases, ComparesPlainTextWithTheEndOfThePathName)
{
    m_noRegex = true;
    Filter({L"eins"});
    EXPECT_THAT(GetSelected(), ElementsAre(L"CErster:eins", L"CZweiter:eins", L"CZweiter:kleineins"));
}

TEST_F(FilterTestCases, ComparesPlainTextWithSpecialCharacters)
{
    m_noRegex = true;
    Filter({L"beta/CZweiter/CZweiter:eins.txt", L".rei"});
    EXPECT_THAT(GetSelected(), ElementsAre(L"CZweiter:eins.txt"));
}

TEST_F(FilterTestCases, ExcludesByPlainText)
{
    m_noRegex = true;
    Filter({}, {L":eins"});
    EXPECT_THAT(GetSelected(),
                ElementsAre(L"CErster:zwei", L"CErster:drei", L"CZweiter:eins.txt", L"CZweiter:kleineins"));
}

TEST_F(FilterTestCases, NeverMatchesPlainTextLongerThanTheName)
{
    m_noRegex = true;
    Filter({L"x/daten/beta/CZweiter/CZweiter:eins"});
    EXPECT_THAT(GetSelected(), IsEmpty());
}

TEST_F(FilterTestCases, ComparesPlainTextCaseSensitively)
{
    m_noRegex = true;
    Filter({L"EINS"});
    EXPECT_THAT(GetSelected(), IsEmpty());
}

// Characters have the same meaning on all platforms.

TEST_F(FilterTestCases, TreatsWideFormsOfOperatorsLiterally)
{
    for (const wchar_t form : std::wstring(L"＊．＋｜（）［］｛｝＼＾＄∗∣？"))
    {
        const std::wstring name = std::wstring(L"a") + form + L"b";
        m_tests = {MakeTest(L"/daten/", L"CErster", {name, L"ab", L"aab", L"a", L"b", L"a.b"})};
        Filter({L":" + name + L"$", L"(?=:):" + name + L"$"});
        EXPECT_EQ(GetSelected(), Patterns{L"CErster:" + name});
    }
}

TEST_F(FilterTestCases, LimitsCharacterClassesToAscii)
{
    const Patterns names = {L"a_Z09", L"\u00E4", L"\u0416", L"\uFF11", L"\u0663", L"-"};
    for (const wchar_t* expression : {L":\\w+$", L":[\\w]+$", L":[[:alnum:]_]+$", L":[^\\W]+$", L"(?=:):\\w+$",
                                      L"(?=:):[[:alnum:]_]+$", L":(?!.*\\W)", L"\\b\\w+$(?!x)"})
    {
        m_tests = {MakeTest(L"/daten/", L"CErster", names)};
        Filter({expression});
        EXPECT_THAT(GetSelected(), ElementsAre(L"CErster:a_Z09")) << testing::PrintToString(expression);
    }
}

TEST_F(FilterTestCases, LimitsDigitsSpacesAndLetterCasesToAscii)
{
    const Patterns names = {L"7", L"\u0667", L" ", L"\u2003", L"\u00A0", L"Q", L"\u00C4", L"q", L"\u00E4"};
    const std::pair<std::wstring, std::wstring> selections[] = {{L":\\d$", L"7"},
                                                                {L":\\s$", L" "},
                                                                {L":[[:upper:]]$", L"Q"},
                                                                {L":[[:lower:]]$", L"q"},
                                                                {L":[[:blank:]]$", L" "},
                                                                {L"(?=:):\\d$", L"7"},
                                                                {L"(?=:):\\s$", L" "},
                                                                {L"(?=:):[[:upper:]]$", L"Q"},
                                                                {L"(?=:):[[:lower:]]$", L"q"}};
    for (const auto& [expression, name] : selections)
    {
        m_tests = {MakeTest(L"/daten/", L"CErster", names)};
        Filter({expression});
        EXPECT_EQ(GetSelected(), Patterns{L"CErster:" + name}) << testing::PrintToString(expression);
    }
}

// Invalid patterns.

class FilterTestCasesInvalid : public FilterTestCases, public testing::WithParamInterface<bool>
{
protected:
    std::wstring FilterAndGetMessage(const Patterns& includes, const Patterns& excludes)
    {
        m_noRegex = GetParam();
        try
        {
            Filter(includes, excludes);
        }
        catch (const std::wstring& message)
        {
            return message;
        }
        return L"no exception";
    }
};

TEST_P(FilterTestCasesInvalid, IncludePatternIsNamed)
{
    EXPECT_THAT(FilterAndGetMessage({L"gut", L"(offen"}, {}), HasSubstr(L"'(offen'"));
}

TEST_P(FilterTestCasesInvalid, ExcludePatternIsNamed)
{
    EXPECT_THAT(FilterAndGetMessage({}, {L"[a"}), HasSubstr(L"'[a'"));
}

TEST_P(FilterTestCasesInvalid, IncludePatternIsNamedBeforeExcludePattern)
{
    EXPECT_THAT(FilterAndGetMessage({L"*"}, {L"[a"}), HasSubstr(L"'*'"));
}

/// The standard library refuses these ranges.
TEST_P(FilterTestCasesInvalid, RangeThatEndsInAClassIsNamed)
{
    for (const wchar_t* const pattern : {L"[+-\\d]", L"[+-\\D]", L"[+-\\s]", L"[+-\\S]", L"[+-\\w]", L"[+-\\W]"})
    {
        EXPECT_THAT(FilterAndGetMessage({pattern}, {}), HasSubstr(pattern));
    }
}

INSTANTIATE_TEST_SUITE_P(WithAndWithoutExpressions, FilterTestCasesInvalid, testing::Bool());

// Long names.

TEST_F(FilterTestCases, MatchesLongNames)
{
    const std::wstring name(100'000, L'x');
    m_tests[0].cases[1].name = name + L"!";
    Filter({L"CErster:(x|y)*!$"});
    EXPECT_THAT(GetSelected(), ElementsAre(L"CErster:" + name + L"!"));
}

TEST_F(FilterTestCases, ComparesNamesOfAnyLengthAsPlainText)
{
    m_noRegex = true;
    m_tests[0].cases[1].name = std::wstring(5'000'000, L'x');
    Filter({L"xx"});
    EXPECT_EQ(GetSelected().size(), 1U);
}

// Stored selections.

class FilterTestCasesStored : public FilterTestCases
{
protected:
    void Store(std::string_view content) { m_includeConfig = m_folder.WriteFile(L"auswahl.xml", content); }

    ScopedFolder m_folder;
};

constexpr std::string_view c_Selection = "<Config><Tests><T name='CZweiter'><F name='eins'/></T>"
                                         "<T name='CErster'><F name='drei'/><F name='fehlt'/></T></Tests></Config>";

TEST_F(FilterTestCasesStored, SelectExactNames)
{
    Store(c_Selection);
    Filter({});
    EXPECT_THAT(GetSelected(), ElementsAre(L"CErster:drei", L"CZweiter:eins"));
}

TEST_F(FilterTestCasesStored, AddToIncludePatterns)
{
    Store(c_Selection);
    Filter({L"zwei$"});
    EXPECT_THAT(GetSelected(), ElementsAre(L"CErster:zwei", L"CErster:drei", L"CZweiter:eins"));
}

TEST_F(FilterTestCasesStored, YieldToExcludePatterns)
{
    Store(c_Selection);
    Filter({}, {L"drei"});
    EXPECT_THAT(GetSelected(), ElementsAre(L"CZweiter:eins"));
}

TEST_F(FilterTestCasesStored, AreComparedLiterally)
{
    Store("<Config><Tests><T name='CErster'><F name='.*'/></T></Tests></Config>");
    Filter({});
    EXPECT_THAT(GetSelected(), IsEmpty());
}

TEST_F(FilterTestCasesStored, SelectEverythingIfTheFileHasNone)
{
    Store("<Config><Tests/></Config>");
    Filter({});
    ExpectAllSelected();
}

TEST_F(FilterTestCasesStored, SelectEverythingWithoutAFile)
{
    m_includeConfig = m_folder.GetPathOf(L"fehlt.xml");
    Filter({});
    ExpectAllSelected();
}

TEST_F(FilterTestCasesStored, ThrowAMessageForABrokenFile)
{
    Store("<Config><Tests>");
    try
    {
        Filter({});
        FAIL() << "no exception";
    }
    catch (const std::wstring& message)
    {
        EXPECT_EQ(message, L"Fehler in Config-File: XML-Syntax Fehler\n");
    }
}

} // namespace
