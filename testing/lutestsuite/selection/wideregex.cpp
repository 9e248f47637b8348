#include "testing/lutestsuite/selection/wideregex.h"

#include <locale>
#include <type_traits>

namespace
{

using LuTestSuite::CStackLimit;

/// Gives only ASCII characters a class, a letter case and a meaning as operators. Otherwise the engine, which narrows
/// the characters of an expression, would treat many wide characters as operators on Windows.
class CAsciiCharacters : public std::ctype<wchar_t>
{
public:
    /// With a limit, each character read from an expression checks the stack.
    explicit CAsciiCharacters(const CStackLimit* limit) : m_limit(limit) {}

protected:
    bool do_is(mask classes, wchar_t character) const override
    {
        return isAscii(character) && m_narrow.is(classes, static_cast<char>(character));
    }

    wchar_t do_tolower(wchar_t character) const override
    {
        return isAscii(character) ? static_cast<wchar_t>(m_narrow.tolower(static_cast<char>(character))) : character;
    }

    const wchar_t* do_tolower(wchar_t* begin, const wchar_t* end) const override
    {
        for (; begin != end; ++begin)
        {
            *begin = do_tolower(*begin);
        }
        return end;
    }

    char do_narrow(wchar_t character, char substitute) const override
    {
        if (m_limit != nullptr)
        {
            m_limit->Check();
        }
        return isAscii(character) ? static_cast<char>(character) : substitute;
    }

private:
    static bool isAscii(wchar_t character) { return static_cast<std::make_unsigned_t<wchar_t>>(character) < 128; }

    const std::ctype<char>& m_narrow = std::use_facet<std::ctype<char>>(std::locale::classic());
    const CStackLimit* m_limit;
};

} // namespace

std::wregex LuTestSuite::MakeWideRegex(const std::wstring& source, const CStackLimit* limit)
{
    std::wregex expression;
    expression.imbue(std::locale(std::locale::classic(), new CAsciiCharacters(limit)));
    expression.assign(source, std::regex_constants::ECMAScript);
    return expression;
}
