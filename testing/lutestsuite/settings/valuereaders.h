/// Reads values from text. A number consists of optional white space, an optional sign and decimal digits; any text
/// after it is ignored. A text without digits is 0. A number out of range becomes the nearest limit. The results are
/// the same on all platforms, independent of the width of long.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace LuTestSuite
{

/// Accepts exactly "true" or "false"; empty for any other text.
std::optional<bool> ReadBool(std::wstring_view text);

std::int32_t ReadInt(const std::wstring& text);
std::int64_t ReadInt64(const std::wstring& text);

/// A minus sign negates within the type: "-1" is the largest number.
std::uint32_t ReadUInt32(const std::wstring& text);
std::uint64_t ReadUInt64(const std::wstring& text);

/// Also accepts a decimal point, in any locale, and an exponent. The result is always finite.
float ReadFloat(const std::wstring& text);

} // namespace LuTestSuite
