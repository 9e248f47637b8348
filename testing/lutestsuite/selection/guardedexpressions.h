/// Several expressions that exclude names by a negative look-ahead at their beginning.
#pragma once

#include <string_view>

#include "testing/lutestsuite/selection/automaton.h"
#include "testing/lutestsuite/selection/expressionsyntax.h"

namespace LuTestSuite
{

/// Expressions of the form "^(?!A)B" are found in a name if "^B" is found in it, and "^A" is not: two automata tell
/// this for all expressions. For one thread at a time.
class CGuardedExpressions
{
public:
    /// True if the expression has this form, and automata can take A and B.
    static bool CanTake(const SExpressionSyntax& syntax);

    /// Precondition: CanTake, and no search yet.
    void Add(const SSyntaxNode& root);

    /// True if one of the expressions is found in the name.
    bool IsFoundIn(std::wstring_view name);

private:
    bool m_isEmpty = true;
    CAutomaton m_guards{CAutomaton::EGoal::Each}; ///< "^A" for each expression
    CAutomaton m_rests{CAutomaton::EGoal::Each};  ///< "^B" for each expression
};

} // namespace LuTestSuite
