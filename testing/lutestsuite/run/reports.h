/// The last stage of a run: its reports.
#pragma once

#include <vector>

#include "testing/lutestsuite/lutestsuitesetup.h"

namespace LuTestSuiteRun
{

/// Throws LbException when a report has a relative path and there is no working directory: ahead of a run that may take
/// long.
void RequireReportPlaces(const LuTestSuiteSetup& setup);

/// Writes the reports that the setup asks for, all from one record, and shows the page if the setup says so. Relative
/// paths count from the environment's working directory; when the cases have removed it, such a report is written
/// nowhere. Nothing that goes wrong leaves it or changes the result: each report that cannot be written costs one line.
void WriteReports(const LuTestSuiteSetup& setup, LuTestSuiteEnvironment& environment,
                  const std::vector<LuTestSuite::SUnitTest>& unitTests, const SRunResult& result);

} // namespace LuTestSuiteRun
