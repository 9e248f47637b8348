/// The syntax tree of an ECMAScript expression.
///
/// The parser supports a part of the grammar. Each expression that it accepts is valid for the standard library and has
/// the same meaning there; the standard library handles all others.
#pragma once

#include <optional>
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
        Sequence,  ///< all `children`, in order
        Choice,    ///< one of `children`
        Repeat,    ///< `children[0]`, `minimum` to `maximum` times
        TextBegin,
        TextEnd,
        NotAhead,   ///< `children[0]` does not match what follows
        Unmodelled, ///< another look-ahead, a word boundary or a back-reference: whether it matches is unknown
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
    bool isRegular = true; ///< contains no node of kind NotAhead or Unmodelled
};

/// Empty for an expression that the parser does not support. The parser's recursion depth is bounded.
std::optional<SExpressionSyntax> ParseExpression(std::wstring_view source);

} // namespace LuTestSuite
