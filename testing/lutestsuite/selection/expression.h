/// Regular expressions over names of any length.
///
/// The standard library's engine recurses per character, so a long name can end a thread with a common stack without a
/// word. Matching that needs more therefore runs on a stack of its own, and what even that cannot carry is an error.
#pragma once

#include <algorithm>
#include <cstddef>
#include <functional>
#include <regex>
#include <string>
#include <utility>

namespace LuTestSuite
{

/// The longest name and the longest expression of a matching to come.
struct SExpressionSizes
{
    void AddName(std::size_t length) { name = std::max(name, length); }
    void AddSource(std::size_t length) { source = std::max(source, length); }

    std::size_t name = 0;
    std::size_t source = 0;
};

/// Runs `function`, which compiles and matches what `sizes` announces, on the calling thread when its stack is certain
/// to suffice, else to its end on another one. Throws LbException when that thread cannot be had.
void RunWithExpressionStack(const SExpressionSizes& sizes, const std::function<void()>& function);

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
