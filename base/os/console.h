/// The process's console.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "base/lbexport.h"

namespace LbOs
{

/// Output code page of the console; 0 when there is none (no console, or a platform without code pages).
LB_API std::uint32_t GetConsoleCodePage();

/// Sets it; failure (no terminal) is ignored, since only terminals render by it. 0 does nothing.
LB_API void SetConsoleCodePage(std::uint32_t codePage);

/// Writes bytes to the run-time's standard output or error stream, in order with what the run-time's own stdio
/// functions write there, and flushes. Line feeds become the platform's line ends where the stream is in text mode.
/// Bytes that cannot be written (closed stream, full disk) are dropped. Callers serialise calls that must not
/// interleave.
LB_API void WriteStandardOutput(std::string_view bytes);
LB_API void WriteStandardError(std::string_view bytes);

/// Has the run-time allocate the buffer of standard output where it does so with the first output otherwise. Not while
/// other threads use the stream.
LB_API void AllocateOutputBuffer() noexcept;

/// True when standard output is a terminal that understands ANSI escape sequences; switches them on where the platform
/// wants that.
LB_API bool EnableTerminalSequences();

/// Value of an environment variable; empty when unset.
LB_API std::wstring GetEnvironmentText(const wchar_t* name);

} // namespace LbOs
