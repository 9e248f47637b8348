/// Reading of values. Flags are strict, numbers lenient: white space in front, an optional sign, decimal digits,
/// anything after them ignored, 0 without digits. Out of range gives the nearest limit. The same on all platforms,
/// whatever the width of long.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace LuTestSuite
{

/// Exactly "true" or "false"; nothing for any other text.
std::optional<bool> ReadBool(std::wstring_view text);

std::int32_t ReadInt(const std::wstring& text);
std::int64_t ReadInt64(const std::wstring& text);

/// A minus sign negates within the type: "-1" gives the largest number.
std::uint32_t ReadUInt32(const std::wstring& text);
std::uint64_t ReadUInt64(const std::wstring& text);

/// With a point, whatever the locale, and an exponent. Always finite.
float ReadFloat(const std::wstring& text);

} // namespace LuTestSuite
