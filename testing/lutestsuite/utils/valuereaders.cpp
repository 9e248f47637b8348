#include "testing/lutestsuite/utils/valuereaders.h"

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cmath>
#include <cwchar>
#include <limits>

#include "base/lbencoding.h"

namespace
{

constexpr std::wstring_view c_WhiteSpace = L" \t\n\v\f\r";

} // namespace

namespace LuTestSuite
{

std::optional<bool> ReadBool(std::wstring_view text)
{
    if (text == L"true" || text == L"false")
    {
        return text == L"true";
    }
    return std::nullopt;
}

std::int32_t ReadInt(const std::wstring& text)
{
    const long long value = std::wcstoll(text.c_str(), nullptr, 10);
    return static_cast<std::int32_t>(std::clamp<long long>(value, std::numeric_limits<std::int32_t>::min(),
                                                           std::numeric_limits<std::int32_t>::max()));
}

std::int64_t ReadInt64(const std::wstring& text)
{
    return std::wcstoll(text.c_str(), nullptr, 10);
}

std::uint32_t ReadUInt32(const std::wstring& text)
{
    constexpr std::uint32_t c_Largest = std::numeric_limits<std::uint32_t>::max();
    const std::uint64_t value = ReadUInt64(text);
    const std::size_t start = text.find_first_not_of(c_WhiteSpace);
    const bool isNegated = start != std::wstring::npos && text[start] == L'-';
    const std::uint64_t magnitude = isNegated ? 0 - value : value;
    return magnitude <= c_Largest ? static_cast<std::uint32_t>(value) : c_Largest;
}

std::uint64_t ReadUInt64(const std::wstring& text)
{
    errno = 0;
    const std::uint64_t value = std::wcstoull(text.c_str(), nullptr, 10);
    return errno == ERANGE ? std::numeric_limits<std::uint64_t>::max() : value;
}

float ReadFloat(const std::wstring& text)
{
    const std::size_t start = std::min(text.find_first_not_of(c_WhiteSpace), text.size());
    std::string number = LbEncoding::ToLatin1(std::wstring_view(text).substr(start));
    number.erase(0, number.starts_with('+') ? 1 : 0);
    float value = 0.0F;
    const std::from_chars_result result = std::from_chars(number.data(), number.data() + number.size(), value);
    if (result.ec != std::errc::result_out_of_range)
    {
        return value;
    }
    const bool isTiny = number.find("e-") < static_cast<std::size_t>(result.ptr - number.data());
    constexpr float c_Infinity = std::numeric_limits<float>::infinity();
    return isTiny ? 0.0F : std::copysign(c_Infinity, number.starts_with('-') ? -1.0F : 1.0F);
}

} // namespace LuTestSuite
