/// The cases that the library's options select.
#pragma once

#include <vector>

#include "testing/lutestsuite/lutestsuiterun.h"
#include "testing/lutestsuite/lutestsuitesetup.h"
#include "testing/lutestsuiterunner/settings/options.h"

class LuTestSuiteEnvironment;

namespace Runner
{

/// Unit tests with full paths, in the order of a run.
struct SSelection
{
    std::vector<LuTestSuite::SUnitTest> enabled;
    std::vector<LuTestSuite::SUnitTest> disabled; ///< the selected cases that their descriptions disable

    /// Suites of other frameworks' tests that have no folder in the data directory, by name. They need no files, so the
    /// folder has been forgotten. Other classes may have their data elsewhere. Empty if patterns select the cases.
    std::vector<std::wstring> withoutFolder;
};

/// Reads the options behind "--". Throws a German message as std::wstring if they select no data directory, or a mode
/// that is not a run, or reports; the library prints a line for options that it refuses.
LuTestSuiteSetup ReadLibraryOptions(const LibraryOptions& options);

/// Loads the fixed list of test modules and those of the setup.
void LoadModules(const LuTestSuiteSetup& setup, LuTestSuiteEnvironment& environment);

/// What a run of the setup would run. Throws what FilterTestCases throws.
SSelection SelectCases(const LuTestSuiteSetup& setup);

} // namespace Runner
