/// Dates and times as text.
#pragma once

#include <string>
#include <string_view>

#include "base/lbexport.h"
#include "base/os/clock.h"

namespace LbDateTime
{

/// Formats a point of local time: Y (four digits), m, d, H, i, s (two digits each) stand for year, month, day, hour,
/// minute and second; all other characters stand for themselves ("[Y-m-d]-[H-i-s]"). Any thread.
LB_API std::wstring Format(const LbOs::SLocalTime& time, std::wstring_view format);

/// The same for the present time.
LB_API std::wstring FormatNow(std::wstring_view format);

} // namespace LbDateTime
