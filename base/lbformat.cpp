#include "base/lbformat.h"

#include <algorithm>
#include <cstdlib>
#include <iterator>
#include <utility>
#include <vector>

#include "base/formatnumber.h"
#include "base/lbencoding.h"
#include "base/lbexception.h"

namespace
{

using LbPrintf::EKind;
using LbPrintf::EMistake;
using LbPrintf::SArgumentType;
using LbPrintf::SConversion;

constexpr bool c_WideIsUtf16 = sizeof(wchar_t) == 2;
constexpr std::size_t c_NoLimit = LbFormatArgument::sc_ZeroTerminated;

constexpr bool isHighSurrogate(wchar_t unit)
{
    return c_WideIsUtf16 && (static_cast<unsigned>(unit) & 0xFC00U) == 0xD800U;
}

constexpr bool isLowSurrogate(wchar_t unit)
{
    return c_WideIsUtf16 && (static_cast<unsigned>(unit) & 0xFC00U) == 0xDC00U;
}

/// Counts characters, not code units, so that columns have the same width on all platforms.
std::size_t countCharacters(std::wstring_view text)
{
    return c_WideIsUtf16
               ? text.size() - static_cast<std::size_t>(std::count_if(text.begin(), text.end(), isLowSurrogate))
               : text.size();
}

/// Number of code units of the first character in a text of at most `length` units. Reads no unit after that character.
std::size_t getCharacterLength(const wchar_t* text, std::size_t length)
{
    return isHighSurrogate(text[0]) && length > 1 && isLowSurrogate(text[1]) ? 2 : 1;
}

std::size_t getCharacterLength(const char* text, std::size_t length)
{
    const auto lead = static_cast<unsigned char>(text[0]);
    const std::size_t expected = lead < 0xC0 ? 1 : lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : 4;
    std::size_t count = 1;
    while (count < expected && count < length && (static_cast<unsigned char>(text[count]) & 0xC0U) == 0x80U)
    {
        ++count;
    }
    return count;
}

/// The first `limit` characters. A text without a known length needs no terminator if it has at least `limit`
/// characters.
template<typename Character>
std::basic_string_view<Character> cutToCharacters(const Character* text, std::size_t length, std::size_t limit)
{
    std::size_t end = 0;
    for (; limit > 0 && end < length && (length != LbFormatArgument::sc_ZeroTerminated || text[end] != 0); --limit)
    {
        end += getCharacterLength(text + end, length - end);
    }
    return {text, end};
}

template<typename Character>
std::basic_string_view<Character> getText(const LbFormatArgument& argument, std::size_t limit)
{
    static constexpr Character c_Null[] = {'(', 'n', 'u', 'l', 'l', ')', 0};
    const auto* text = static_cast<const Character*>(argument.GetAddress());
    const bool isTerminated = argument.GetLength() == LbFormatArgument::sc_ZeroTerminated;
    if (isTerminated && text == nullptr)
    {
        text = c_Null;
    }
    if (limit != c_NoLimit)
    {
        return cutToCharacters(text, argument.GetLength(), limit);
    }
    return isTerminated ? std::basic_string_view<Character>(text)
                        : std::basic_string_view<Character>(text, argument.GetLength());
}

/// The character with this code; U+FFFD if the code is out of range.
std::wstring getCharacter(std::int64_t code)
{
    constexpr std::int64_t c_LastCode = 0x10FFFF;
    constexpr std::int64_t c_FirstPair = 0x10000;
    if (code < 0 || code > c_LastCode)
    {
        return L"\xFFFD";
    }
    if (c_WideIsUtf16 && code >= c_FirstPair)
    {
        const std::int64_t offset = code - c_FirstPair;
        return {static_cast<wchar_t>(0xD800 + offset / 0x400), static_cast<wchar_t>(0xDC00 + offset % 0x400)};
    }
    return std::wstring(1, static_cast<wchar_t>(code));
}

std::wstring getCharacter(const SConversion& conversion, const LbFormatArgument& argument)
{
    const std::uint64_t bits = argument.GetBits();
    const EKind kind = argument.GetType().kind;
    if (kind == EKind::WideCharacter)
    {
        return std::wstring(1, static_cast<wchar_t>(bits));
    }
    if (kind == EKind::NarrowCharacter || !conversion.IsWide())
    {
        const auto byte = static_cast<char>(bits);
        return LbEncoding::FromUtf8({&byte, 1});
    }
    return getCharacter(static_cast<std::int64_t>(bits));
}

LbPrintf::SNumberArgument toNumber(const LbFormatArgument& argument)
{
    return {argument.GetType(), argument.GetBits(), argument.GetFloating(), argument.GetAddress()};
}

/// Applies one format to arguments that match it.
class CFormatter
{
public:
    CFormatter(std::wstring_view format, std::span<const LbFormatArgument> arguments)
        : m_parser(format), m_nextArgument(arguments.begin())
    {
        constexpr std::size_t c_UsualLength = 24;
        m_result.reserve(format.size() + c_UsualLength * arguments.size());
    }

    std::wstring Run()
    {
        m_result.append(m_parser.TakeText());
        while (!m_parser.IsAtEnd())
        {
            SConversion conversion;
            m_parser.TakeConversion(conversion);
            takeCounts(conversion);
            append(conversion);
            m_result.append(m_parser.TakeText());
        }
        return std::move(m_result);
    }

private:
    void takeCounts(SConversion& conversion)
    {
        if (conversion.hasWidthArgument)
        {
            const std::int64_t width = takeCount();
            conversion.left = conversion.left || width < 0;
            conversion.width = std::min(std::abs(width), LbPrintf::c_LargestCount);
        }
        if (conversion.hasPrecisionArgument)
        {
            conversion.precision = std::max(takeCount(), SConversion::sc_NoPrecision);
            // The precision of a text only shortens it.
            if (!conversion.IsOneOf(L"sS"))
            {
                conversion.precision = std::min(conversion.precision, LbPrintf::c_LargestCount);
            }
        }
    }

    std::int64_t takeCount() { return static_cast<std::int32_t>((m_nextArgument++)->GetBits()); }

    void append(const SConversion& conversion)
    {
        switch (conversion.type)
        {
        case L'%':
            m_result.push_back(L'%');
            break;
        case L's':
        case L'S':
            appendText(conversion, *m_nextArgument++);
            break;
        case L'c':
        case L'C':
            appendPadded(conversion, getCharacter(conversion, *m_nextArgument++));
            break;
        default:
            LbPrintf::AppendNumber(m_result, conversion, toNumber(*m_nextArgument++));
            break;
        }
    }

    void appendText(const SConversion& conversion, const LbFormatArgument& argument)
    {
        const bool hasLimit = conversion.precision != SConversion::sc_NoPrecision;
        const std::size_t limit = hasLimit ? static_cast<std::size_t>(conversion.precision) : c_NoLimit;
        if (argument.GetType().kind == EKind::WideText)
        {
            appendPadded(conversion, getText<wchar_t>(argument, limit));
            return;
        }
        const std::wstring text = LbEncoding::FromUtf8(getText<char>(argument, limit));
        // Each invalid byte becomes U+FFFD, so the text may have more characters than `limit`.
        appendPadded(conversion, cutToCharacters(text.data(), text.size(), limit));
    }

    void appendPadded(const SConversion& conversion, std::wstring_view text)
    {
        const std::size_t padding = conversion.GetPadding(conversion.width > 0 ? countCharacters(text) : 0);
        m_result.append(conversion.left ? 0 : padding, L' ');
        m_result.append(text);
        m_result.append(conversion.left ? padding : 0, L' ');
    }

    LbPrintf::CParser m_parser;
    std::span<const LbFormatArgument>::iterator m_nextArgument;
    std::wstring m_result;
};

const wchar_t* getReason(EMistake mistake)
{
    switch (mistake)
    {
    case EMistake::TooFewArguments:
        return L"zu wenige Argumente";
    case EMistake::TooManyArguments:
        return L"zu viele Argumente";
    case EMistake::LengthDoesNotFit:
        return L"unpassende Längenangabe";
    case EMistake::CountTooLarge:
        return L"unzulässige Breite";
    case EMistake::CountIsNoInteger:
        return L"Breite ohne ganzzahliges Argument";
    case EMistake::NarrowTextNeedsHs:
        return L"schmaler Text verlangt %hs";
    case EMistake::WideTextNeedsS:
        return L"breiter Text verlangt %s";
    case EMistake::ArgumentDoesNotFit:
        return L"unpassendes Argument";
    default:
        return L"unbekannte Umwandlung";
    }
}

} // namespace

std::wstring LbDescribeFormatMistake(const LbFormatSource& format, std::span<const LbFormatArgument> arguments)
{
    if (format.IsChecked())
    {
        return {};
    }
    std::vector<SArgumentType> types;
    std::transform(arguments.begin(), arguments.end(), std::back_inserter(types),
                   [](const LbFormatArgument& argument) { return argument.GetType(); });
    const EMistake mistake = LbPrintf::FindMistake(format.GetText(), types);
    const LbSourceLocation& place = format.GetPlace();
    return mistake == EMistake::None
               ? std::wstring()
               : LbFormat(L"%S, Zeile %u: Formattext mit Fehler (%s): \"%s\"", place.GetFileName(), place.GetLine(),
                          getReason(mistake), format.GetText());
}

std::wstring LbFormatArguments(const LbFormatSource& format, std::span<const LbFormatArgument> arguments)
{
    std::wstring mistake = LbDescribeFormatMistake(format, arguments);
    if (!mistake.empty())
    {
        throw LbException(std::move(mistake), format.GetPlace());
    }
    return CFormatter(format.GetText(), arguments).Run();
}

std::wstring LbFormatLine(const LbFormatSource& format, std::span<const LbFormatArgument> arguments)
{
    const std::wstring mistake = LbDescribeFormatMistake(format, arguments);
    return mistake.empty() ? LbFormatArguments(format, arguments) : L"Fehler: " + mistake + L"\n";
}
