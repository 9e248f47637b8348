/// Checks for any expression and name that the search, the parser, the automaton, the guarded expressions and the
/// required text agree with the standard library.
#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <optional>
#include <string>

#include "fuzz/fuzzing.h"
#include "testing/lutestsuite/selection/automaton.h"
#include "testing/lutestsuite/selection/expression.h"
#include "testing/lutestsuite/selection/guardedexpressions.h"
#include "testing/lutestsuite/selection/requiredtext.h"
#include "testing/lutestsuite/selection/wideregex.h"

namespace
{

using Fuzzing::Check;

/// The standard library is too slow for longer names and expressions.
constexpr std::size_t c_LongestName = 6;
constexpr std::size_t c_LongestExpression = 30;

/// Each byte is a character; the highest bytes become some characters beyond Latin-1.
wchar_t getCharacter(std::uint8_t byte)
{
    constexpr std::wstring_view c_Wide = L"\u2028\u2029\uFF08\uFF0A\u65E7\u0416\u0660\u2003";
    const std::size_t fromEnd = 255U - byte;
    return fromEnd < c_Wide.size() ? c_Wide[fromEnd] : static_cast<wchar_t>(byte);
}

/// The expression up to the first line feed, then the name.
void split(const std::uint8_t* data, std::size_t size, std::wstring& source, std::wstring& name)
{
    const std::uint8_t* const end = data + size;
    const std::uint8_t* const middle = std::find(data, end, std::uint8_t{'\n'});
    std::transform(data, middle, std::back_inserter(source), getCharacter);
    std::transform(middle == end ? end : middle + 1, end, std::back_inserter(name), getCharacter);
    source.resize(std::min(source.size(), c_LongestExpression));
    name.resize(std::min(name.size(), c_LongestName));
}

std::optional<std::wregex> compile(const std::wstring& source)
{
    try
    {
        return LuTestSuite::MakeWideRegex(source);
    }
    catch (const std::regex_error&)
    {
        return std::nullopt;
    }
}

/// For expressions that the automaton does not take: CExpression uses the standard library, on a large stack.
void checkSearch(const std::wstring& source, const std::wstring& name)
{
    LuTestSuite::RunOnExpressionStack([&](const LuTestSuite::CStackLimit& limit) {
        try
        {
            const LuTestSuite::CExpression searched(source, source, limit);
            const std::wregex expression = LuTestSuite::MakeWideRegex(source);
            Check(searched.IsFoundIn(name) == std::regex_search(name, expression));
            Check(searched.Matches(name) == std::regex_match(name, expression));
        }
        catch (const std::regex_error&)
        {
            return;
        }
        catch (const std::wstring&)
        {
            // The stack is exhausted.
            return;
        }
    });
}

void checkSyntax(const LuTestSuite::SExpressionSyntax& syntax, const std::optional<std::wregex>& expression,
                 const std::wstring& name)
{
    const bool canTake = LuTestSuite::CAutomaton::CanTake(syntax);
    const bool isGuarded = LuTestSuite::CGuardedExpressions::CanTake(syntax);
    if (!expression)
    {
        // Only the standard library detects back-references to missing groups.
        Check(!canTake && !isGuarded);
        return;
    }
    const bool isFound = std::regex_search(name, *expression);
    Check(!isFound || name.find(LuTestSuite::GetRequiredText(syntax.root)) != std::wstring::npos);
    if (isGuarded)
    {
        LuTestSuite::CGuardedExpressions guarded;
        guarded.Add(syntax.root);
        Check(guarded.IsFoundIn(name) == isFound);
        // The first expression finds nothing.
        LuTestSuite::CGuardedExpressions several;
        several.Add(LuTestSuite::ParseExpression(L"^(?!x)x")->root);
        several.Add(syntax.root);
        Check(several.IsFoundIn(name) == isFound);
    }
    if (canTake)
    {
        LuTestSuite::CAutomaton automaton;
        automaton.Add(syntax.root);
        Check(automaton.IsFoundIn(name) == isFound);
        // Adds the same expression twice, because more than one expression can be found.
        LuTestSuite::CAutomaton each(LuTestSuite::CAutomaton::EGoal::Each);
        each.Add(syntax.root);
        each.Add(syntax.root);
        Check(each.FindEach(name).size() == (isFound ? 2U : 0U));
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    std::wstring source;
    std::wstring name;
    split(data, size, source, name);
    const auto syntax = LuTestSuite::ParseExpression(source);
    if (syntax)
    {
        checkSyntax(*syntax, compile(source), name);
    }
    if (!syntax || !LuTestSuite::CAutomaton::CanTake(*syntax))
    {
        checkSearch(source, name);
    }
    return 0;
}
