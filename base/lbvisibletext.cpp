#include "base/lbvisibletext.h"

#include <algorithm>
#include <cstdint>
#include <utility>

#include "base/lbencoding.h"
#include "base/lbformat.h"

namespace
{

bool isBetween(wchar_t character, wchar_t first, wchar_t last)
{
    return character >= first && character <= last;
}

bool isControl(wchar_t character)
{
    constexpr wchar_t c_Delete = 0x7F;
    constexpr wchar_t c_LastControl = 0x9F;
    return character < L' ' || (character >= c_Delete && character <= c_LastControl);
}

wchar_t getPicture(wchar_t control)
{
    constexpr wchar_t c_Pictures = 0x2400;
    constexpr wchar_t c_DeletePicture = 0x2421;
    constexpr wchar_t c_Delete = 0x7F;
    constexpr wchar_t c_Unknown = 0xFFFD;
    return control < L' '        ? static_cast<wchar_t>(c_Pictures + control)
           : control == c_Delete ? c_DeletePicture
                                 : c_Unknown;
}

/// True for characters that look like nothing or like a blank, or that change the order of other characters.
bool isInvisible(wchar_t character)
{
    constexpr std::pair<wchar_t, wchar_t> c_Ranges[] = {{0x80, 0xA0},     {0xAD, 0xAD},     {0x61C, 0x61C},
                                                        {0x2000, 0x200F}, {0x2028, 0x202F}, {0x205F, 0x206F},
                                                        {0x3000, 0x3000}, {0xFEFF, 0xFEFF}};
    return std::ranges::any_of(
        c_Ranges, [character](const auto& range) { return isBetween(character, range.first, range.second); });
}

} // namespace

std::wstring LbVisibleText::ShowControls(std::wstring text, std::wstring_view kept)
{
    for (wchar_t& character : text)
    {
        if (isControl(character) && kept.find(character) == std::wstring_view::npos)
        {
            character = getPicture(character);
        }
    }
    return text;
}

std::wstring LbVisibleText::ShowBytes(std::string_view bytes)
{
    constexpr wchar_t c_FirstByte = 0xDC80;
    constexpr wchar_t c_LastByte = 0xDCFF;
    std::wstring text;
    wchar_t before = 0;
    for (const wchar_t character : LbEncoding::FromNative(bytes))
    {
        // The second half of a surrogate pair is not an escaped byte.
        if (isBetween(character, c_FirstByte, c_LastByte) && !isBetween(before, 0xD800, 0xDBFF))
        {
            text += LbFormat(L"\\x%02X", static_cast<std::uint32_t>(character) & 0xFFU);
        }
        else if (isInvisible(character))
        {
            text += LbFormat(L"\\u%04X", static_cast<std::uint32_t>(character));
        }
        else
        {
            text += character;
        }
        before = character;
    }
    return ShowControls(std::move(text));
}
