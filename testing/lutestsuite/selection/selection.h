/// The cases that a setup selects, for modes that do not change the working directory.
#pragma once

#include <vector>

#include "testing/lutestsuite/lutestsuiterun.h"

class LuTestSuiteEnvironment;
struct LuTestSuiteSetup;

namespace LuTestSuite
{

/// Loads the fixed list of test modules and those that the setup names.
void LoadTestModules(const LuTestSuiteSetup& setup, LuTestSuiteEnvironment& environment);

/// The unit tests of the setup's data directory, with full paths, because patterns are matched against full paths.
std::vector<SUnitTest> FindUnitTests(const LuTestSuiteSetup& setup, bool removeDisabled);

/// Keeps the cases that the setup selects. Throws like FilterTestCases.
void SelectTestCases(const LuTestSuiteSetup& setup, std::vector<SUnitTest>& tests);

} // namespace LuTestSuite
