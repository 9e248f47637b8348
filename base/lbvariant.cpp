#include "base/lbvariant.h"

#include <cmath>
#include <concepts>
#include <limits>
#include <string_view>
#include <utility>

namespace
{

template<typename T>
concept IntegerNumber = std::integral<T> && !std::same_as<T, bool>;

using Result = std::uint32_t;

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

std::optional<Result> fromFloating(double value)
{
    // The first value above the range, which a double represents exactly.
    const double limit = std::ldexp(1.0, std::numeric_limits<Result>::digits);
    if (!(value >= 0.0 && value < limit) || std::trunc(value) != value)
    {
        return std::nullopt;
    }
    return static_cast<Result>(value);
}

/// Converts each alternative of a variant to an unsigned integer.
struct SToUnsigned
{
    std::optional<Result> operator()(std::monostate) const { return std::nullopt; }
    std::optional<Result> operator()(bool value) const { return static_cast<Result>(value ? 1 : 0); }
    std::optional<Result> operator()(IntegerNumber auto value) const
    {
        return std::in_range<Result>(value) ? std::optional(static_cast<Result>(value)) : std::nullopt;
    }
    std::optional<Result> operator()(double value) const { return fromFloating(value); }
    std::optional<Result> operator()(const std::wstring& value) const { return parseDigits(value); }
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

} // namespace

std::optional<bool> LbVariant::ToBool() const
{
    return std::visit(SToBool(), m_value);
}

std::optional<std::uint32_t> LbVariant::ToUInt32() const
{
    return std::visit(SToUnsigned(), m_value);
}
