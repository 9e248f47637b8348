#include "base/lbformat.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstddef>
#include <iterator>

#include "base/lbencoding.h"
#include "base/lbexception.h"

namespace
{

constexpr bool c_WideIsUtf16 = sizeof(wchar_t) == 2;
/// A larger width or precision can only be a mistake.
constexpr int c_LargestCount = 1'000'000;
/// Digits of the largest double in front of its point, with some room for sign, point and exponent.
constexpr std::size_t c_LongestInteger = 330;

constexpr bool isLowSurrogate(wchar_t unit)
{
    return c_WideIsUtf16 && (static_cast<unsigned>(unit) & 0xFC00U) == 0xDC00U;
}

/// Characters, not code units, so that columns are the same on all platforms.
std::size_t countCharacters(std::wstring_view text)
{
    return c_WideIsUtf16
               ? text.size() - static_cast<std::size_t>(std::count_if(text.begin(), text.end(), isLowSurrogate))
               : text.size();
}

std::wstring_view cutToCharacters(std::wstring_view text, std::size_t count)
{
    std::size_t length = 0;
    for (; length < text.size() && (count > 0 || isLowSurrogate(text[length])); ++length)
    {
        if (!isLowSurrogate(text[length]))
        {
            --count;
        }
    }
    return text.substr(0, length);
}

struct SConversion
{
    bool left = false;
    bool zero = false;
    bool plus = false;
    bool space = false;
    bool alternate = false;
    int width = 0;
    int precision = -1; ///< none given
    wchar_t type = 0;
};

/// One run over one format.
class CFormatter
{
public:
    CFormatter(std::wstring_view format, std::span<const LbFormatArgument> arguments)
        : m_format(format), m_arguments(arguments)
    {
        m_result.reserve(estimateSize());
    }

    std::wstring Run()
    {
        while (m_position < m_format.size())
        {
            const std::size_t percent = std::min(m_format.find(L'%', m_position), m_format.size());
            m_result.append(m_format.substr(m_position, percent - m_position));
            m_position = percent;
            if (percent < m_format.size())
            {
                ++m_position;
                convert();
            }
        }
        if (m_nextArgument < m_arguments.size())
        {
            fail(L"zu viele Argumente");
        }
        return std::move(m_result);
    }

private:
    std::size_t estimateSize() const
    {
        std::size_t size = m_format.size();
        for (const LbFormatArgument& argument : m_arguments)
        {
            size += argument.GetWide().size() + argument.GetNarrow().size() + (argument.GetSize() > 0 ? 24 : 0);
        }
        return size;
    }

    void convert()
    {
        if (peek() == L'%')
        {
            ++m_position;
            m_result.push_back(L'%');
            return;
        }
        const SConversion conversion = parse();
        if (m_nextArgument >= m_arguments.size())
        {
            fail(L"zu wenige Argumente");
        }
        append(conversion, m_arguments[m_nextArgument++]);
    }

    wchar_t peek() const { return m_position < m_format.size() ? m_format[m_position] : L'\0'; }

    SConversion parse()
    {
        SConversion conversion;
        while (setFlag(conversion, peek()))
        {
            ++m_position;
        }
        conversion.width = parseCount();
        if (peek() == L'.')
        {
            ++m_position;
            conversion.precision = parseCount();
        }
        skipLengthMarks();
        conversion.type = peek();
        if (conversion.type == 0 || std::wstring_view(L"diuxXcsSpfeg").find(conversion.type) == std::wstring_view::npos)
        {
            fail(L"unbekannte Umwandlung");
        }
        ++m_position;
        return conversion;
    }

    static bool setFlag(SConversion& conversion, wchar_t character)
    {
        switch (character)
        {
        case L'-':
            return conversion.left = true;
        case L'0':
            return conversion.zero = true;
        case L'+':
            return conversion.plus = true;
        case L' ':
            return conversion.space = true;
        case L'#':
            return conversion.alternate = true;
        default:
            return false;
        }
    }

    int parseCount()
    {
        int count = 0;
        for (; peek() >= L'0' && peek() <= L'9'; ++m_position)
        {
            count = count * 10 + (peek() - L'0');
            if (count > c_LargestCount)
            {
                fail(L"unzulässige Breite");
            }
        }
        return count;
    }

    void skipLengthMarks()
    {
        const std::wstring_view rest = m_format.substr(m_position);
        if (rest.starts_with(L"I32") || rest.starts_with(L"I64"))
        {
            m_position += 3;
            return;
        }
        while (peek() != 0 && std::wstring_view(L"hlwzjt").find(peek()) != std::wstring_view::npos)
        {
            ++m_position;
        }
    }

    void append(const SConversion& conversion, const LbFormatArgument& argument)
    {
        switch (conversion.type)
        {
        case L's':
            require(argument, LbFormatArgument::EKind::Wide);
            appendText(conversion, argument.GetWide());
            break;
        case L'S':
            require(argument, LbFormatArgument::EKind::Narrow);
            appendText(conversion, LbEncoding::FromUtf8(argument.GetNarrow()));
            break;
        case L'c':
            appendCharacter(conversion, argument);
            break;
        case L'p':
            appendPointer(conversion, argument);
            break;
        case L'f':
        case L'e':
        case L'g':
            require(argument, LbFormatArgument::EKind::Floating);
            appendFloating(conversion, argument.GetFloating());
            break;
        default:
            appendInteger(conversion, argument);
            break;
        }
    }

    void require(const LbFormatArgument& argument, LbFormatArgument::EKind kind) const
    {
        if (argument.GetKind() != kind)
        {
            fail(L"unpassendes Argument");
        }
    }

    void appendText(const SConversion& conversion, std::wstring_view text)
    {
        if (conversion.precision >= 0)
        {
            text = cutToCharacters(text, static_cast<std::size_t>(conversion.precision));
        }
        appendPadded(conversion, text);
    }

    void appendPadded(const SConversion& conversion, std::wstring_view text)
    {
        const std::size_t padding = getPadding(conversion, conversion.width > 0 ? countCharacters(text) : 0);
        if (!conversion.left)
        {
            m_result.append(padding, L' ');
        }
        m_result.append(text);
        if (conversion.left)
        {
            m_result.append(padding, L' ');
        }
    }

    static std::size_t getPadding(const SConversion& conversion, std::size_t length)
    {
        const auto width = static_cast<std::size_t>(conversion.width);
        return width > length ? width - length : 0;
    }

    void appendCharacter(const SConversion& conversion, const LbFormatArgument& argument)
    {
        require(argument, LbFormatArgument::EKind::Character);
        const auto character = static_cast<wchar_t>(argument.GetBits());
        appendPadded(conversion, std::wstring_view(&character, 1));
    }

    void appendPointer(const SConversion& conversion, const LbFormatArgument& argument)
    {
        require(argument, LbFormatArgument::EKind::Pointer);
        SConversion hexadecimal = conversion;
        hexadecimal.alternate = false;
        hexadecimal.precision = 2 * sizeof(void*);
        hexadecimal.type = L'X';
        appendNumber(hexadecimal, false, argument.GetBits());
    }

    void appendInteger(const SConversion& conversion, const LbFormatArgument& argument)
    {
        const LbFormatArgument::EKind kind = argument.GetKind();
        if (kind != LbFormatArgument::EKind::Signed && kind != LbFormatArgument::EKind::Unsigned &&
            kind != LbFormatArgument::EKind::Character)
        {
            fail(L"unpassendes Argument");
        }
        // Arguments of less than 32 bits count as 32 bits wide, as C promotes them.
        const bool isShort = argument.GetSize() <= sizeof(std::int32_t);
        const std::uint64_t bits = argument.GetBits();
        if (conversion.type == L'd' || conversion.type == L'i')
        {
            const std::int64_t value =
                isShort ? static_cast<std::int32_t>(static_cast<std::uint32_t>(bits)) : static_cast<std::int64_t>(bits);
            const std::uint64_t magnitude =
                value < 0 ? 0 - static_cast<std::uint64_t>(value) : static_cast<std::uint64_t>(value);
            appendNumber(conversion, value < 0, magnitude);
        }
        else
        {
            appendNumber(conversion, false, isShort ? static_cast<std::uint32_t>(bits) : bits);
        }
    }

    void appendNumber(const SConversion& conversion, bool isNegative, std::uint64_t magnitude)
    {
        const bool isHexadecimal = conversion.type == L'x' || conversion.type == L'X';
        std::array<char, 24> digits{};
        const char* end = std::to_chars(digits.begin(), digits.end(), magnitude, isHexadecimal ? 16 : 10).ptr;
        std::string_view text(digits.begin(), static_cast<std::size_t>(end - digits.begin()));
        if (conversion.type == L'X')
        {
            std::transform(digits.begin(), digits.end(), digits.begin(), [](char digit) {
                return digit >= 'a' && digit <= 'f' ? static_cast<char>(digit - 'a' + 'A') : digit;
            });
        }
        if (magnitude == 0 && conversion.precision == 0)
        {
            text = {};
        }
        const std::size_t smallest = conversion.precision > 0 ? static_cast<std::size_t>(conversion.precision) : 0;
        const std::size_t zeros = smallest > text.size() ? smallest - text.size() : 0;
        appendSigned(conversion, getPrefix(conversion, isNegative, magnitude), zeros, text, conversion.precision < 0);
    }

    static std::string_view getPrefix(const SConversion& conversion, bool isNegative, std::uint64_t magnitude)
    {
        switch (conversion.type)
        {
        case L'x':
            return conversion.alternate && magnitude != 0 ? "0x" : "";
        case L'X':
            return conversion.alternate && magnitude != 0 ? "0X" : "";
        case L'u':
            return "";
        default:
            return getSign(conversion, isNegative);
        }
    }

    static std::string_view getSign(const SConversion& conversion, bool isNegative)
    {
        if (isNegative)
        {
            return "-";
        }
        if (conversion.plus)
        {
            return "+";
        }
        return conversion.space ? " " : "";
    }

    /// Padding, sign or base, zeros, digits.
    void appendSigned(const SConversion& conversion, std::string_view prefix, std::size_t zeros,
                      std::string_view digits, bool mayPadByZeros)
    {
        std::size_t padding = getPadding(conversion, prefix.size() + zeros + digits.size());
        if (conversion.zero && !conversion.left && mayPadByZeros)
        {
            zeros += padding;
            padding = 0;
        }
        if (!conversion.left)
        {
            m_result.append(padding, L' ');
        }
        m_result.append(prefix.begin(), prefix.end());
        m_result.append(zeros, L'0');
        m_result.append(digits.begin(), digits.end());
        if (conversion.left)
        {
            m_result.append(padding, L' ');
        }
    }

    void appendFloating(const SConversion& conversion, double value)
    {
        const std::string_view sign = getSign(conversion, std::signbit(value));
        if (!std::isfinite(value))
        {
            appendSigned(conversion, sign, 0, std::isnan(value) ? "nan" : "inf", false);
            return;
        }
        const int precision = conversion.precision < 0 ? 6 : conversion.precision;
        std::array<char, c_LongestInteger + 64> fixed;
        std::string large;
        std::span<char> buffer(fixed);
        if (precision > 60)
        {
            large.resize(c_LongestInteger + static_cast<std::size_t>(precision));
            buffer = large;
        }
        const char* end = std::to_chars(buffer.data(), buffer.data() + buffer.size(), std::fabs(value),
                                        getCharsFormat(conversion.type), precision)
                              .ptr;
        const std::string_view digits(buffer.data(), static_cast<std::size_t>(end - buffer.data()));
        if (conversion.alternate)
        {
            appendSigned(conversion, sign, 0, withPoint(digits, conversion.type, precision), true);
        }
        else
        {
            appendSigned(conversion, sign, 0, digits, true);
        }
    }

    static std::chars_format getCharsFormat(wchar_t type)
    {
        switch (type)
        {
        case L'f':
            return std::chars_format::fixed;
        case L'e':
            return std::chars_format::scientific;
        default:
            return std::chars_format::general;
        }
    }

    /// The "#" form: always a point, and for %g all significant digits.
    static std::string withPoint(std::string_view digits, wchar_t type, int precision)
    {
        const std::size_t exponent = std::min(digits.find('e'), digits.size());
        std::string mantissa(digits.substr(0, exponent));
        if (mantissa.find('.') == std::string::npos)
        {
            mantissa.push_back('.');
        }
        if (type == L'g')
        {
            const std::size_t firstSignificant = mantissa.find_first_of("123456789");
            // Of zero the digit in front of the point counts.
            const std::string significant =
                mantissa.substr(firstSignificant == std::string::npos ? 0 : firstSignificant);
            const auto present = static_cast<std::size_t>(
                std::count_if(significant.begin(), significant.end(), [](char digit) { return digit != '.'; }));
            const auto wanted = static_cast<std::size_t>(std::max(precision, 1));
            mantissa.append(wanted > present ? wanted - present : 0, '0');
        }
        return mantissa.append(digits.substr(exponent));
    }

    [[noreturn]] void fail(const wchar_t* reason) const
    {
        std::wstring message = L"Formattext \"";
        message.append(m_format).append(L"\": ").append(reason);
        throw LbException(std::move(message));
    }

    std::wstring_view m_format;
    std::span<const LbFormatArgument> m_arguments;
    std::size_t m_position = 0;
    std::size_t m_nextArgument = 0;
    std::wstring m_result;
};

} // namespace

std::wstring LbFormatArguments(std::wstring_view format, std::span<const LbFormatArgument> arguments)
{
    return CFormatter(format, arguments).Run();
}
