/// Selection of cases.

#include <algorithm>
#include <optional>
#include <utility>

#include "base/lbformat.h"
#include "testing/lutestsuite/lutestsuiteutils.h"
#include "testing/lutestsuite/selection/automaton.h"
#include "testing/lutestsuite/selection/expression.h"
#include "testing/lutestsuite/selection/expressions.h"
#include "testing/lutestsuite/selection/guardedexpressions.h"
#include "testing/lutestsuite/selection/wideregex.h"
#include "testing/lutestsuite/selection/wildcard.h"

namespace
{

using LuTestSuite::CAutomaton;
using LuTestSuite::CGuardedExpressions;
using LuTestSuite::CStackLimit;
using LuTestSuite::SUnitTest;

struct SPattern
{
    std::wstring source;
    std::optional<LuTestSuite::SExpressionSyntax> syntax;
    bool isGuarded = false;
    bool needsEngine = false;
};

std::vector<SPattern> parsePatterns(const std::vector<std::wstring>& sources)
{
    std::vector<SPattern> patterns;
    for (const std::wstring& source : sources)
    {
        SPattern pattern{source, LuTestSuite::ParseExpression(source)};
        pattern.isGuarded = pattern.syntax && CGuardedExpressions::CanTake(*pattern.syntax);
        pattern.needsEngine = !pattern.isGuarded && (!pattern.syntax || !CAutomaton::CanTake(*pattern.syntax));
        patterns.push_back(std::move(pattern));
    }
    return patterns;
}

/// The patterns of `-i` or of `-e`.
class CPatterns
{
public:
    /// Compiles every pattern, even if patterns are compared as plain text: an invalid pattern is always an error.
    /// `limit` is non-null if a pattern needs the engine.
    CPatterns(const std::vector<SPattern>& patterns, bool noRegex, const CStackLimit* limit)
        : m_patterns(patterns), m_noRegex(noRegex)
    {
        for (const SPattern& pattern : patterns)
        {
            if (pattern.needsEngine)
            {
                compile(pattern, *limit);
            }
            else if (pattern.isGuarded)
            {
                m_guarded.Add(pattern.syntax->root);
            }
            else
            {
                m_automaton.Add(pattern.syntax->root);
            }
        }
    }

    bool IsEmpty() const { return m_patterns.empty(); }

    bool MatchesAny(const std::wstring& pathName)
    {
        if (m_noRegex)
        {
            return std::ranges::any_of(m_patterns,
                                       [&](const SPattern& each) { return pathName.ends_with(each.source); });
        }
        return m_automaton.IsFoundIn(pathName) || m_guarded.IsFoundIn(pathName) || m_expressions.IsFoundIn(pathName);
    }

private:
    void compile(const SPattern& pattern, const CStackLimit& limit)
    {
        try
        {
            m_expressions.Add(pattern.source, pattern.syntax ? &*pattern.syntax : nullptr, limit);
        }
        catch (const std::regex_error& error)
        {
            throw LuTestSuite::DescribeRefusal(error, L"Ungültiger regulärer Ausdruck", pattern.source);
        }
    }

    const std::vector<SPattern>& m_patterns;
    CAutomaton m_automaton;
    CGuardedExpressions m_guarded;
    LuTestSuite::CExpressions m_expressions;
    bool m_noRegex;
};

/// Decides for each case whether it is selected.
struct SSelector
{
    CPatterns includes;
    CPatterns excludes;
    std::unordered_set<std::wstring> storedNames;

    bool SelectsAll() const { return includes.IsEmpty() && excludes.IsEmpty() && storedNames.empty(); }

    /// `pathName` and `className` belong to the same case.
    bool Selects(const std::wstring& pathName, const std::wstring& className, const std::wstring& caseName)
    {
        if (excludes.MatchesAny(pathName))
        {
            return false;
        }
        if (includes.IsEmpty() && storedNames.empty())
        {
            return true;
        }
        const bool isStored = !storedNames.empty() && storedNames.contains(className + L":" + caseName);
        return isStored || includes.MatchesAny(pathName);
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

/// Directory and class name with "/" as separator on all platforms, followed by the ":" before the case name.
std::wstring getPathPrefix(const SUnitTest& test)
{
    std::wstring prefix = test.dataDirectory + test.className + L":";
    std::ranges::replace(prefix, L'\\', L'/');
    return prefix;
}

/// The indices of the selected cases of each unit test.
std::vector<std::vector<std::size_t>> selectCases(const std::vector<SUnitTest>& tests, SSelector& selector,
                                                  std::uint32_t maxCases)
{
    std::vector<std::vector<std::size_t>> selected(tests.size());
    std::uint32_t count = 0;
    for (std::size_t testIndex = 0; testIndex < tests.size(); ++testIndex)
    {
        const SUnitTest& test = tests[testIndex];
        std::wstring pathName = getPathPrefix(test);
        const std::size_t prefixLength = pathName.size();
        for (std::size_t caseIndex = 0; caseIndex < test.cases.size(); ++caseIndex)
        {
            const std::wstring& caseName = test.cases[caseIndex].name;
            pathName.replace(prefixLength, std::wstring::npos, caseName);
            if (!selector.SelectsAll() && !selector.Selects(pathName, test.className, caseName))
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

/// Moves the selected cases of a unit test to the front and drops the others.
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
    const std::vector<SPattern> includePatterns = parsePatterns(includes);
    const std::vector<SPattern> excludePatterns = parsePatterns(excludes);
    std::vector<std::vector<std::size_t>> selected;
    const auto select = [&](const CStackLimit* limit) {
        SSelector selector{
            {includePatterns, noRegex, limit}, {excludePatterns, noRegex, limit}, readStoredNames(includeConfigPath)};
        selected = selectCases(tests, selector, maxCases);
    };
    if (std::ranges::any_of(includePatterns, &SPattern::needsEngine) ||
        std::ranges::any_of(excludePatterns, &SPattern::needsEngine))
    {
        LuTestSuite::RunOnExpressionStack([&](const CStackLimit& limit) { select(&limit); });
    }
    else
    {
        select(nullptr);
    }
    for (std::size_t index = 0; index < tests.size(); ++index)
    {
        keepCases(tests[index], selected[index]);
    }
    std::erase_if(tests, [](const SUnitTest& test) { return test.cases.empty(); });
}

std::wregex LuTestSuiteUtils::GenerateWildcardRegex(const std::wstring& wildcard)
{
    return LuTestSuite::MakeWideRegex(LuTestSuite::GetWildcardExpression(wildcard));
}
