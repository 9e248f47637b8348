#include "base/lbpath.h"

#include <algorithm>
#include <array>
#include <cstddef>

#include "base/os/files.h"

namespace
{

/// Length without trailing separators.
std::size_t getTrimmedLength(std::wstring_view path)
{
    return path.find_last_not_of(LbOs::c_PathSeparators) + 1;
}

/// Offset of the last component.
std::size_t getLastStart(std::wstring_view path)
{
    return path.substr(0, getTrimmedLength(path)).find_last_of(LbOs::c_PathSeparators) + 1;
}

std::wstring withNativeSeparators(std::wstring_view path)
{
    std::wstring result(path);
    std::replace_if(result.begin(), result.end(), LbPath::IsSeparator, LbPath::c_Separator);
    return result;
}

/// Indexed by character code; true for characters that file names must not contain.
constexpr auto c_UnsafeCharacters = [] {
    std::array<bool, 0xA0> areUnsafe{};
    std::fill_n(areUnsafe.begin(), 0x20, true);
    std::fill(areUnsafe.begin() + 0x7F, areUnsafe.end(), true);
    for (const char reserved : std::string_view("\\/:*?\"<>|"))
    {
        areUnsafe[static_cast<unsigned char>(reserved)] = true;
    }
    return areUnsafe;
}();

bool isUnsafe(wchar_t character)
{
    const auto code = static_cast<char32_t>(character);
    return code < c_UnsafeCharacters.size() && c_UnsafeCharacters[code];
}

} // namespace

bool LbPath::IsSeparator(wchar_t character) noexcept
{
    return std::wstring_view(LbOs::c_PathSeparators).find(character) != std::wstring_view::npos;
}

std::wstring LbPath::WithSeparator(std::wstring_view path)
{
    std::wstring result = withNativeSeparators(path);
    if (!result.empty() && result.back() != c_Separator)
    {
        result.push_back(c_Separator);
    }
    return result;
}

std::wstring LbPath::WithoutSeparator(std::wstring_view path)
{
    if (!path.empty() && IsSeparator(path.back()))
    {
        path.remove_suffix(1);
    }
    return withNativeSeparators(path);
}

std::wstring LbPath::GetLastComponent(std::wstring_view path)
{
    const std::size_t start = getLastStart(path);
    return std::wstring(path.substr(start, getTrimmedLength(path) - start));
}

std::wstring LbPath::GetParent(std::wstring_view path)
{
    return withNativeSeparators(path.substr(0, getLastStart(path)));
}

std::wstring LbPath::ToNative(std::wstring_view path)
{
    std::wstring result(path);
    std::replace_if(
        result.begin(), result.end(), [](wchar_t character) { return character == L'/' || character == L'\\'; },
        c_Separator);
    return result;
}

std::wstring LbPath::ToSafeName(std::wstring_view name)
{
    std::wstring result(name);
    std::replace_if(result.begin(), result.end(), isUnsafe, L'_');
    return result;
}
