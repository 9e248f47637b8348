#include "base/lbencoding.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <optional>

#include "base/lbutf8.h"

namespace
{

constexpr bool c_WideIsUtf16 = sizeof(wchar_t) == 2;
constexpr char32_t c_Replacement = 0xFFFD;
constexpr char32_t c_LastCodePoint = 0x10FFFF;
/// FromNative maps an invalid byte to a lone surrogate: this code plus the byte.
constexpr char32_t c_StrayByteBase = 0xDC00;

constexpr bool isHighSurrogate(char32_t unit)
{
    return unit >= 0xD800 && unit <= 0xDBFF;
}

constexpr bool isLowSurrogate(char32_t unit)
{
    return unit >= 0xDC00 && unit <= 0xDFFF;
}

constexpr bool isStrayByte(char32_t codePoint)
{
    return codePoint >= c_StrayByteBase + 0x80 && codePoint <= c_StrayByteBase + 0xFF;
}

constexpr char32_t joinSurrogates(char32_t high, char32_t low)
{
    return 0x10000 + ((high - 0xD800) << 10U) + (low - 0xDC00);
}

/// Reads the next code point; returns a lone surrogate unchanged.
template<typename Unit>
char32_t nextCodePoint(std::basic_string_view<Unit> text, std::size_t& position)
{
    const auto first = static_cast<char32_t>(text[position++]);
    if (sizeof(Unit) == 2 && isHighSurrogate(first) && position < text.size())
    {
        const auto second = static_cast<char32_t>(text[position]);
        if (isLowSurrogate(second))
        {
            ++position;
            return joinSurrogates(first, second);
        }
    }
    return first;
}

template<typename Unit>
void appendCodePoint(std::basic_string<Unit>& text, char32_t codePoint)
{
    if (sizeof(Unit) == 2 && codePoint > 0xFFFF)
    {
        const char32_t offset = codePoint - 0x10000;
        text.push_back(static_cast<Unit>(0xD800 + (offset >> 10U)));
        text.push_back(static_cast<Unit>(0xDC00 + (offset & 0x3FFU)));
    }
    else
    {
        text.push_back(static_cast<Unit>(codePoint));
    }
}

template<typename Bytes>
void appendUtf8(Bytes& bytes, char32_t codePoint)
{
    const auto append = [&bytes](char32_t value) { bytes.push_back(static_cast<char>(value)); };
    const auto appendRest = [&append, codePoint](unsigned shift) { append(0x80U | ((codePoint >> shift) & 0x3FU)); };
    if (codePoint < 0x80)
    {
        append(codePoint);
    }
    else if (codePoint < 0x800)
    {
        append(0xC0U | (codePoint >> 6U));
        appendRest(0);
    }
    else if (codePoint < 0x10000)
    {
        append(0xE0U | (codePoint >> 12U));
        appendRest(6);
        appendRest(0);
    }
    else
    {
        append(0xF0U | (codePoint >> 18U));
        appendRest(12);
        appendRest(6);
        appendRest(0);
    }
}

constexpr bool isScalarValue(char32_t codePoint)
{
    return codePoint <= c_LastCodePoint && (codePoint < 0xD800 || codePoint > 0xDFFF);
}

/// Facts about a UTF-8 sequence that its first byte determines: its length, the smallest code point of that length, and
/// the bits of the code point in the first byte.
struct SSequence
{
    std::size_t length;
    char32_t smallest;
    unsigned firstBits;
};

constexpr std::optional<SSequence> getSequence(unsigned first)
{
    if (first >= 0xC2 && first <= 0xDF)
    {
        return SSequence{2, 0x80, first & 0x1FU};
    }
    if (first >= 0xE0 && first <= 0xEF)
    {
        return SSequence{3, 0x800, first & 0x0FU};
    }
    if (first >= 0xF0 && first <= 0xF4)
    {
        return SSequence{4, 0x10000, first & 0x07U};
    }
    return std::nullopt;
}

/// Reads the next code point of UTF-8; does not advance if the sequence is invalid.
std::optional<char32_t> nextUtf8(std::string_view bytes, std::size_t& position)
{
    const auto byteAt = [bytes](std::size_t index) { return static_cast<unsigned char>(bytes[index]); };
    if (byteAt(position) < 0x80)
    {
        return byteAt(position++);
    }
    const std::optional<SSequence> sequence = getSequence(byteAt(position));
    if (!sequence || bytes.size() - position < sequence->length)
    {
        return std::nullopt;
    }
    char32_t codePoint = sequence->firstBits;
    for (std::size_t index = 1; index < sequence->length; ++index)
    {
        const unsigned next = byteAt(position + index);
        if ((next & 0xC0U) != 0x80U)
        {
            return std::nullopt;
        }
        codePoint = (codePoint << 6U) | (next & 0x3FU);
    }
    if (codePoint < sequence->smallest || !isScalarValue(codePoint))
    {
        return std::nullopt;
    }
    position += sequence->length;
    return codePoint;
}

/// Converts ASCII in a loop that the compiler can vectorise, because most texts are pure ASCII. Returns false for other
/// texts; the result is then meaningless.
bool widenAscii(std::string_view bytes, std::wstring& result)
{
    result.resize(bytes.size());
    unsigned char all = 0;
    for (std::size_t index = 0; index < bytes.size(); ++index)
    {
        const auto byte = static_cast<unsigned char>(bytes[index]);
        all = static_cast<unsigned char>(all | byte);
        result[index] = static_cast<wchar_t>(byte);
    }
    return all < 0x80;
}

/// The reverse of widenAscii.
bool narrowAscii(std::wstring_view text, std::string& result)
{
    result.resize(text.size());
    char* const bytes = result.data();
    char32_t all = 0;
    for (std::size_t index = 0; index < text.size(); ++index)
    {
        const auto unit = static_cast<char32_t>(text[index]);
        all |= unit;
        bytes[index] = static_cast<char>(unit);
    }
    return all < 0x80;
}

/// Decodes UTF-8; `replaceByte` returns the code point for an invalid byte.
template<typename F>
void decodeUtf8(std::string_view bytes, std::wstring& result, const F& replaceByte)
{
    if (widenAscii(bytes, result))
    {
        return;
    }
    result.clear();
    for (std::size_t position = 0; position < bytes.size();)
    {
        const std::optional<char32_t> codePoint = nextUtf8(bytes, position);
        appendCodePoint(result, codePoint ? *codePoint : replaceByte(static_cast<unsigned char>(bytes[position++])));
    }
}

/// Encodes as UTF-8; `appendInvalid` handles lone surrogates and values above U+10FFFF.
template<typename F>
std::string encodeUtf8(std::wstring_view text, const F& appendInvalid)
{
    std::string result;
    if (narrowAscii(text, result))
    {
        return result;
    }
    result.clear();
    for (std::size_t position = 0; position < text.size();)
    {
        const char32_t codePoint = nextCodePoint(text, position);
        if (isScalarValue(codePoint))
        {
            appendUtf8(result, codePoint);
        }
        else
        {
            appendInvalid(result, codePoint);
        }
    }
    return result;
}

/// Copies unit by unit, because most texts have one unit for each character in both encodings. Returns false if the
/// text contains a unit from U+D800 on, because that unit may need conversion; the result is then meaningless.
template<typename Source, typename Target>
bool copyUnits(Source text, Target& result)
{
    using Unit = typename Target::value_type;
    constexpr char32_t c_FirstSurrogate = 0xD800;
    result.resize(text.size());
    Unit* const units = result.data();
    unsigned others = 0;
    for (std::size_t index = 0; index < text.size(); ++index)
    {
        const auto unit = static_cast<char32_t>(text[index]);
        others |= unit < c_FirstSurrogate ? 0U : 1U;
        units[index] = static_cast<Unit>(unit);
    }
    return others == 0;
}

template<typename Target, typename Source>
Target convertUtf16(Source text)
{
    Target result;
    if (copyUnits(text, result))
    {
        return result;
    }
    result.clear();
    for (std::size_t position = 0; position < text.size();)
    {
        const char32_t codePoint = nextCodePoint(text, position);
        appendCodePoint(result, codePoint <= c_LastCodePoint ? codePoint : c_Replacement);
    }
    return result;
}

constexpr bool isLatin1(char32_t codePoint)
{
    const bool isControl = codePoint < 0x20 || (codePoint >= 0x7F && codePoint < 0xA0);
    return codePoint <= 0xFF && (!isControl || codePoint == U'\t' || codePoint == U'\n' || codePoint == U'\r');
}

} // namespace

std::string LbEncoding::ToUtf8(std::wstring_view text)
{
    return encodeUtf8(text, [](std::string& bytes, char32_t) { appendUtf8(bytes, c_Replacement); });
}

std::size_t LbEncoding::ToUtf8(std::u16string_view text, std::span<char> bytes) noexcept
{
    struct SCharacter
    {
        char bytes[4];
        std::size_t size = 0;
        void push_back(char byte) { bytes[size++] = byte; }
    };
    std::size_t size = 0;
    for (std::size_t position = 0; position < text.size();)
    {
        const char32_t codePoint = nextCodePoint(text, position);
        SCharacter character;
        appendUtf8(character, isScalarValue(codePoint) ? codePoint : c_Replacement);
        if (character.size > bytes.size() - size)
        {
            return size;
        }
        std::copy_n(character.bytes, character.size, bytes.data() + size);
        size += character.size;
    }
    return size;
}

std::wstring LbEncoding::FromUtf8(std::string_view bytes)
{
    std::wstring result;
    decodeUtf8(bytes, result, [](unsigned char) { return c_Replacement; });
    return result;
}

bool LbEncoding::IsUtf8(std::string_view bytes)
{
    for (std::size_t position = 0; position < bytes.size();)
    {
        if (!nextUtf8(bytes, position))
        {
            return false;
        }
    }
    return true;
}

std::wstring LbEncoding::FromNative(std::string_view bytes)
{
    std::wstring result;
    FromNative(bytes, result);
    return result;
}

void LbEncoding::FromNative(std::string_view bytes, std::wstring& result)
{
    decodeUtf8(bytes, result, [](unsigned char byte) { return c_StrayByteBase + byte; });
}

std::string LbEncoding::ToNative(std::wstring_view text)
{
    return encodeUtf8(text, [](std::string& bytes, char32_t codePoint) {
        if (isStrayByte(codePoint))
        {
            bytes.push_back(static_cast<char>(codePoint - c_StrayByteBase));
        }
        else
        {
            appendUtf8(bytes, c_Replacement);
        }
    });
}

std::u16string LbEncoding::ToUtf16(std::wstring_view text)
{
    if constexpr (c_WideIsUtf16)
    {
        return {text.begin(), text.end()};
    }
    else
    {
        return convertUtf16<std::u16string>(text);
    }
}

std::wstring LbEncoding::FromUtf16(std::u16string_view text)
{
    if constexpr (c_WideIsUtf16)
    {
        return {text.begin(), text.end()};
    }
    else
    {
        return convertUtf16<std::wstring>(text);
    }
}

std::string LbEncoding::ToLatin1(std::wstring_view text)
{
    std::string result;
    result.reserve(text.size());
    for (std::size_t position = 0; position < text.size();)
    {
        const char32_t codePoint = nextCodePoint(text, position);
        result.push_back(isLatin1(codePoint) ? static_cast<char>(codePoint) : '?');
    }
    return result;
}

std::wstring LbEncoding::FromLatin1(std::string_view bytes)
{
    std::wstring result(bytes.size(), L'\0');
    std::ranges::transform(bytes, result.begin(), [](char byte) { return static_cast<unsigned char>(byte); });
    return result;
}

std::string LbEncoding::Latin1ToUtf8(std::string bytes)
{
    const auto isAscii = [](char byte) { return static_cast<unsigned char>(byte) < 0x80; };
    const auto others = bytes.size() - static_cast<std::size_t>(std::ranges::count_if(bytes, isAscii));
    if (others == 0)
    {
        return bytes;
    }
    std::string result;
    result.reserve(bytes.size() + others);
    for (auto rest = bytes.begin(); rest != bytes.end();)
    {
        const auto other = std::find_if_not(rest, bytes.end(), isAscii);
        result.append(rest, other);
        rest = other;
        if (rest != bytes.end())
        {
            appendUtf8(result, static_cast<unsigned char>(*rest++));
        }
    }
    return result;
}
