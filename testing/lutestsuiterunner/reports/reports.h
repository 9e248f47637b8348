/// The reports of a run, all from its state: report.xml, report.html, junit.xml, summary.json.
#pragma once

#include <string>

#include "testing/lutestsuiterunner/model/runstate.h"

namespace Runner
{

/// Writes the four reports into a run's folder, each to a temporary file that then replaces the old one. The same state
/// gives the same bytes. Throws LbException with a German message if junit.xml or summary.json cannot be written; for
/// the other two the library prints a line.
void WriteReports(const std::wstring& folder, const CRunState& state);

} // namespace Runner
