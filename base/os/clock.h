/// Local time, modification times of files, and random bytes of the system.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

#include "base/lbexport.h"

namespace LbOs
{

/// A local time, split into fields.
struct SLocalTime
{
    int year;   ///< e.g. 2024
    int month;  ///< 1 to 12
    int day;    ///< 1 to 31
    int hour;   ///< 0 to 23
    int minute; ///< 0 to 59
    int second; ///< 0 to 60
};

/// The current local time. Callable from any thread.
LB_API SLocalTime GetLocalTimeNow();

/// Triggers the one-time allocations of the run-time's calendar functions, for the process and the calling thread.
/// Results that other threads hold stay valid. Callable from any thread.
LB_API void WarmUpCalendar();

/// Names the system's time zone in the environment (TZ) unless the environment names one. On Linux the C library
/// otherwise copies the zone's path on every request for local time, which would count as heap growth of the calling
/// case. Local times do not change. No other thread may use the environment during the call. No effect on Windows.
LB_API void NameTimeZone();

/// Local time of the last change of a file's content; follows links. Empty if the file does not exist. Callable from
/// any thread.
LB_API std::optional<SLocalTime> GetModificationTime(const std::wstring& path);

/// Fills `buffer` from the system's random source. Throws LbException if there is none. Callable from any thread.
LB_API void FillRandom(void* buffer, std::size_t size);

} // namespace LbOs
