#include "testing/lutestsuiterunner/console/linetext.h"

#include <algorithm>

#include "base/lbvisibletext.h"

namespace Runner
{

namespace
{

bool isBetween(wchar_t character, wchar_t first, wchar_t last)
{
    return character >= first && character <= last;
}

bool isHighSurrogate(wchar_t character)
{
    return isBetween(character, 0xD800, 0xDBFF);
}

bool isLowSurrogate(wchar_t character)
{
    return isBetween(character, 0xDC00, 0xDFFF);
}

bool isInsideCharacter(std::string_view line, std::size_t place)
{
    return place > 0 && place < line.size() && (static_cast<unsigned char>(line[place]) & 0xC0U) == 0x80;
}

/// The part of a line that contains all text that can be shown.
struct SWindow
{
    std::wstring text;
    bool hasBefore; ///< the line has more text before this part
    bool hasBehind;
};

/// Limits the time for very long lines. The windows of `line` and `other` begin at the same place.
SWindow findWindow(std::string_view line, std::string_view other, std::size_t width)
{
    constexpr std::size_t c_MostBytes = 4; // of a character
    const std::size_t reach = width * c_MostBytes;
    const auto difference =
        line == other ? 0 : static_cast<std::size_t>(std::ranges::mismatch(line, other).in1 - line.begin());
    std::size_t begin = difference > reach ? difference - reach : 0;
    for (std::size_t byte = 1; byte < c_MostBytes && isInsideCharacter(line, begin); ++byte)
    {
        --begin;
    }
    const std::size_t end = std::min(line.size(), difference + 2 * reach);
    return {LbVisibleText::ShowBytes(line.substr(begin, end - begin)), begin > 0, end < line.size()};
}

/// The place of the first shown character; 0 if the texts are equal.
std::size_t findBegin(const std::wstring& text, const std::wstring& other, std::size_t width)
{
    const std::size_t context = width / 4;
    const std::size_t longest = std::max(text.size(), other.size());
    const auto difference = static_cast<std::size_t>(std::ranges::mismatch(text, other).in1 - text.begin());
    return longest <= width || difference == longest || difference < width - context
               ? 0
               : std::min(difference - context, longest - width);
}

constexpr wchar_t c_Ellipsis = L'…';

/// Replaces the last character by an ellipsis. Leaves no half of a surrogate pair.
void markEnd(std::wstring& text)
{
    text.back() = c_Ellipsis;
    if (isHighSurrogate(text[text.size() - 2]))
    {
        text.erase(text.size() - 2, 1);
    }
}

/// Replaces the first character by an ellipsis. Leaves no half of a surrogate pair.
void markBegin(std::wstring& text)
{
    text.front() = c_Ellipsis;
    if (text.size() > 1 && isLowSurrogate(text[1]))
    {
        text.erase(1, 1);
    }
}

/// Cuts the text to `width` characters and marks omitted text by ellipses.
std::wstring cut(const SWindow& window, std::size_t begin, std::size_t width)
{
    std::wstring text = window.text.substr(begin, width);
    if (window.hasBehind || begin + width < window.text.size())
    {
        markEnd(text);
    }
    if ((window.hasBefore || begin > 0) && !text.empty())
    {
        markBegin(text);
    }
    return text;
}

} // namespace

std::wstring ShowLine(std::string_view line, std::string_view other, std::size_t width)
{
    constexpr std::size_t c_LeastWidth = 8;
    if (width == c_AnyWidth)
    {
        return LbVisibleText::ShowBytes(line);
    }
    const std::size_t most = std::max(width, c_LeastWidth);
    const SWindow window = findWindow(line, other, most);
    return cut(window, findBegin(window.text, findWindow(other, line, most).text, most), most);
}

} // namespace Runner
