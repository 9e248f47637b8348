/// What the commands that make reports print.
#pragma once

#include <memory>
#include <string>

#include "testing/lutestsuiterunner/model/runstate.h"

namespace Runner
{

/// Makes the reports of the run that a folder holds from its journals, prints what has become of the run, and returns
/// its state. Throws LbException.
std::unique_ptr<CRunState> ReportRun(const std::wstring& folder);

/// The exit status: 0 for a green run, 1 for a red one.
int GetStatus(const CRunState& state);

} // namespace Runner
