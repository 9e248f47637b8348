/// Regular expressions over names of any length.
///
/// The standard library's engine recurses per character, so a long name can end a thread with a common stack without a
/// word. Matching therefore runs on a stack of its own, and what even that cannot carry is an error.
#pragma once

#include <cstddef>
#include <functional>
#include <regex>
#include <string>
#include <utility>

namespace LuTestSuite
{

/// Runs `function` to its end on a thread whose stack carries all matching that CExpression allows.
void RunWithExpressionStack(const std::function<void()>& function);

/// A compiled expression. Matching is allowed under RunWithExpressionStack only, and throws a German message as
/// std::wstring for a name that is too long for it.
class CExpression
{
public:
    /// `sourceLength` is the length of the expression's text, which bounds the recursion for each character.
    CExpression(std::wregex expression, std::size_t sourceLength)
        : m_expression(std::move(expression)), m_sourceLength(sourceLength)
    {
    }

    /// True when the whole name matches.
    bool Matches(const std::wstring& name) const;

    /// True when some part of the name matches.
    bool IsFoundIn(const std::wstring& name) const;

private:
    void checkLength(const std::wstring& name) const;

    std::wregex m_expression;
    std::size_t m_sourceLength;
};

} // namespace LuTestSuite
