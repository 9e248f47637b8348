/// Finds the elements of a description file that apply to a case.
#pragma once

#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "testing/lutestsuite/selection/automaton.h"
#include "testing/lutestsuite/selection/expression.h"

namespace LuTestSuite
{

/// The names of elements, indexed so that a case's name is compared with few of them. Plain names need one look-up.
/// Names with "*" or "?" are compared only if the case's name contains a certain text from between their wildcards; one
/// pass over the case's name finds the texts of all these names. Names with braces are always compared.
class CElementNames
{
public:
    /// The names in file order; their positions are the indices that Find returns.
    explicit CElementNames(std::vector<std::wstring> names);

    CElementNames(const CElementNames&) = delete;
    CElementNames& operator=(const CElementNames&) = delete;

    /// True if some names need the standard library's engine. Without Compile these names match nothing.
    bool NeedEngine() const { return !m_forEngine.empty(); }

    /// Call Compile, and Find after it, inside RunOnExpressionStack. If a name is an invalid expression or exceeds the
    /// stack, adds a German message; the name then matches nothing.
    void Compile(const CStackLimit& limit, std::vector<std::wstring>& messages);

    /// Indices of the elements that apply to the case, ascending. An expression that exceeds the stack adds a message,
    /// once, and does not match this case.
    std::vector<std::size_t> Find(const std::wstring& caseName, std::vector<std::wstring>& messages);

private:
    using Index = std::size_t;

    struct SWildcard
    {
        Index index;
        std::wstring text;
    };

    struct SAutomaton
    {
        Index index;
        CAutomaton automaton;
    };

    struct SExpression
    {
        Index index;
        CExpression expression;
        bool hasFailed = false;
    };

    void addExpression(Index index);
    void addRequiredTexts();

    const std::vector<std::wstring> m_names;
    std::unordered_map<std::wstring_view, std::vector<Index>> m_plain;
    std::vector<SWildcard> m_wildcards;
    CAutomaton m_requiredTexts{CAutomaton::EGoal::Each}; ///< one text for each of m_wildcards
    std::vector<SAutomaton> m_automata;
    std::vector<Index> m_forEngine;
    std::vector<SExpression> m_expressions;
};

} // namespace LuTestSuite
