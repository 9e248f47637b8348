/// Writes the reports at the end of a run.
#pragma once

#include <vector>

#include "testing/lutestsuite/lutestsuitesetup.h"

namespace LuTestSuiteRun
{

/// Throws LbException if a report has a relative path and there is no working directory. Called before the run, so that
/// the user learns of this at once.
void RequireReportPlaces(const LuTestSuiteSetup& setup);

/// Writes the reports that the setup requests, all from one record, and opens the page if requested. Relative paths
/// refer to the environment's working directory; if cases have deleted it, reports with relative paths are not written.
/// Prints one line for each report that cannot be written; neither throws nor changes the result.
void WriteReports(const LuTestSuiteSetup& setup, LuTestSuiteEnvironment& environment,
                  const std::vector<LuTestSuite::SUnitTest>& unitTests, const SRunResult& result);

} // namespace LuTestSuiteRun
