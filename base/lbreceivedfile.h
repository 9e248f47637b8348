/// Files with the output of a test that differs from its reference.
///
/// Beside a reference "<name>" there may be two files. "<name>.received" contains the output that differs from it.
/// "<name>.received.runs" tells in how many runs in a row the output was the same: a decimal number, a blank, and the
/// checksum of the output as 32 hexadecimal digits. The number counts only for output with this checksum. Each
/// comparison counts as a run, also those of a repeated case (option -r).
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

/// How many runs in a row must have the same output before it counts as reproducible. The number in the file is at most
/// this one.
inline constexpr std::uint32_t c_EnoughRuns = 3;

/// True for the name or path of one of the two files. All functions of this header may be called from any thread.
LB_API bool IsLeft(std::wstring_view name) noexcept;

/// Compares bytes with the reference at an absolute path and keeps the two files up to date: removed if there is no
/// difference, otherwise written as a whole. With `isText`, line ends "\r\n" count as "\n" in both. Returns a German
/// description of the first difference, in one line; empty if there is none. Throws LbException with a German message
/// if a file cannot be read or written.
LB_API std::wstring Compare(std::string_view received, const std::wstring& reference, bool isText);

/// The checksum of the bytes, as stored in the second file.
LB_API std::wstring GetChecksum(std::string_view bytes);

/// How many runs in a row had these bytes as output, according to "<reference>.received.runs"; 0 if there is no such
/// file, if it is damaged, or if it belongs to other bytes.
LB_API std::uint32_t CountRuns(std::string_view received, const std::wstring& reference);

} // namespace LbReceivedFile
