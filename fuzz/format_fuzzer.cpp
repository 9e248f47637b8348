/// Takes any text as a format, with any arguments. Checks that the format check and the formatter agree, that no text
/// is read beyond its end, and that numbers print as the C library prints them.
///
/// The input is text: the format in the first line, then a line for each argument. The first character of such a line
/// is the type of the argument (see takeArgument), the rest is its value.
#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cwchar>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <type_traits>
#include <variant>
#include <vector>

#include "base/lbencoding.h"
#include "base/lbexception.h"
#include "base/lbformat.h"
#include "fuzz/fuzzing.h"

namespace
{

using Fuzzing::Check;
using Fuzzing::TakeLine;

/// Wide enough for all padding that matters, and narrow enough to be fast.
constexpr std::int64_t c_LargestCount = 3000;
/// Holds the longest long double with width and precision.
constexpr std::size_t c_BufferSize = 16'384;

using Value = std::variant<int, short, unsigned, long long, double, long double, wchar_t, char, std::vector<wchar_t>,
                           std::vector<char>, std::wstring, std::string, const void*>;

Value takeArgument(std::string_view line)
{
    const char type = line.empty() ? 'd' : line.front();
    const std::string text(line.substr(line.empty() ? 0 : 1));
    const std::wstring wide = LbEncoding::FromUtf8(text);
    const long long number = std::strtoll(text.c_str(), nullptr, 0);
    switch (type)
    {
    case 'h':
        return static_cast<short>(number);
    case 'u':
        return static_cast<unsigned>(number);
    case 'l':
        return number;
    case 'f':
        return std::strtod(text.c_str(), nullptr);
    case 'L':
        return std::strtold(text.c_str(), nullptr);
    case 'c':
        return wide.empty() ? L'\0' : wide.front();
    case 'C':
        return text.empty() ? '\0' : text.front();
    case 's': // without terminating zero, so that a sanitizer detects reading beyond the end
        return std::vector<wchar_t>(wide.begin(), wide.end());
    case 'S':
        return std::vector<char>(text.begin(), text.end());
    case 'z':
        return std::wstring(wide.c_str());
    case 'Z':
        return std::string(text.c_str());
    case 'p':
        return reinterpret_cast<const void*>(number);
    default:
        return static_cast<int>(number);
    }
}

LbFormatArgument pack(const Value& value)
{
    return std::visit(
        [](const auto& held) {
            using T = std::decay_t<decltype(held)>;
            if constexpr (std::is_same_v<T, std::vector<wchar_t>>)
            {
                return LbFormatArgument(std::wstring_view(held.data(), held.size()));
            }
            else if constexpr (std::is_same_v<T, std::vector<char>>)
            {
                return LbFormatArgument(std::string_view(held.data(), held.size()));
            }
            else if constexpr (std::is_same_v<T, std::wstring> || std::is_same_v<T, std::string>)
            {
                return LbFormatArgument(held.c_str());
            }
            else
            {
                return LbFormatArgument(held);
            }
        },
        value);
}

/// One conversion of a valid format.
struct SPiece
{
    std::wstring format;
    LbPrintf::SConversion conversion;
    std::vector<int> counts;
};

/// Takes the conversion at the beginning of a valid format. It is the shortest prefix that is a conversion.
SPiece takePiece(std::wstring_view& format)
{
    for (std::size_t length = 2; length <= format.size(); ++length)
    {
        SPiece piece;
        LbPrintf::CParser parser(format.substr(0, length));
        if (parser.TakeConversion(piece.conversion) == LbPrintf::EMistake::None)
        {
            piece.format = format.substr(0, length);
            format.remove_prefix(length);
            return piece;
        }
    }
    std::abort();
}

template<typename T>
std::wstring printByLibrary(const SPiece& piece, T value)
{
    static std::wstring s_buffer(c_BufferSize, L'\0');
    const wchar_t* format = piece.format.c_str();
    int length = -1;
    switch (piece.counts.size())
    {
    case 0:
        length = std::swprintf(s_buffer.data(), s_buffer.size(), format, value);
        break;
    case 1:
        length = std::swprintf(s_buffer.data(), s_buffer.size(), format, piece.counts[0], value);
        break;
    default:
        length = std::swprintf(s_buffer.data(), s_buffer.size(), format, piece.counts[0], piece.counts[1], value);
        break;
    }
    Check(length >= 0);
    return s_buffer.substr(0, static_cast<std::size_t>(length));
}

/// True if the conversion has the length modifier that C requires for an argument of this type.
template<typename T>
bool hasLengthOf(const LbPrintf::SConversion& conversion, std::wstring_view format)
{
    const std::wstring_view marks = format.substr(0, format.size() - 1);
    switch (conversion.length)
    {
    case LbPrintf::ELength::None:
        return std::is_same_v<T, int> || std::is_same_v<T, unsigned> || std::is_same_v<T, short> ||
               std::is_same_v<T, double>;
    case LbPrintf::ELength::Char:
    case LbPrintf::ELength::Short:
        return std::is_same_v<T, int> || std::is_same_v<T, unsigned> || std::is_same_v<T, short>;
    case LbPrintf::ELength::Long:
        return std::is_same_v<T, double>;
    case LbPrintf::ELength::LongDouble:
        return std::is_same_v<T, long double>;
    default:
        return std::is_same_v<T, long long> && marks.ends_with(L"ll");
    }
}

void compareWithLibrary(const SPiece& piece, const Value& value, const std::wstring& text)
{
    const bool isUndefined = piece.conversion.alternate && piece.conversion.IsOneOf(L"diu");
    std::visit(
        [&](const auto& held) {
            using T = std::decay_t<decltype(held)>;
            if constexpr (std::is_arithmetic_v<T> && !std::is_same_v<T, wchar_t> && !std::is_same_v<T, char>)
            {
                if (!isUndefined && piece.conversion.type != L'c' && piece.conversion.type != L'C' &&
                    hasLengthOf<T>(piece.conversion, piece.format))
                {
                    Check(printByLibrary(piece, held) == text);
                }
            }
        },
        value);
}

/// Prints a valid format piece by piece.
class CPiecewise
{
public:
    CPiecewise(const std::vector<Value>& values, const std::vector<LbFormatArgument>& arguments)
        : m_values(values), m_arguments(arguments)
    {
    }

    /// Empty if printing would take too long.
    std::optional<std::wstring> Print(std::wstring_view format)
    {
        std::wstring result;
        while (!format.empty())
        {
            const std::wstring_view literal = format.substr(0, format.find(L'%'));
            result += literal;
            format.remove_prefix(literal.size());
            if (!format.empty())
            {
                SPiece piece = takePiece(format);
                const std::size_t first = m_next;
                if (!takeCounts(piece))
                {
                    return std::nullopt;
                }
                result += print(piece, first);
            }
        }
        Check(m_next == m_arguments.size());
        return result;
    }

private:
    bool takeCounts(SPiece& piece)
    {
        bool isSmall = piece.conversion.width <= c_LargestCount && piece.conversion.precision <= c_LargestCount;
        for (const bool isCount : {piece.conversion.hasWidthArgument, piece.conversion.hasPrecisionArgument})
        {
            if (isCount)
            {
                piece.counts.push_back(static_cast<int>(m_arguments.at(m_next++).GetBits()));
                isSmall = isSmall && std::abs(std::int64_t{piece.counts.back()}) <= c_LargestCount;
            }
        }
        return isSmall;
    }

    std::wstring print(const SPiece& piece, std::size_t first)
    {
        const bool hasValue = piece.conversion.type != L'%';
        const std::size_t value = m_next;
        m_next += hasValue ? 1 : 0;
        const std::span<const LbFormatArgument> used(m_arguments.data() + first, m_next - first);
        std::wstring text = LbFormatArguments(LbFormatSource(piece.format), used);
        if (hasValue)
        {
            compareWithLibrary(piece, m_values.at(value), text);
        }
        return text;
    }

    const std::vector<Value>& m_values;
    const std::vector<LbFormatArgument>& m_arguments;
    std::size_t m_next = 0;
};

/// The text that a format made at run time prints; empty if that throws.
std::optional<std::wstring> print(const LbFormatSource& format, std::span<const LbFormatArgument> arguments)
{
    try
    {
        return LbFormatArguments(format, arguments);
    }
    catch (const LbException&)
    {
        return std::nullopt;
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    std::string_view input = Fuzzing::GetText(data, size);
    const std::wstring format = LbEncoding::FromUtf8(TakeLine(input));
    std::vector<Value> values;
    while (!input.empty())
    {
        values.push_back(takeArgument(TakeLine(input)));
    }
    std::vector<LbFormatArgument> arguments;
    for (const Value& value : values)
    {
        arguments.push_back(pack(value));
    }
    const LbRuntimeFormat source(format);
    if (!LbDescribeFormatMistake(source.GetSource(), arguments).empty())
    {
        Check(!print(source.GetSource(), arguments));
        return 0;
    }
    if (const auto pieces = CPiecewise(values, arguments).Print(format))
    {
        Check(print(source.GetSource(), arguments) == pieces);
    }
    return 0;
}
