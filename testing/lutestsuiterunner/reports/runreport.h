/// The library's own reports: report.xml and report.html.
#pragma once

#include <string>

#include "testing/lutestsuite/lutestsuitereport.h"
#include "testing/lutestsuiterunner/model/runstate.h"

namespace Runner
{

/// The same record that the library makes of its own runs, with the notes of GetCaseNotes as information lines.
LuTestSuiteReport::SReportData MakeReportData(const CRunState& state);

/// Writes both files. Prints a line for a file that cannot be written.
void WriteRunReports(const std::wstring& xmlPath, const std::wstring& htmlPath, const CRunState& state);

} // namespace Runner
