#include "base/lbvariant.h"

#include <charconv>
#include <cmath>
#include <concepts>
#include <limits>
#include <string_view>
#include <utility>

namespace
{

template<typename T>
concept IntegerNumber = std::integral<T> && !std::same_as<T, bool>;

template<typename Result>
std::optional<Result> parseDigits(std::wstring_view text)
{
    if (text.empty())
    {
        return std::nullopt;
    }
    Result value = 0;
    for (const wchar_t character : text)
    {
        if (character < L'0' || character > L'9')
        {
            return std::nullopt;
        }
        const auto digit = static_cast<Result>(character - L'0');
        if (value > (std::numeric_limits<Result>::max() - digit) / 10)
        {
            return std::nullopt;
        }
        value = static_cast<Result>(value * 10 + digit);
    }
    return value;
}

template<typename Result>
std::optional<Result> fromFloating(double value)
{
    // The first value above the range: exactly representable as a double, which the maximum itself may not be.
    const double limit = std::ldexp(1.0, std::numeric_limits<Result>::digits);
    if (!(value >= 0.0 && value < limit) || std::trunc(value) != value)
    {
        return std::nullopt;
    }
    return static_cast<Result>(value);
}

/// Turns each alternative of a variant into an unsigned integer.
template<typename Result>
struct SToUnsigned
{
    std::optional<Result> operator()(std::monostate) const { return std::nullopt; }
    std::optional<Result> operator()(bool value) const { return static_cast<Result>(value ? 1 : 0); }
    std::optional<Result> operator()(IntegerNumber auto value) const
    {
        return std::in_range<Result>(value) ? std::optional(static_cast<Result>(value)) : std::nullopt;
    }
    std::optional<Result> operator()(double value) const { return fromFloating<Result>(value); }
    std::optional<Result> operator()(const std::wstring& value) const { return parseDigits<Result>(value); }
};

struct SToBool
{
    std::optional<bool> operator()(std::monostate) const { return std::nullopt; }
    std::optional<bool> operator()(bool value) const { return value; }
    std::optional<bool> operator()(IntegerNumber auto value) const { return value != 0; }
    std::optional<bool> operator()(double value) const { return value < 0.0 || value > 0.0 || std::isnan(value); }
    std::optional<bool> operator()(const std::wstring& value) const
    {
        return value == L"true" || value == L"false" ? std::optional(value == L"true") : std::nullopt;
    }
};

std::wstring floatingToText(double value)
{
    // The longest value without exponent has a sign, a zero and 324 decimal places.
    char digits[512];
    const std::to_chars_result result =
        std::to_chars(std::begin(digits), std::end(digits), value, std::chars_format::fixed);
    return std::wstring(digits, result.ptr);
}

struct SToText
{
    std::wstring operator()(std::monostate) const { return {}; }
    std::wstring operator()(bool value) const { return value ? L"true" : L"false"; }
    std::wstring operator()(IntegerNumber auto value) const { return std::to_wstring(value); }
    std::wstring operator()(double value) const { return floatingToText(value); }
    std::wstring operator()(const std::wstring& value) const { return value; }
};

} // namespace

std::optional<bool> LbVariant::ToBool() const
{
    return std::visit(SToBool(), m_value);
}

std::optional<std::uint32_t> LbVariant::ToUInt32() const
{
    return std::visit(SToUnsigned<std::uint32_t>(), m_value);
}

std::optional<std::uint64_t> LbVariant::ToUInt64() const
{
    return std::visit(SToUnsigned<std::uint64_t>(), m_value);
}

std::wstring LbVariant::ToString() const
{
    return std::visit(SToText(), m_value);
}
