/// Files that store test output that differs from its reference.
///
/// Two files may be in the folder of a reference "<name>". "<name>.received" contains the output that differs from the
/// reference. "<name>.received.runs" contains, separated by blanks, the number of runs in a row with this output
/// (decimal), the checksum of the output, and the checksum of the last run's name (32 hexadecimal digits each). For
/// output with another checksum, the number counts as 0.
///
/// A run consists of a host process and all processes that it starts. It counts once, however often it repeats a case
/// or compares with one reference. The environment variable LUTESTSUITE_RUN contains the name of the run; if the
/// variable is empty, each process is a run of its own.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "base/lbexport.h"

namespace LbReceivedFile
{

inline constexpr const wchar_t* c_Suffix = L".received";
inline constexpr const wchar_t* c_RunsSuffix = L".received.runs";
inline constexpr const wchar_t* c_Pattern = L"*.received";
inline constexpr const wchar_t* c_RunsPattern = L"*.received.runs";

/// The environment variable that names the run.
inline constexpr const wchar_t* c_RunVariable = L"LUTESTSUITE_RUN";

/// How many runs in a row must have the same output before the output counts as reproducible. The number in the file
/// never exceeds this.
inline constexpr std::uint32_t c_EnoughRuns = 3;

/// Names a new run for this process and those that it starts, unless the variable already names a run. Throws
/// LbException if the system has no random source. No other thread may use the environment during the call.
LB_API void NameRun();

/// True if `name` is the name or path of one of the two files. Any thread, like the functions below.
LB_API bool IsLeft(std::wstring_view name) noexcept;

/// Compares bytes with the reference at an absolute path and updates the two files: removes them if there is no
/// difference, otherwise writes each as a whole. With `isText`, "\r\n" counts as "\n" in the bytes and in the
/// reference. Returns a German description of the first difference, in one line; empty if there is none. Throws
/// LbException with a German message if a file cannot be read or written.
LB_API std::wstring Compare(std::string_view received, const std::wstring& reference, bool isText);

/// The checksum of the bytes, as stored in "<name>.received.runs".
LB_API std::wstring GetChecksum(std::string_view bytes);

/// How many runs in a row had these bytes as output, according to "<reference>.received.runs"; 0 if there is no such
/// file, if it is damaged, or if it belongs to other bytes.
LB_API std::uint32_t CountRuns(std::string_view received, const std::wstring& reference);

} // namespace LbReceivedFile
