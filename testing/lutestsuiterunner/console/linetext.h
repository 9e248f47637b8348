/// Lines of compared files as text for the console.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace Runner
{

/// No limit for ShowLine.
inline constexpr std::size_t c_AnyWidth = static_cast<std::size_t>(-1);

/// The text of a line that is shown with the line in its place, `other`; with itself if there is no other line. Control
/// characters become pictures, invisible characters "\u200B", and bytes that are not UTF-8 "\xE4".
///
/// A text of more than `width` characters is cut so that it contains the first character that differs, and gets "…" for
/// what is missing. Both lines are cut at the same place.
std::wstring ShowLine(std::string_view line, std::string_view other, std::size_t width);

} // namespace Runner
