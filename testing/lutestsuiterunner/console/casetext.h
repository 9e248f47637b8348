/// Lines about single cases.
#pragma once

#include <cstdint>
#include <string>

#include "testing/lutestsuiterunner/model/runstate.h"

namespace Runner
{

/// The lines that the user sees when an attempt ends: for a failed attempt, name, result, data file, reason and
/// messages; for an attempt that passed after a failed one, a single line; otherwise nothing. German, lines ended by
/// line feeds.
std::wstring DescribeAttempt(const SPlan& plan, std::uint32_t caseIndex, const SAttempt& attempt);

/// Data file, reason, messages and output (at most `mostLines` lines of each), and, from the stack of the thread at
/// fault, the first frame in the test's module; indented.
std::wstring DescribeFailure(const SPlan& plan, std::uint32_t caseIndex, const SAttempt& attempt,
                             std::size_t mostLines);

/// "0,3 s", "12 ms".
std::wstring FormatTime(std::uint64_t nanoseconds);

} // namespace Runner
