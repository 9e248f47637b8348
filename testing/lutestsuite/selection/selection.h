/// The cases that a setup asks for, for modes that leave the working directory where it is.
#pragma once

#include <vector>

#include "testing/lutestsuite/lutestsuiterun.h"

class LuTestSuiteEnvironment;
struct LuTestSuiteSetup;

namespace LuTestSuite
{

/// Loads the fixed list of test modules and those that the setup names.
void LoadTestModules(const LuTestSuiteSetup& setup, LuTestSuiteEnvironment& environment);

/// The unit tests of the setup's data directory, under their full paths, which are what patterns are matched against.
std::vector<SUnitTest> FindUnitTests(const LuTestSuiteSetup& setup, bool removeDisabled);

/// Keeps the cases that the setup selects. Throws what FilterTestCases throws.
void SelectTestCases(const LuTestSuiteSetup& setup, std::vector<SUnitTest>& tests);

} // namespace LuTestSuite
