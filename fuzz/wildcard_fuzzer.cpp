/// Checks for any wildcard and name that the matcher agrees with the regular expression for the wildcard.
#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <string>

#include "fuzz/fuzzing.h"
#include "testing/lutestsuite/selection/wideregex.h"
#include "testing/lutestsuite/selection/wildcard.h"

namespace
{

/// The standard library is too slow for longer texts.
constexpr std::size_t c_LongestText = 7;

/// Few distinct characters, so that many texts match.
wchar_t getCharacter(std::uint8_t byte)
{
    constexpr std::wstring_view c_Characters = L"ab*?.\n\r\u2028\u2029\\+(";
    return c_Characters[byte % c_Characters.size()];
}

std::wstring getText(const std::uint8_t* data, std::size_t size)
{
    std::wstring text;
    std::transform(data, data + std::min(size, c_LongestText), std::back_inserter(text), getCharacter);
    return text;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::wstring wildcard = getText(data, size / 2);
    const std::wstring name = getText(data + size / 2, size - size / 2);
    const std::wregex expression = LuTestSuite::MakeWideRegex(LuTestSuite::GetWildcardExpression(wildcard));
    const bool isMatch = std::regex_match(name, expression);
    Fuzzing::Check(isMatch == LuTestSuite::MatchesWildcard(name, wildcard));
    if (LuTestSuite::GetWildcardKind(wildcard) == LuTestSuite::EWildcardKind::Plain)
    {
        Fuzzing::Check(isMatch == (name == wildcard));
    }
    return 0;
}
