/// The last stage of a run: its reports.
#pragma once

#include <vector>

#include "testing/lutestsuite/lutestsuitesetup.h"

namespace LuTestSuiteRun
{

/// Writes the reports that the setup asks for, all from one record, and shows the page if the setup says so. Nothing
/// that goes wrong leaves it or changes the result: each report that cannot be written costs one line.
void WriteReports(const LuTestSuiteSetup& setup, const std::vector<LuTestSuite::SUnitTest>& unitTests,
                  const SRunResult& result);

} // namespace LuTestSuiteRun
