/// The current process: arguments, threads, assertions, forks, and its end.
#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

#include "base/lbexport.h"

namespace LbOs
{

/// The argument vector as wide text, beginning with the program's name. Pass the parameters of main(). On Linux they
/// are converted. On Windows they are ignored, because characters are lost in them, and the system is asked instead.
LB_API std::vector<std::wstring> GetArguments(int count, const char* const* arguments);

/// Runs `function` on a thread with a stack of `stackSize` bytes, waits for its end and passes its exception on.
/// Address space is reserved; memory is used only as the stack grows. Throws LbException if the thread cannot be
/// started.
LB_API void RunOnStack(std::size_t stackSize, const std::function<void()>& function);

/// Names the calling thread for debuggers; the system's maximum length may cut the name.
LB_API void SetCurrentThreadName(const std::wstring& name);

/// Writes one line to the debugger's output on Windows, or to the system log (debug level) on Linux.
LB_API void TraceToSystem(const std::wstring& text);

enum class EAssertAnswer
{
    Ignore, ///< continue
    Break,  ///< stop in the debugger
    Abort,  ///< end the process
};

/// Shows a failed assertion to the user and asks what to do. Blocks until answered. Without a desktop, writes the text
/// to standard error and returns Ignore.
LB_API EAssertAnswer ShowAssertDialog(const std::wstring& text);

/// Stops in the debugger; ends the process if there is none.
LB_API void BreakIntoDebugger();

/// Functions that are called around each fork of the process, on the forking thread.
struct SForkHandlers
{
    void (*before)() noexcept; ///< must not return with a lock that others take while holding a lock of the C library
    void (*afterInParent)() noexcept; ///< also called when the fork failed
    void (*afterInChild)() noexcept;  ///< called after the handlers that were registered earlier
};

/// Registers the handlers for the life of the process. No effect on Windows, which does not fork.
LB_API void CallAroundForks(const SForkHandlers& handlers);

/// Id of the current process.
LB_API unsigned long GetProcessId();

/// Calls the function when the process is ended by std::quick_exit(). No effect on Windows, whose run-time lacks it.
LB_API void CallAtQuickExit(void (*function)());

/// Ends the process at once: runs no destructors and exit handlers and flushes no streams. Callable from any thread.
[[noreturn]] LB_API void EndProcess(int status);

} // namespace LbOs
