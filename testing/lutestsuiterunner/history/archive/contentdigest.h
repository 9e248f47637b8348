/// Digests of contents.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace Runner::History
{

inline constexpr std::size_t c_DigestSize = 32;

/// XXH128 as 32 hexadecimal digits.
std::string GetDigest(std::string_view bytes);

/// The digest of a file's content; empty if it cannot be read.
std::string GetFileDigest(const std::wstring& path);

} // namespace Runner::History
