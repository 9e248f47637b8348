/// The process's console.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "base/lbexport.h"

namespace LbOs
{

/// Output code page of the console; 0 if there is no console or the platform has no code pages.
LB_API std::uint32_t GetConsoleCodePage();

/// Sets the output code page. Ignores failure, because only a terminal needs the code page. 0 has no effect.
LB_API void SetConsoleCodePage(std::uint32_t codePage);

/// Writes bytes to the run-time's standard output or error stream, after everything that stdio functions wrote there.
/// Flushes the stream. In text mode line feeds become the platform's line ends. Bytes that cannot be written (closed
/// stream, full disk) are dropped. Callers serialise calls that must not interleave.
LB_API void WriteStandardOutput(std::string_view bytes);
LB_API void WriteStandardError(std::string_view bytes);

/// True if this process has dropped bytes for standard output for any reason other than a closed stream. Also true if
/// WriteStandardOutput could not flush bytes that stdio functions had written. Callable from any thread.
LB_API bool IsStandardOutputLost() noexcept;

/// Makes the run-time allocate the buffer of standard output now rather than with the first output. No other thread may
/// use the stream during the call.
LB_API void AllocateOutputBuffer() noexcept;

/// True if standard output is a terminal that understands ANSI escape sequences. Enables them where the platform
/// requires it.
LB_API bool EnableTerminalSequences();

/// The width in columns if standard output is a terminal that understands ANSI escape sequences; otherwise 0. Enables
/// the sequences where the platform requires it. Queries the terminal with each call, because the user may change the
/// size.
LB_API std::uint32_t GetOutputTerminalWidth();

/// The width in columns if standard error is a terminal that can rewrite a line; otherwise 0. Queries the terminal with
/// each call, because the user may change the size.
LB_API std::uint32_t GetErrorTerminalWidth();

/// True if standard input is a terminal.
LB_API bool IsInputTerminal();

/// Value of an environment variable; empty if unset.
LB_API std::wstring GetEnvironmentText(const wchar_t* name);

/// Sets an environment variable of this process, which child processes inherit. No other thread may use the environment
/// during the call. Ignores failure.
LB_API void SetEnvironmentText(const wchar_t* name, const std::wstring& value);

} // namespace LbOs
