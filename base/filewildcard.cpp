#include "base/filewildcard.h"

#include <algorithm>

namespace LbFileWildcard
{

namespace
{

bool matchesCharacter(wchar_t character, wchar_t inWildcard)
{
    return inWildcard == L'?' || inWildcard == character;
}

/// True if the name contains the parts between the stars of the wildcard, in their order.
bool containsParts(std::wstring_view name, std::wstring_view wildcard)
{
    while (!wildcard.empty())
    {
        const std::wstring_view part = wildcard.substr(0, wildcard.find(L'*'));
        wildcard.remove_prefix(std::min(part.size() + 1, wildcard.size()));
        // The earliest match leaves the most text for the parts that follow.
        const auto place = std::search(name.begin(), name.end(), part.begin(), part.end(), matchesCharacter);
        if (place == name.end() && !part.empty())
        {
            return false;
        }
        name.remove_prefix(static_cast<std::size_t>(place - name.begin()) + part.size());
    }
    return true;
}

} // namespace

bool Matches(std::wstring_view name, std::wstring_view wildcard)
{
    const std::size_t firstStar = wildcard.find(L'*');
    if (firstStar == std::wstring_view::npos)
    {
        return std::ranges::equal(name, wildcard, matchesCharacter);
    }
    const std::size_t lastStar = wildcard.rfind(L'*');
    const std::wstring_view begin = wildcard.substr(0, firstStar);
    const std::wstring_view end = wildcard.substr(lastStar + 1);
    if (name.size() < begin.size() + end.size())
    {
        return false;
    }
    // Most wildcards are one star and an ending, so comparing the ending first rejects most names at once.
    const std::wstring_view rest = name.substr(begin.size(), name.size() - begin.size() - end.size());
    return std::ranges::equal(name.substr(name.size() - end.size()), end, matchesCharacter) &&
           std::ranges::equal(name.substr(0, begin.size()), begin, matchesCharacter) &&
           containsParts(rest, wildcard.substr(firstStar, lastStar - firstStar));
}

} // namespace LbFileWildcard
