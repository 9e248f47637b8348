/// Expressions that only the standard library's engine can match.
///
/// The engine recurses for each character of a name and for each part of an expression. It therefore runs on a large
/// stack of its own; exceeding even that is an error.
#pragma once

#include <functional>
#include <regex>
#include <string>
#include <string_view>

#include "testing/lutestsuite/selection/stacklimit.h"

namespace LuTestSuite
{

/// Runs `function` on a thread with a large stack, waits for its end and passes its exception on. Throws LbException if
/// the thread cannot be started; then `function` was not called.
void RunOnExpressionStack(const std::function<void(const CStackLimit&)>& function);

/// The message about an expression that the engine refuses, because it is invalid or exceeds a limit of the engine. The
/// message about an invalid expression begins with `invalid`. `text` names the expression.
std::wstring DescribeRefusal(const std::regex_error& error, std::wstring_view invalid, const std::wstring& text);

/// A compiled expression. Use it only inside RunOnExpressionStack, with the limit of that call; it keeps a reference to
/// the limit. If the stack is exhausted, each operation throws a German message as std::wstring, which names the
/// expression.
class CExpression
{
public:
    /// `text` names the expression in messages. Throws std::regex_error.
    CExpression(const std::wstring& source, std::wstring text, const CStackLimit& limit);

    /// True if the whole name matches.
    bool Matches(const std::wstring& name) const;

    /// True if a part of the name matches.
    bool IsFoundIn(const std::wstring& name) const;

private:
    std::wstring m_text;
    const CStackLimit* m_limit;
    std::wregex m_expression;
};

} // namespace LuTestSuite
