/// The present process: its arguments, its threads, its last words.
#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

#include "base/lbexport.h"

namespace LbOs
{

/// The argument vector as wide text, the program's name first. Takes what main() got, since one platform knows it from
/// nowhere else; the other one asks the system, because main()'s bytes have lost characters there.
LB_API std::vector<std::wstring> GetArguments(int count, const char* const* arguments);

/// Runs `function` to its end on a thread with a stack of `stackSize` bytes (address space is reserved, memory is used
/// only as the stack grows) and passes its exception on. Throws LbException when the thread cannot be had.
LB_API void RunOnStack(std::size_t stackSize, const std::function<void()>& function);

/// Name of the calling thread as debuggers show it (cut to what the system takes).
LB_API void SetCurrentThreadName(const std::wstring& name);

/// Hands one line to whoever traces the process: the debugger's output on Windows, the system log (debug level) on
/// Linux.
LB_API void TraceToSystem(const std::wstring& text);

enum class EAssertAnswer
{
    Ignore, ///< go on
    Break,  ///< stop in the debugger
    Abort,  ///< end the process
};

/// Shows a failed assertion to the user and asks what to do. Where there is no desktop the text goes to standard error
/// and the answer is Ignore. Blocks until answered.
LB_API EAssertAnswer ShowAssertDialog(const std::wstring& text);

/// Stops in the debugger; ends the process when there is none.
LB_API void BreakIntoDebugger();

/// What is called around each fork of the process, on the forking thread.
struct SForkHandlers
{
    void (*before)() noexcept; ///< must not leave locks behind that a thread takes while it holds one of the run-time
    void (*afterInParent)() noexcept; ///< also when the fork failed
    void (*afterInChild)() noexcept;  ///< behind those that were there earlier
};

/// From now on the handlers are called, for the life of the process. Windows does not fork.
LB_API void CallAroundForks(const SForkHandlers& handlers);

/// Number of the present process.
LB_API unsigned long GetProcessId();

/// Ends the present process at once: no destructor runs, no stream is flushed, nobody is asked. Any thread.
[[noreturn]] LB_API void EndProcess(int status);

} // namespace LbOs
