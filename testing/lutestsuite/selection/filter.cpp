/// Selection of cases.

#include <algorithm>
#include <utility>

#include "base/lbformat.h"
#include "testing/lutestsuite/lutestsuiteutils.h"
#include "testing/lutestsuite/selection/expression.h"

namespace
{

using LuTestSuite::CExpression;
using LuTestSuite::SUnitTest;

/// The patterns of `-i` or of `-e`.
class CPatterns
{
public:
    /// Every pattern is compiled, also when it will be compared as plain text: an invalid one is always an error.
    CPatterns(const std::vector<std::wstring>& patterns, bool noRegex) : m_patterns(patterns), m_noRegex(noRegex)
    {
        for (const std::wstring& pattern : patterns)
        {
            try
            {
                m_expressions.emplace_back(std::wregex(pattern, std::regex_constants::ECMAScript), pattern.size());
            }
            catch (const std::regex_error&)
            {
                throw LbFormat(L"Ungültiger regulärer Ausdruck '%s'", pattern);
            }
        }
    }

    bool IsEmpty() const { return m_patterns.empty(); }

    bool MatchesAny(const std::wstring& pathName) const
    {
        if (m_noRegex)
        {
            return std::ranges::any_of(m_patterns, [&](const std::wstring& each) { return pathName.ends_with(each); });
        }
        return std::ranges::any_of(m_expressions, [&](const CExpression& each) { return each.IsFoundIn(pathName); });
    }

private:
    const std::vector<std::wstring>& m_patterns;
    std::vector<CExpression> m_expressions;
    bool m_noRegex;
};

/// Decides case by case.
struct SSelector
{
    CPatterns includes;
    CPatterns excludes;
    std::unordered_set<std::wstring> storedNames;

    bool SelectsAll() const { return includes.IsEmpty() && excludes.IsEmpty() && storedNames.empty(); }

    /// `pathPrefix` and `className` are the case's names without the case itself.
    bool Selects(const std::wstring& pathPrefix, const std::wstring& className, const std::wstring& caseName) const
    {
        if (SelectsAll())
        {
            return true;
        }
        const std::wstring pathName = pathPrefix + caseName;
        if (excludes.MatchesAny(pathName))
        {
            return false;
        }
        if (includes.IsEmpty() && storedNames.empty())
        {
            return true;
        }
        return storedNames.contains(className + L":" + caseName) || includes.MatchesAny(pathName);
    }
};

std::unordered_set<std::wstring> readStoredNames(const std::wstring& includeConfigPath)
{
    LuTestSuiteUtils::SConfigFileData data;
    if (!includeConfigPath.empty())
    {
        try
        {
            LuTestSuiteUtils::ReadConfigXML(includeConfigPath, data);
        }
        catch (const std::wstring& message)
        {
            throw LbFormat(L"Fehler in Config-File: %s\n", message);
        }
    }
    return std::move(data.tests);
}

/// Directory and class name with "/" as separator on all platforms, and the ":" before the case name.
std::wstring getPathPrefix(const SUnitTest& test)
{
    std::wstring prefix = test.dataDirectory + test.className + L":";
    std::ranges::replace(prefix, L'\\', L'/');
    return prefix;
}

/// The indices of the selected cases of each unit test.
std::vector<std::vector<std::size_t>> selectCases(const std::vector<SUnitTest>& tests, const SSelector& selector,
                                                  std::uint32_t maxCases)
{
    std::vector<std::vector<std::size_t>> selected(tests.size());
    std::uint32_t count = 0;
    for (std::size_t testIndex = 0; testIndex < tests.size(); ++testIndex)
    {
        const SUnitTest& test = tests[testIndex];
        const std::wstring pathPrefix = getPathPrefix(test);
        for (std::size_t caseIndex = 0; caseIndex < test.cases.size(); ++caseIndex)
        {
            if (!selector.Selects(pathPrefix, test.className, test.cases[caseIndex].name))
            {
                continue;
            }
            selected[testIndex].push_back(caseIndex);
            if (++count >= maxCases)
            {
                return selected;
            }
        }
    }
    return selected;
}

/// No patterns need no stack, whatever the names.
LuTestSuite::SExpressionSizes getSizes(const std::vector<SUnitTest>& tests, const std::vector<std::wstring>& includes,
                                       const std::vector<std::wstring>& excludes)
{
    LuTestSuite::SExpressionSizes sizes;
    for (const std::vector<std::wstring>* const patterns : {&includes, &excludes})
    {
        for (const std::wstring& pattern : *patterns)
        {
            sizes.AddSource(pattern.size());
        }
    }
    for (std::size_t index = 0; index < tests.size() && sizes.source > 0; ++index)
    {
        const std::size_t prefix = tests[index].dataDirectory.size() + tests[index].className.size() + 1;
        for (const LuTestSuite::STestCase& testCase : tests[index].cases)
        {
            sizes.AddName(prefix + testCase.name.size());
        }
    }
    return sizes;
}

/// Moves the selected cases of a unit test to its front and drops the others.
void keepCases(SUnitTest& test, const std::vector<std::size_t>& selected)
{
    for (std::size_t target = 0; target < selected.size(); ++target)
    {
        if (selected[target] != target)
        {
            test.cases[target] = std::move(test.cases[selected[target]]);
        }
    }
    test.cases.resize(selected.size());
}

} // namespace

void LuTestSuiteUtils::FilterTestCases(std::vector<LuTestSuite::SUnitTest>& tests,
                                       const std::wstring& includeConfigPath, const std::vector<std::wstring>& includes,
                                       const std::vector<std::wstring>& excludes, std::uint32_t maxCases, bool noRegex)
{
    std::vector<std::vector<std::size_t>> selected;
    const auto select = [&] {
        const SSelector selector{{includes, noRegex}, {excludes, noRegex}, readStoredNames(includeConfigPath)};
        selected = selectCases(tests, selector, maxCases);
    };
    LuTestSuite::RunWithExpressionStack(getSizes(tests, includes, excludes), select);
    for (std::size_t index = 0; index < tests.size(); ++index)
    {
        keepCases(tests[index], selected[index]);
    }
    std::erase_if(tests, [](const SUnitTest& test) { return test.cases.empty(); });
}

std::wregex LuTestSuiteUtils::GenerateWildcardRegex(const std::wstring& wildcard)
{
    // "?" and "*" are no longer special once they are replaced, and "." is escaped by then: one pass suffices.
    std::wstring expression;
    for (const wchar_t character : wildcard)
    {
        if (character == L'?')
        {
            expression += L'.';
        }
        else if (character == L'*')
        {
            expression += L".*";
        }
        else
        {
            if (std::wstring_view(L"\\^.$|()[]+/").find(character) != std::wstring_view::npos)
            {
                expression += L'\\';
            }
            expression += character;
        }
    }
    return std::wregex(expression, std::regex_constants::ECMAScript);
}
