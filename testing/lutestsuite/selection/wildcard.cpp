#include "testing/lutestsuite/selection/wildcard.h"

#include <algorithm>
#include <iterator>

namespace
{

bool isLineEnd(wchar_t character)
{
    return character == L'\n' || character == L'\r' || character == L'\u2028' || character == L'\u2029';
}

} // namespace

LuTestSuite::EWildcardKind LuTestSuite::GetWildcardKind(std::wstring_view wildcard)
{
    if (wildcard.find_first_of(L"{}") != std::wstring_view::npos)
    {
        return EWildcardKind::Expression;
    }
    return wildcard.find_first_of(L"*?") == std::wstring_view::npos ? EWildcardKind::Plain : EWildcardKind::Wildcard;
}

std::wstring LuTestSuite::GetWildcardExpression(std::wstring_view wildcard)
{
    // One pass for wildcards and escapes, so that the inserted "." is not escaped.
    std::wstring expression;
    for (const wchar_t character : wildcard)
    {
        if (character == L'?')
        {
            expression += L'.';
        }
        else if (character == L'*')
        {
            expression += L".*";
        }
        else
        {
            if (std::wstring_view(L"\\^.$|()[]+/").find(character) != std::wstring_view::npos)
            {
                expression += L'\\';
            }
            expression += character;
        }
    }
    return expression;
}

std::wstring LuTestSuite::JoinStars(std::wstring_view wildcard)
{
    std::wstring joined;
    std::ranges::unique_copy(wildcard, std::back_inserter(joined),
                             [](wchar_t first, wchar_t second) { return first == L'*' && second == L'*'; });
    return joined;
}

std::vector<std::wstring_view> LuTestSuite::GetTexts(std::wstring_view wildcard)
{
    std::vector<std::wstring_view> texts;
    while (!wildcard.empty())
    {
        const std::wstring_view text = wildcard.substr(0, wildcard.find_first_of(L"*?"));
        if (!text.empty())
        {
            texts.push_back(text);
        }
        wildcard.remove_prefix(std::min(text.size() + 1, wildcard.size()));
    }
    return texts;
}

bool LuTestSuite::MatchesWildcard(std::wstring_view name, std::wstring_view wildcard)
{
    std::size_t inName = 0;
    std::size_t inWildcard = 0;
    // The position after the last star, and the end of the text that the star matches so far. Earlier stars keep what
    // they matched: extending them finds no further match.
    std::size_t behindStar = std::wstring_view::npos;
    std::size_t starEnd = 0;
    while (inName < name.size())
    {
        const std::wstring_view rest = wildcard.substr(inWildcard);
        if (rest.starts_with(L'*'))
        {
            behindStar = ++inWildcard;
            starEnd = inName;
        }
        else if (rest.starts_with(name[inName]) || (rest.starts_with(L'?') && !isLineEnd(name[inName])))
        {
            ++inName;
            ++inWildcard;
        }
        else
        {
            // Extends the last star by one character.
            if (behindStar == std::wstring_view::npos || isLineEnd(name[starEnd]))
            {
                return false;
            }
            inName = ++starEnd;
            inWildcard = behindStar;
        }
    }
    return wildcard.find_first_not_of(L'*', inWildcard) == std::wstring_view::npos;
}
