#include "testing/lutestsuiterunner/reports/xmltext.h"

#include "testing/lutestsuiterunner/model/textescape.h"

namespace Runner
{

namespace
{

struct SEntity
{
    char character;
    std::string_view entity;
};

/// Readers of XML turn unescaped line ends and tabs in attributes into blanks, and unescaped carriage returns in text
/// into line feeds.
constexpr SEntity c_AttributeEntities[] = {{'&', "&amp;"},  {'<', "&lt;"},   {'>', "&gt;"}, {'"', "&quot;"},
                                           {'\r', "&#13;"}, {'\n', "&#10;"}, {'\t', "&#9;"}};
constexpr SEntity c_TextEntities[] = {{'&', "&amp;"}, {'<', "&lt;"}, {'>', "&gt;"}, {'\r', "&#13;"}};

template<std::size_t N>
std::string replace(const std::string& text, const SEntity (&entities)[N])
{
    std::string result;
    result.reserve(text.size());
    for (const char character : text)
    {
        std::string_view replacement(&character, 1);
        for (const SEntity& entity : entities)
        {
            replacement = entity.character == character ? entity.entity : replacement;
        }
        result += replacement;
    }
    return result;
}

} // namespace

std::string ToXmlText(std::wstring_view text)
{
    return replace(ToEscapedUtf8(text), c_TextEntities);
}

std::string ToXmlAttribute(std::wstring_view text)
{
    return replace(ToEscapedUtf8(text), c_AttributeEntities);
}

std::string ToXmlSeconds(std::uint64_t nanoseconds)
{
    constexpr std::uint64_t c_PerMillisecond = 1'000'000;
    constexpr std::uint64_t c_PerSecond = 1000;
    const std::uint64_t milliseconds = (nanoseconds + c_PerMillisecond / 2) / c_PerMillisecond;
    const std::string decimals = std::to_string(c_PerSecond + milliseconds % c_PerSecond);
    return std::to_string(milliseconds / c_PerSecond) + "." + decimals.substr(1);
}

void CutXmlText(std::string& text, std::size_t size)
{
    if (text.size() <= size)
    {
        return;
    }
    constexpr unsigned char c_Mask = 0xC0;
    constexpr unsigned char c_Continuation = 0x80;
    while (size > 0 && (static_cast<unsigned char>(text[size]) & c_Mask) == c_Continuation)
    {
        --size;
    }
    const std::size_t entity = size == 0 ? std::string::npos : text.rfind('&', size - 1);
    const bool isInEntity = entity != std::string::npos && text.find(';', entity) >= size;
    text.resize(isInEntity ? entity : size);
}

} // namespace Runner
