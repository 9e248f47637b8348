#include "base/formatnumber.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <limits>
#include <optional>
#include <span>
#include <string_view>
#include <type_traits>

#include "base/os/numberlocale.h"

namespace
{

using LbPrintf::EKind;
using LbPrintf::ELength;
using LbPrintf::SConversion;
using LbPrintf::SNumberArgument;

/// The parts of a formatted number, in the order of output.
struct SNumber
{
    std::string_view sign;
    std::string_view base; ///< "0x", "0X" or empty
    std::size_t zeros = 0;
    std::string_view digits;
    bool hasFinalPoint = false; ///< a point follows the digits, which contain no point
    std::size_t finalZeros = 0;
    std::string_view exponent;
    bool mayPadByZeros = true;

    std::size_t GetLength() const
    {
        return sign.size() + base.size() + zeros + digits.size() + (hasFinalPoint ? 1 : 0) + finalZeros +
               exponent.size();
    }
};

std::string_view getSign(const SConversion& conversion, bool isNegative)
{
    return isNegative ? "-" : conversion.plus ? "+" : conversion.blank ? " " : "";
}

void toUpperCase(std::span<char> text)
{
    std::transform(text.begin(), text.end(), text.begin(), [](char character) {
        return character >= 'a' && character <= 'z' ? static_cast<char>(character - 'a' + 'A') : character;
    });
}

/// Formats the digits of one argument, and owns their memory.
class CNumberWriter
{
public:
    explicit CNumberWriter(const SConversion& conversion) : m_conversion(conversion) {}

    SNumber Write(const SNumberArgument& argument)
    {
        switch (argument.type.kind)
        {
        case EKind::Floating:
            return argument.type.size > sizeof(double) ? writeFloating(argument.floating)
                                                       : writeFloating(static_cast<double>(argument.floating));
        default:
            return m_conversion.type == L'p' ? writeAddress(argument.address) : writeInteger(argument);
        }
    }

private:
    bool isUpperCase() const { return m_conversion.type < L'a'; }
    wchar_t getLowerType() const
    {
        return isUpperCase() ? static_cast<wchar_t>(m_conversion.type + 32) : m_conversion.type;
    }

    SNumber writeAddress(const void* address)
    {
        SNumber number;
        number.digits = writeDigits(reinterpret_cast<std::uintptr_t>(address), 16, true);
        number.zeros = 2 * sizeof(void*) - number.digits.size();
        return number;
    }

    SNumber writeInteger(const SNumberArgument& argument)
    {
        const unsigned unused = 64 - getBitCount(argument.type.size);
        const std::uint64_t bits = argument.bits << unused;
        SNumber number;
        if (m_conversion.IsOneOf(L"di"))
        {
            const std::int64_t value = static_cast<std::int64_t>(bits) >> unused;
            const auto magnitude = static_cast<std::uint64_t>(value);
            number.sign = getSign(m_conversion, value < 0);
            setDigits(number, value < 0 ? 0 - magnitude : magnitude, 10);
            return number;
        }
        const std::uint64_t value = bits >> unused;
        const bool isHexadecimal = getLowerType() == L'x';
        setDigits(number, value, isHexadecimal ? 16 : m_conversion.type == L'o' ? 8 : 10);
        if (m_conversion.alternate && isHexadecimal && value != 0)
        {
            number.base = isUpperCase() ? "0X" : "0x";
        }
        if (m_conversion.alternate && m_conversion.type == L'o' && number.zeros == 0 && !number.digits.starts_with('0'))
        {
            number.zeros = 1;
        }
        return number;
    }

    /// How many bits of an integer of `size` bytes are printed. C widens smaller arguments to 32 bits.
    unsigned getBitCount(std::size_t size) const
    {
        switch (m_conversion.length)
        {
        case ELength::Char:
            return 8;
        case ELength::Short:
            return 16;
        default:
            return size <= sizeof(std::int32_t) ? 32 : 64;
        }
    }

    void setDigits(SNumber& number, std::uint64_t magnitude, int base)
    {
        const bool hasPrecision = m_conversion.precision != SConversion::sc_NoPrecision;
        if (magnitude != 0 || m_conversion.precision != 0)
        {
            number.digits = writeDigits(magnitude, base, isUpperCase());
        }
        const auto smallest = static_cast<std::size_t>(hasPrecision ? m_conversion.precision : 0);
        number.zeros = smallest > number.digits.size() ? smallest - number.digits.size() : 0;
        number.mayPadByZeros = !hasPrecision;
    }

    std::string_view writeDigits(std::uint64_t magnitude, int base, bool inUpperCase)
    {
        char* end = std::to_chars(m_buffer.begin(), m_buffer.end(), magnitude, base).ptr;
        return finish(m_buffer.begin(), end, inUpperCase);
    }

    static std::string_view finish(char* begin, char* end, bool inUpperCase)
    {
        const auto length = static_cast<std::size_t>(end - begin);
        if (inUpperCase)
        {
            toUpperCase({begin, length});
        }
        return {begin, length};
    }

    template<typename T>
    SNumber writeFloating(T value)
    {
        SNumber number;
        number.sign = getSign(m_conversion, std::signbit(value));
        if (!std::isfinite(value))
        {
            number.digits = std::isnan(value) ? (isUpperCase() ? "NAN" : "nan") : (isUpperCase() ? "INF" : "inf");
            number.mayPadByZeros = false;
            return number;
        }
        const std::string_view text = writeFiniteDigits(std::fabs(value));
        const bool isHexadecimal = getLowerType() == L'a';
        const std::size_t exponent = std::min(text.find_first_of(isHexadecimal ? "pP" : "eE"), text.size());
        number.base = !isHexadecimal ? "" : isUpperCase() ? "0X" : "0x";
        number.digits = text.substr(0, exponent);
        number.exponent = text.substr(exponent);
        number.hasFinalPoint = m_conversion.alternate && number.digits.find('.') == std::string_view::npos;
        number.finalZeros = getFinalZeros<T>(number.digits);
        return number;
    }

    /// No number has more digits than this after its point.
    template<typename T>
    static constexpr std::int64_t sc_MostDigits =
        std::numeric_limits<T>::digits - std::numeric_limits<T>::min_exponent + 1;

    /// The digits, with point and exponent. At most sc_MostDigits of them follow the point; all others would be 0.
    template<typename T>
    std::string_view writeFiniteDigits(T value)
    {
        const bool hasPrecision = m_conversion.precision != SConversion::sc_NoPrecision;
        const std::int64_t precision = hasPrecision ? m_conversion.precision : 6;
        const auto digits = static_cast<int>(std::min(precision, sc_MostDigits<T>));
        constexpr std::size_t c_PointAndExponent = 16;
        const std::size_t size =
            static_cast<std::size_t>(std::numeric_limits<T>::max_exponent10 + digits) + c_PointAndExponent;
        std::span<char> buffer(m_buffer);
        if (size > buffer.size())
        {
            m_large.resize(size);
            buffer = m_large;
        }
        char* begin = buffer.data();
        char* limit = begin + buffer.size();
        const bool isExact = getLowerType() == L'a' && !hasPrecision;
        // The standard library passes long doubles with a precision on to the C library.
        std::optional<LbOs::CPlainNumbers> plainNumbers;
        if constexpr (std::is_same_v<T, long double>)
        {
            plainNumbers.emplace();
        }
        char* end = isExact ? std::to_chars(begin, limit, value, std::chars_format::hex).ptr
                            : std::to_chars(begin, limit, value, getCharsFormat(), digits).ptr;
        return finish(begin, end, isUpperCase());
    }

    std::chars_format getCharsFormat() const
    {
        switch (getLowerType())
        {
        case L'f':
            return std::chars_format::fixed;
        case L'e':
            return std::chars_format::scientific;
        case L'a':
            return std::chars_format::hex;
        default:
            return std::chars_format::general;
        }
    }

    /// The number of zeros that the precision requires after the digits. %g prints such zeros only in the "#" form; its
    /// precision counts significant digits.
    template<typename T>
    std::size_t getFinalZeros(std::string_view digits) const
    {
        if (getLowerType() != L'g')
        {
            return static_cast<std::size_t>(std::max<std::int64_t>(m_conversion.precision - sc_MostDigits<T>, 0));
        }
        if (!m_conversion.alternate)
        {
            return 0;
        }
        // For the value zero, the digit before the point counts as significant.
        const std::size_t first = digits.find_first_of("123456789");
        const std::string_view significant = digits.substr(first == std::string_view::npos ? 0 : first);
        const std::int64_t present =
            std::count_if(significant.begin(), significant.end(), [](char digit) { return digit != '.'; });
        const bool hasPrecision = m_conversion.precision != SConversion::sc_NoPrecision;
        const std::int64_t wanted = hasPrecision ? std::max<std::int64_t>(m_conversion.precision, 1) : 6;
        return static_cast<std::size_t>(std::max<std::int64_t>(wanted - present, 0));
    }

    const SConversion& m_conversion;
    /// Large enough for all numbers except long doubles and numbers with a large precision.
    std::array<char, 400> m_buffer;
    std::string m_large;
};

} // namespace

void LbPrintf::AppendNumber(std::wstring& result, const SConversion& conversion, const SNumberArgument& argument)
{
    CNumberWriter writer(conversion);
    const SNumber number = writer.Write(argument);
    const std::size_t padding = conversion.GetPadding(number.GetLength());
    const bool byZeros = conversion.zero && !conversion.left && number.mayPadByZeros;
    result.append(byZeros || conversion.left ? 0 : padding, L' ');
    result.append(number.sign.begin(), number.sign.end());
    result.append(number.base.begin(), number.base.end());
    result.append(number.zeros + (byZeros ? padding : 0), L'0');
    result.append(number.digits.begin(), number.digits.end());
    result.append(number.hasFinalPoint ? 1 : 0, L'.');
    result.append(number.finalZeros, L'0');
    result.append(number.exponent.begin(), number.exponent.end());
    result.append(conversion.left ? padding : 0, L' ');
}
