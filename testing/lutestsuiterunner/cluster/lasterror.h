/// What a task said before it ended.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace Runner
{

/// Bytes at the end of a task's output that may hold its last error.
inline constexpr std::size_t c_ErrorTail = 4096;

/// The last line that begins with "Fehler: ", without that; empty if there is none. `bytes` is UTF-8, and may begin in
/// the middle of a line.
std::wstring FindLastError(std::string_view bytes);

/// Returns the last line with text; returns an empty text if all lines are empty. `bytes` is UTF-8.
std::wstring FindLastLine(std::string_view bytes);

} // namespace Runner
