/// Numbers as text, made without temporary texts on the heap.
#pragma once

#include <array>
#include <charconv>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <string>

namespace Runner
{

inline constexpr std::size_t c_ChecksumDigits = 16;

/// Decimal digits.
template<std::integral T>
void AppendNumber(T value, std::string& text)
{
    char digits[24];
    const auto [end, error] = std::to_chars(digits, digits + sizeof(digits), value);
    text.append(digits, end);
}

/// 16 hexadecimal digits.
inline std::array<char, c_ChecksumDigits> ToHexadecimal(std::uint64_t value) noexcept
{
    constexpr unsigned c_BitsPerDigit = 4;
    std::array<char, c_ChecksumDigits> digits;
    for (std::size_t position = c_ChecksumDigits; position > 0; value >>= c_BitsPerDigit)
    {
        digits[--position] = "0123456789abcdef"[value & 0xFU];
    }
    return digits;
}

inline void AppendHexadecimal(std::uint64_t value, std::string& text)
{
    const auto digits = ToHexadecimal(value);
    text.append(digits.data(), digits.size());
}

} // namespace Runner
