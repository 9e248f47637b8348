/// Wildcard names of description files: "*" is any text, "?" any character, neither with line ends.
#pragma once

#include <string>
#include <string_view>

namespace LuTestSuite
{

enum class EWildcardKind
{
    Plain,      ///< matches the name that is equal to it
    Wildcard,   ///< "*", "?" and characters that stand for themselves
    Expression, ///< has braces, which keep their meaning as repetition counts
};

EWildcardKind GetWildcardKind(std::wstring_view wildcard);

/// The ECMAScript expression of a wildcard name, to be matched against whole names.
std::wstring GetWildcardExpression(std::wstring_view wildcard);

/// True when the whole name matches the wildcard, which has no braces. Time grows with the product of the lengths at
/// most, whatever the number of stars.
bool MatchesWildcard(std::wstring_view name, std::wstring_view wildcard);

} // namespace LuTestSuite
