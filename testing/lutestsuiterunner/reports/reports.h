/// The reports of a run, all from its state: report.xml, report.html, junit.xml, summary.json.
#pragma once

#include <string>

#include "testing/lutestsuiterunner/model/runstate.h"

namespace Runner
{

/// Writes the four reports into a run's folder, each to a temporary file that then replaces the old one, and the lists
/// of WriteProcessLists. The same state and the same notes of crashed hosts give the same bytes. `isInProgress`:
/// another process executes the run. Throws LbException with a German message if junit.xml, summary.json or a list
/// cannot be written; for the other two reports the library prints a line.
void WriteReports(const std::wstring& folder, const CRunState& state, bool isInProgress = false);

} // namespace Runner
