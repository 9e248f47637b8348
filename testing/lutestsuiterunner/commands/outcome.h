/// The output of the commands that make reports.
#pragma once

#include <memory>
#include <string>

#include "testing/lutestsuiterunner/model/runstate.h"

namespace Runner
{

/// Writes the reports of the run in a folder from its journals, prints the outcome of the run, and returns its state.
/// `isInProgress`: another process executes the run. Throws LbException.
std::unique_ptr<CRunState> ReportRun(const std::wstring& folder, bool isInProgress = false);

/// The same for a state that was read before.
void ReportState(const std::wstring& folder, const CRunState& state, bool isInProgress = false);

/// The exit status: 0 for a green run, 1 for a red one.
int GetStatus(const CRunState& state);

} // namespace Runner
