/// The output of the commands that make reports.
#pragma once

#include <functional>
#include <memory>
#include <string>

#include "testing/lutestsuiterunner/journal/reader.h"

namespace Runner
{

using LoadState = std::function<std::unique_ptr<CRunState>(const std::wstring& folder)>;

/// Writes the reports of the run in a folder from its journals, prints the outcome of the run, and returns its state.
/// Throws LbException.
std::unique_ptr<CRunState> ReportRun(const std::wstring& folder, const LoadState& load = LoadRun);

/// As ReportRun, for a run that another process executes. That process writes reports at the end of the run; this
/// function does not leave older reports in their place. If the run ends meanwhile, behaves like ReportRun. `load`
/// reads the journals.
std::unique_ptr<CRunState> ReportRunInProgress(const std::wstring& folder, const LoadState& load = LoadRun);

/// As ReportRun, for a state that was read before.
void ReportState(const std::wstring& folder, const CRunState& state);

/// The exit status: 0 for a green run, 1 for a red one.
int GetStatus(const CRunState& state);

} // namespace Runner
