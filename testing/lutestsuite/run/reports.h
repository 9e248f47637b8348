/// Writes the reports at the end of a run.
#pragma once

#include <vector>

#include "testing/lutestsuite/lutestsuitesetup.h"

namespace LuTestSuiteRun
{

/// Throws LbException if a report has a relative path and there is no working directory. Called before the run, which
/// may take long.
void RequireReportPlaces(const LuTestSuiteSetup& setup);

/// Writes the reports that the setup requests, all from one record, and opens the page if requested. Relative paths
/// refer to the environment's working directory; if the cases have deleted it, such a report is not written. Never
/// throws and does not change the result: each report that cannot be written prints one line.
void WriteReports(const LuTestSuiteSetup& setup, LuTestSuiteEnvironment& environment,
                  const std::vector<LuTestSuite::SUnitTest>& unitTests, const SRunResult& result);

} // namespace LuTestSuiteRun
