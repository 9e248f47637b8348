#include "testing/lutestsuite/settings/valuereaders.h"

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cmath>
#include <cstdlib>
#include <cwchar>
#include <limits>

#include "base/lbencoding.h"

namespace
{

constexpr std::wstring_view c_WhiteSpace = L" \t\n\v\f\r";

/// True for a plus sign before a digit or a point; "+-1" is not a number.
bool beginsWithPlus(std::string_view number)
{
    constexpr std::string_view c_Beginnings = ".0123456789";
    return number.size() > 1 && number[0] == '+' && c_Beginnings.find(number[1]) != std::string_view::npos;
}

/// For a number outside the range of float: true if it is too close to zero, false if it is too large. It is too close
/// to zero if, after the exponent is applied, its first non-zero digit is right of the point.
bool isTiny(const std::string& number)
{
    const std::size_t end = std::min(number.find_first_of("eE"), number.size());
    const auto point = static_cast<std::int64_t>(std::min(number.find('.'), end));
    const auto first = static_cast<std::int64_t>(number.find_first_of("123456789"));
    const std::int64_t exponent = end == number.size() ? 0 : std::strtoll(number.c_str() + end + 1, nullptr, 10);
    return exponent < first - point;
}

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
    number.erase(0, beginsWithPlus(number) ? 1 : 0);
    float value = 0.0F;
    const std::from_chars_result result = std::from_chars(number.data(), number.data() + number.size(), value);
    if (result.ec != std::errc::result_out_of_range)
    {
        // "nan" and "inf" are not accepted.
        return std::isfinite(value) ? value : 0.0F;
    }
    number.resize(static_cast<std::size_t>(result.ptr - number.data()));
    const float limit = isTiny(number) ? 0.0F : std::numeric_limits<float>::max();
    return std::copysign(limit, number.starts_with('-') ? -1.0F : 1.0F);
}

} // namespace LuTestSuite
