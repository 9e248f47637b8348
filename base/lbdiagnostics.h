/// Traces for developers; never output for users.
#pragma once

#include <functional>
#include <string>

#include "base/lbexport.h"
#include "base/lbformat.h"

namespace LbDiagnostics
{

/// Passes a line to the listener, if one is set, and to the system's trace (debugger output on Windows, the system log
/// on Linux). Callable from any thread.
LB_API void Trace(const std::wstring& text);

/// Sets the listener (an empty function removes it) and returns the former one. The listener is called on the thread
/// that traces, under a lock.
LB_API std::function<void(const std::wstring&)> SetListener(std::function<void(const std::wstring&)> listener);

} // namespace LbDiagnostics
