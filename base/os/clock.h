/// Wall-clock time, of files too, and random bytes of the system.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

#include "base/lbexport.h"

namespace LbOs
{

/// A point of local time, broken down.
struct SLocalTime
{
    int year;   ///< e.g. 2024
    int month;  ///< 1 to 12
    int day;    ///< 1 to 31
    int hour;   ///< 0 to 23
    int minute; ///< 0 to 59
    int second; ///< 0 to 60
};

/// The present local time. Any thread.
LB_API SLocalTime GetLocalTimeNow();

/// Has the run-time take what its calendar functions take once, for the process or for the calling thread. What another
/// thread got from them stays as it is. Any thread.
LB_API void WarmUpCalendar();

/// When the content of a file was last changed, links followed, in local time; nothing when there is no such file. Any
/// thread.
LB_API std::optional<SLocalTime> GetModificationTime(const std::wstring& path);

/// Fills `buffer` from the system's random source. Throws LbException when there is none. Any thread.
LB_API void FillRandom(void* buffer, std::size_t size);

} // namespace LbOs
