/// The cases that the library's options select.
#pragma once

#include <vector>

#include "testing/lutestsuite/lutestsuiterun.h"
#include "testing/lutestsuite/lutestsuitesetup.h"
#include "testing/lutestsuiterunner/settings/options.h"

class LuTestSuiteEnvironment;

namespace Runner
{

/// Reads the options behind "--". Throws a German message as std::wstring if they select no data directory, or a mode
/// that is not a run; the library prints a line for options that it refuses.
LuTestSuiteSetup ReadLibraryOptions(const LibraryOptions& options);

/// Loads the modules of the setup and finds the unit tests that it selects, with full paths, in the order of a run.
/// Throws what FilterTestCases throws.
std::vector<LuTestSuite::SUnitTest> SelectUnitTests(const LuTestSuiteSetup& setup, LuTestSuiteEnvironment& environment,
                                                    bool removeDisabled);

/// True if the case's description disables it.
bool IsDisabled(const LuTestSuite::STestCase& testCase);

} // namespace Runner
