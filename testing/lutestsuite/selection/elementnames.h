/// Finds the elements of a description file that apply to a case.
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

/// The names of elements, indexed so that a case's name is compared with few of them: plain names need one look-up;
/// names with "*" and "?" are tried if the case's name starts with the text before their first wildcard; names with
/// braces are always tried.
class CElementNames
{
public:
    /// The names in file order; their positions are the indices that Find returns.
    explicit CElementNames(std::vector<std::wstring> names);

    CElementNames(const CElementNames&) = delete;
    CElementNames& operator=(const CElementNames&) = delete;

    /// True if some names need the engine. Without Compile these match nothing.
    bool NeedEngine() const { return !m_forEngine.empty(); }

    /// Call this operation, and Find afterwards, under RunOnExpressionStack. A name that is an invalid expression or
    /// exceeds the stack adds a German message and matches nothing.
    void Compile(const CStackLimit& limit, std::vector<std::wstring>& messages);

    /// Indices of the elements that apply to the case, ascending. An expression that exceeds the stack adds a message,
    /// once, and does not match this case.
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
