/// Diagnostics for developers: traces, never user output.
#pragma once

#include <functional>
#include <string>

#include "base/lbexport.h"
#include "base/lbformat.h"

namespace LbDiagnostics
{

/// Hands a line to the listener, if one is set, and to the system's trace (debugger output on Windows, the system log
/// on Linux). Any thread.
LB_API void Trace(const std::wstring& text);

/// Sets the one listener, or none when empty; returns the former one. It is called by the tracing thread, under a lock.
LB_API std::function<void(const std::wstring&)> SetListener(std::function<void(const std::wstring&)> listener);

} // namespace LbDiagnostics
