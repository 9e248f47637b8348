/// The end of a run's output.
#pragma once

#include <string>

#include "testing/lutestsuiterunner/model/runstate.h"

namespace Runner
{

/// Lists failed, unreliable and slowest cases, and the command that repeats all failed cases, each alone. A merged run
/// has no such command. German, lines ended by line feeds.
std::wstring DescribeClosing(const CRunState& state, const std::wstring& folder);

/// The command that continues an interrupted run.
std::wstring DescribeResuming(const std::wstring& folder);

/// The argument, quoted for the platform's shell.
std::wstring QuoteForShell(const std::wstring& argument);

} // namespace Runner
