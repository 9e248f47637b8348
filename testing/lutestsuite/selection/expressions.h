/// Several expressions that only the standard library's engine can match.
#pragma once

#include <string>
#include <vector>

#include "testing/lutestsuite/selection/automaton.h"
#include "testing/lutestsuite/selection/expression.h"
#include "testing/lutestsuite/selection/expressionsyntax.h"

namespace LuTestSuite
{

/// For each name, applies the engine only to the expressions whose required text the name contains; one pass over the
/// name finds these expressions. The rules of CExpression apply.
class CExpressions
{
public:
    /// `syntax` is null if the parser does not support the expression. Throws like the constructor of CExpression.
    void Add(const std::wstring& source, const SExpressionSyntax* syntax, const CStackLimit& limit);

    /// True if one of the expressions is found in the name; they are tried in the order of Add.
    bool IsFoundIn(const std::wstring& name);

private:
    std::vector<CExpression> m_expressions;
    CAutomaton m_requiredTexts{CAutomaton::EGoal::Each}; ///< one text for each expression
};

} // namespace LuTestSuite
