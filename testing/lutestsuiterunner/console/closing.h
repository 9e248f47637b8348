/// The end of a run's output.
#pragma once

#include <string>

#include "testing/lutestsuiterunner/model/runstate.h"

namespace Runner
{

/// Failed cases by name, unreliable ones, slowest ones, and the command that repeats each failed case alone, unless the
/// run is merged of several. German, lines ended by line feeds.
std::wstring DescribeClosing(const CRunState& state, const std::wstring& folder);

/// The command that goes on with a run that was broken off.
std::wstring DescribeResuming(const std::wstring& folder);

/// The argument as the platform's shell takes it.
std::wstring QuoteForShell(const std::wstring& argument);

} // namespace Runner
