/// What the commands that make reports print.
#pragma once

#include <string>

#include "testing/lutestsuiterunner/model/runstate.h"

namespace Runner
{

/// German lines: numbers of the verdicts, what is wrong with the run as a whole, the first missing cases, and where the
/// reports are.
std::wstring DescribeOutcome(const CRunState& state, const std::wstring& folder);

/// Makes the reports of the run that a folder holds, prints its outcome, and returns the exit status: 0 for a green
/// run, 1 for a red one. Throws LbException.
int ReportRun(const std::wstring& folder);

} // namespace Runner
