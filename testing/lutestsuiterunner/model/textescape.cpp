#include "testing/lutestsuiterunner/model/textescape.h"

#include <charconv>
#include <cstdint>
#include <optional>

#include "base/lbencoding.h"

namespace Runner
{

namespace
{

constexpr wchar_t c_Mark = L'\u241B';
constexpr std::string_view c_MarkBytes = "\u241B{";
constexpr int c_Hexadecimal = 16;
/// Where wide text is UTF-16, a high surrogate and a low one after it are one character.
constexpr bool c_IsUtf16 = sizeof(wchar_t) == 2;

std::uint32_t getUnit(wchar_t character)
{
    return static_cast<std::uint32_t>(static_cast<std::make_unsigned_t<wchar_t>>(character));
}

bool isHighSurrogate(std::uint32_t unit)
{
    return unit >= 0xD800U && unit <= 0xDBFFU;
}

bool isLowSurrogate(std::uint32_t unit)
{
    return unit >= 0xDC00U && unit <= 0xDFFFU;
}

/// False for all surrogates; the caller checks for pairs.
bool isPlain(std::uint32_t unit)
{
    if (unit < 0x20U)
    {
        return unit == '\t' || unit == '\n' || unit == '\r';
    }
    return unit < 0xD800U ? unit != getUnit(c_Mark)
                          : unit > 0xDFFFU && unit != 0xFFFEU && unit != 0xFFFFU && unit <= 0x10FFFFU;
}

/// Number of code units at `position` that need no escape: 1 or 2; 0 if an escape is needed.
std::size_t getPlainUnits(std::wstring_view text, std::size_t position)
{
    const std::uint32_t unit = getUnit(text[position]);
    if (isPlain(unit))
    {
        return 1;
    }
    const bool isPair =
        c_IsUtf16 && isHighSurrogate(unit) && position + 1 < text.size() && isLowSurrogate(getUnit(text[position + 1]));
    return isPair ? 2 : 0;
}

void appendEscape(std::uint32_t unit, std::string& result)
{
    constexpr std::string_view c_Digits = "0123456789ABCDEF";
    constexpr unsigned c_BitsPerDigit = 4;
    constexpr unsigned c_FourDigits = 12;
    unsigned shift = c_FourDigits;
    while (shift + c_BitsPerDigit < 32U && (unit >> (shift + c_BitsPerDigit)) != 0)
    {
        shift += c_BitsPerDigit;
    }
    result += c_MarkBytes;
    for (; shift > 0; shift -= c_BitsPerDigit)
    {
        result += c_Digits[unit >> shift & 0xFU];
    }
    result += c_Digits[unit & 0xFU];
    result += '}';
}

/// Reads the escape at the beginning of `bytes`: returns its code unit and sets `length`. Empty if there is no escape.
std::optional<std::uint32_t> readEscape(std::string_view bytes, std::size_t& length)
{
    if (!bytes.starts_with(c_MarkBytes))
    {
        return std::nullopt;
    }
    std::uint32_t unit = 0;
    const char* const first = bytes.data() + c_MarkBytes.size();
    const char* const last = bytes.data() + bytes.size();
    const auto [end, error] = std::from_chars(first, last, unit, c_Hexadecimal);
    constexpr std::ptrdiff_t c_FewestDigits = 4;
    if (error != std::errc() || end == last || *end != '}' || end - first < c_FewestDigits ||
        (c_IsUtf16 && unit > 0xFFFFU))
    {
        return std::nullopt;
    }
    length = static_cast<std::size_t>(end + 1 - bytes.data());
    return unit;
}

} // namespace

void AppendEscapedUtf8(std::wstring_view text, std::string& result)
{
    std::size_t start = 0;
    const auto appendPlain = [&](std::size_t end) {
        if (end > start)
        {
            result += LbEncoding::ToUtf8(text.substr(start, end - start));
        }
    };
    for (std::size_t position = 0; position < text.size();)
    {
        if (const std::size_t plain = getPlainUnits(text, position))
        {
            position += plain;
            continue;
        }
        appendPlain(position);
        appendEscape(getUnit(text[position]), result);
        start = ++position;
    }
    appendPlain(text.size());
}

std::string ToEscapedUtf8(std::wstring_view text)
{
    std::string result;
    AppendEscapedUtf8(text, result);
    return result;
}

std::wstring FromEscapedUtf8(std::string_view bytes)
{
    std::wstring result;
    std::size_t start = 0;
    for (std::size_t mark = bytes.find(c_MarkBytes); mark != std::string_view::npos;)
    {
        std::size_t length = 0;
        if (const auto unit = readEscape(bytes.substr(mark), length))
        {
            result += LbEncoding::FromUtf8(bytes.substr(start, mark - start));
            result += static_cast<wchar_t>(*unit);
            start = mark + length;
        }
        mark = bytes.find(c_MarkBytes, length == 0 ? mark + 1 : start);
    }
    return result += LbEncoding::FromUtf8(bytes.substr(start));
}

} // namespace Runner
