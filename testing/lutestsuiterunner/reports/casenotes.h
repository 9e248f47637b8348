/// What reports show of a case apart from its result and its messages.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "testing/lutestsuiterunner/model/runstate.h"

namespace Runner
{

/// German lines without line feeds: quarantine, unreliable results, failures only in a shared process, attempts,
/// duplicate results, why a process ended, and its memory dump.
std::vector<std::wstring> GetCaseNotes(const CRunState& state, std::uint32_t caseIndex);

/// The line that best explains why a case failed: its first error message, else why its process ended, else its result.
std::wstring GetFailureLine(const SAttempt& attempt);

} // namespace Runner
