/// Lines of compared files as text for the console.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace Runner
{

/// No limit for ShowLine.
inline constexpr std::size_t c_AnyWidth = static_cast<std::size_t>(-1);

/// Returns the text of a line for the console. `other` is the line that replaces `line` or that `line` replaces; pass
/// `line` itself if there is none. Control characters become visible symbols, invisible characters become text like
/// "\u200B", and bytes that are not UTF-8 become text like "\xE4".
///
/// A text of more than `width` characters is cut so that it contains the first character that differs; "…" marks
/// omitted text. Both lines are cut at the same place.
std::wstring ShowLine(std::string_view line, std::string_view other, std::size_t width);

} // namespace Runner
