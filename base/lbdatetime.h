/// Dates and times as text.
#pragma once

#include <string>
#include <string_view>

#include "base/lbexport.h"
#include "base/os/clock.h"

namespace LbDateTime
{

/// Formats a local time. Y (four digits), m, d, H, i and s (two digits each) are replaced by year, month, day, hour,
/// minute and second; all other characters are copied ("[Y-m-d]-[H-i-s]"). Callable from any thread.
LB_API std::wstring Format(const LbOs::SLocalTime& time, std::wstring_view format);

/// The same for the current time.
LB_API std::wstring FormatNow(std::wstring_view format);

} // namespace LbDateTime
