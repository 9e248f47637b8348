#include "testing/lutestsuite/utils/valuereaders.h"

#include <algorithm>
#include <cerrno>
#include <cwchar>
#include <limits>

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

std::uint32_t ReadUInt32(const std::wstring& text)
{
    constexpr std::uint32_t c_Largest = std::numeric_limits<std::uint32_t>::max();
    const std::uint64_t value = ReadUInt64(text);
    const std::size_t start = text.find_first_not_of(L" \t\n\v\f\r");
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

} // namespace LuTestSuite
