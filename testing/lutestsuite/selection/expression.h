/// Expressions that only the standard library's engine can match.
///
/// It recurses for each character of a name and for each part of an expression. It therefore runs on a large stack of
/// its own, and what even that cannot carry is an error.
#pragma once

#include <functional>
#include <regex>
#include <string>

#include "testing/lutestsuite/selection/stacklimit.h"

namespace LuTestSuite
{

/// Runs `function` to its end on a thread with a large stack and passes its exception on. Throws LbException when the
/// thread cannot be had; then `function` has not begun.
void RunOnExpressionStack(const std::function<void(const CStackLimit&)>& function);

/// A compiled expression. For RunOnExpressionStack only, with the limit of that call, which it refers to. Each
/// operation throws a German message as std::wstring, naming the expression, when the stack does not suffice.
class CExpression
{
public:
    /// `text` is what messages call the expression, and `requiredText` is part of each text that it is found in.
    /// Throws std::regex_error.
    CExpression(const std::wstring& source, std::wstring text, std::wstring requiredText, const CStackLimit& limit);

    /// True when the whole name matches.
    bool Matches(const std::wstring& name) const;

    /// True when some part of the name matches.
    bool IsFoundIn(const std::wstring& name) const;

private:
    std::wstring m_text;
    std::wstring m_requiredText;
    const CStackLimit* m_limit;
    std::wregex m_expression;
};

} // namespace LuTestSuite
