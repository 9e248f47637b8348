/// Several expressions that exclude names by a negative look-ahead at their beginning.
#pragma once

#include <string_view>

#include "testing/lutestsuite/selection/automaton.h"
#include "testing/lutestsuite/selection/expressionsyntax.h"

namespace LuTestSuite
{

/// An expression of the form "^(?!A)B" is found in a name if "^B" is found and "^A" is not. Two automata search for the
/// parts of all expressions. For one thread at a time.
class CGuardedExpressions
{
public:
    /// True if the expression has this form, and automata support A and B.
    static bool CanTake(const SExpressionSyntax& syntax);

    /// Adds an expression. Precondition: CanTake is true, and no search has been made.
    void Add(const SSyntaxNode& root);

    /// True if one of the expressions is found in the name.
    bool IsFoundIn(std::wstring_view name);

private:
    bool m_isEmpty = true;
    CAutomaton m_guards{CAutomaton::EGoal::Each}; ///< "^A" for each expression
    CAutomaton m_rests{CAutomaton::EGoal::Each};  ///< "^B" for each expression
};

} // namespace LuTestSuite
