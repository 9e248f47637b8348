/// Numbers and texts for the page: UTF-8, German.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace Runner::History
{

/// Escapes markup. Characters that XML does not allow become U+FFFD.
std::string ToMarkup(std::wstring_view text);

/// "1.234"
std::string FormatCount(std::uint64_t count);

/// With a decimal comma.
std::string FormatNumber(double number, int decimals);

/// Three digits and a unit: "1,23 s", "45,6 ms".
std::string FormatSeconds(double seconds);

/// "1,23 MB"
std::string FormatBytes(double bytes);

/// "+10,2 %"; "neu" if there was nothing before.
std::string FormatChange(double before, double after);

} // namespace Runner::History
