#include "testing/lutestsuite/selection/guardedexpressions.h"

#include <algorithm>

namespace
{

using LuTestSuite::SSyntaxNode;

using EKind = SSyntaxNode::EKind;

bool isGuarded(const SSyntaxNode& root)
{
    return root.kind == EKind::Sequence && root.children.size() >= 2 && root.children[0].kind == EKind::TextBegin &&
           root.children[1].kind == EKind::NotAhead;
}

bool isRegular(const SSyntaxNode& node)
{
    return node.kind != EKind::NotAhead && node.kind != EKind::Unmodelled &&
           std::ranges::all_of(node.children, isRegular);
}

/// The expression "^A" of "^(?!A)B".
SSyntaxNode getGuard(const SSyntaxNode& root)
{
    SSyntaxNode guard;
    guard.children = {root.children[0], root.children[1].children[0]};
    return guard;
}

/// The expression "^B" of "^(?!A)B".
SSyntaxNode getRest(const SSyntaxNode& root)
{
    SSyntaxNode rest = root;
    rest.children.erase(rest.children.begin() + 1);
    return rest;
}

} // namespace

bool LuTestSuite::CGuardedExpressions::CanTake(const SExpressionSyntax& syntax)
{
    if (!isGuarded(syntax.root))
    {
        return false;
    }
    const SSyntaxNode guard = getGuard(syntax.root);
    const SSyntaxNode rest = getRest(syntax.root);
    // Measures both parts together: an expression that is too large as a whole is left to the standard library, which
    // refuses it.
    SSyntaxNode whole;
    whole.children = {guard, rest};
    return isRegular(whole) && CAutomaton::CanTake({whole, true});
}

void LuTestSuite::CGuardedExpressions::Add(const SSyntaxNode& root)
{
    m_isEmpty = false;
    m_guards.Add(getGuard(root));
    m_rests.Add(getRest(root));
}

bool LuTestSuite::CGuardedExpressions::IsFoundIn(std::wstring_view name)
{
    return !m_isEmpty && !std::ranges::includes(m_guards.FindEach(name), m_rests.FindEach(name));
}
