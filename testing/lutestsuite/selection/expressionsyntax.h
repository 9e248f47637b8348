/// What an ECMAScript expression says, as far as its parser knows the grammar.
///
/// The parser knows less than the standard library: what it leaves out, and what may be invalid, is for that one to
/// compile. What it takes is valid there and means the same.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "testing/lutestsuite/selection/characterset.h"

namespace LuTestSuite
{

struct SSyntaxNode
{
    enum class EKind
    {
        Character, ///< one character of `set`
        Sequence,  ///< `children` one behind the other
        Choice,    ///< one of `children`
        Repeat,    ///< `children[0]`, `minimum` to `maximum` times
        TextBegin,
        TextEnd,
        Unmodelled, ///< a look-ahead, a word boundary, a back-reference: nothing is known of it
    };

    static constexpr std::uint32_t sc_Unlimited = static_cast<std::uint32_t>(-1);

    EKind kind = EKind::Sequence;
    CCharacterSet set;
    std::vector<SSyntaxNode> children;
    std::uint32_t minimum = 0;
    std::uint32_t maximum = 0;
};

struct SExpressionSyntax
{
    SSyntaxNode root;
    bool isRegular = true; ///< without unmodelled nodes
};

/// Nothing for an expression that the parser does not know. Its recursion is bounded whatever the text.
std::optional<SExpressionSyntax> ParseExpression(std::wstring_view source);

/// A text that is part of each text in which the expression is found; empty when none is certain.
std::wstring GetRequiredText(const SSyntaxNode& node);

} // namespace LuTestSuite
