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

/// The non-empty texts between the wildcards; each name that matches contains all of them. `wildcard` has no braces and
/// must outlive the result.
std::vector<std::wstring_view> GetTexts(std::wstring_view wildcard);

/// True if the whole name matches the wildcard, which must not contain braces. Takes time at most proportional to the
/// product of the two lengths, for any number of stars.
bool MatchesWildcard(std::wstring_view name, std::wstring_view wildcard);

} // namespace LuTestSuite
