/// The library's own reports: report.xml and report.html.
#pragma once

#include <string>

#include "testing/lutestsuite/lutestsuitereport.h"
#include "testing/lutestsuiterunner/model/runstate.h"

namespace Runner
{

/// The record of a run as the library makes it of one that it has run itself, with the notes of GetCaseNotes as lines
/// of information.
LuTestSuiteReport::SReportData MakeReportData(const CRunState& state);

/// Writes both files. One that cannot be written costs a line of output.
void WriteRunReports(const std::wstring& xmlPath, const std::wstring& htmlPath, const CRunState& state);

} // namespace Runner
