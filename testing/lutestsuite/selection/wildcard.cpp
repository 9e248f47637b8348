#include "testing/lutestsuite/selection/wildcard.h"

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
    // "?" and "*" are no longer special once they are replaced, and "." is escaped by then: one pass suffices.
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

bool LuTestSuite::MatchesWildcard(std::wstring_view name, std::wstring_view wildcard)
{
    std::size_t inName = 0;
    std::size_t inWildcard = 0;
    // Behind the last star, and where in the name its text ends so far. Earlier stars never need more than they have.
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
            // The last star takes one character more.
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
