/// Which elements of a description file name a case.
#pragma once

#include <map>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "testing/lutestsuite/selection/automaton.h"
#include "testing/lutestsuite/selection/expression.h"

namespace LuTestSuite
{

/// Wildcard names of elements, kept so that a case's name is compared with few of them. Plain names cost one look-up,
/// names of "*" and "?" are tried where the text before their first wildcard is the beginning of the case's name, and
/// each name with braces is tried.
class CElementNames
{
public:
    /// The names in file order; their indices are those of the elements.
    explicit CElementNames(std::vector<std::wstring> names);

    CElementNames(const CElementNames&) = delete;
    CElementNames& operator=(const CElementNames&) = delete;

    /// True when some names are for the engine. Without Compile they match nothing.
    bool NeedEngine() const { return !m_forEngine.empty(); }

    /// Under RunOnExpressionStack, as is Find from then on. A name that is no expression, or that the stack cannot
    /// carry, adds a German message and matches nothing.
    void Compile(const CStackLimit& limit, std::vector<std::wstring>& messages);

    /// Indices of the elements that name the case, ascending. An expression for which the stack does not suffice adds a
    /// message, once, and does not match this case.
    std::vector<std::size_t> Find(const std::wstring& caseName, std::vector<std::wstring>& messages);

private:
    using Index = std::size_t;
    using Indices = std::unordered_map<std::wstring_view, std::vector<Index>>;

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

    const std::vector<std::wstring> m_names;
    Indices m_plain;
    std::map<std::size_t, Indices> m_wildcards; ///< by the text before the first wildcard, and by its length
    std::vector<SAutomaton> m_automata;
    std::vector<Index> m_forEngine;
    std::vector<SExpression> m_expressions;
};

} // namespace LuTestSuite
