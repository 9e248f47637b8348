/// Wildcard names of description files: "*" matches any text, "?" any character, both without line ends.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace LuTestSuite
{

enum class EWildcardKind
{
    Plain,      ///< matches the identical name
    Wildcard,   ///< "*", "?" and literal characters
    Expression, ///< contains braces, which act as repetition counts
};

EWildcardKind GetWildcardKind(std::wstring_view wildcard);

/// The ECMAScript expression for a wildcard name, to be matched against whole names.
std::wstring GetWildcardExpression(std::wstring_view wildcard);

/// The same wildcard with one star instead of several successive ones.
std::wstring JoinStars(std::wstring_view wildcard);

/// The texts between the wildcards of a name without braces, which must outlive them; none is empty. Each name that
/// matches contains them all.
std::vector<std::wstring_view> GetTexts(std::wstring_view wildcard);

/// True if the whole name matches the wildcard, which must not contain braces. Time is at most proportional to the
/// product of the lengths, for any number of stars.
bool MatchesWildcard(std::wstring_view name, std::wstring_view wildcard);

} // namespace LuTestSuite
