/// Conversion to UTF-8 in a process that has crashed.
#pragma once

#include <cstddef>
#include <span>
#include <string_view>

#include "base/lbexport.h"

namespace LbEncoding
{

/// Writes UTF-16 as UTF-8 to `bytes`, without allocating memory; cuts text that does not fit, but never within a
/// character. Lone surrogates become U+FFFD. Returns the number of bytes used. Any thread.
LB_API std::size_t ToUtf8(std::u16string_view text, std::span<char> bytes) noexcept;

} // namespace LbEncoding
