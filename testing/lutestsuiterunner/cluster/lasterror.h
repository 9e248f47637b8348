/// Finds the last message in the output of a task.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace Runner
{

/// The number of bytes at the end of a task's output in which the last error is searched.
inline constexpr std::size_t c_ErrorTail = 4096;

/// Returns the last line that begins with "Fehler: ", without this prefix; empty if there is no such line. `bytes` is
/// UTF-8, and may begin in the middle of a line.
std::wstring FindLastError(std::string_view bytes);

/// Returns the last line that contains more than white space; an empty text if there is none. `bytes` is UTF-8.
std::wstring FindLastLine(std::string_view bytes);

} // namespace Runner
