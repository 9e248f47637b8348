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

    /// The names of suites of other frameworks' tests that have no folder in the data directory. Such suites need no
    /// files, so somebody has forgotten to create the folder. Classes of unit tests are not listed, because their data
    /// may be elsewhere. Empty if patterns select the cases.
    std::vector<std::wstring> withoutFolder;
};

/// Reads the options behind "--". Throws a German message as std::wstring if the options select no data directory, if
/// they select reports or a mode that is not a run, or if the library refuses an option; in the last case the library
/// prints a line.
LuTestSuiteSetup ReadLibraryOptions(const LibraryOptions& options);

/// Loads the fixed list of test modules and those of the setup.
void LoadModules(const LuTestSuiteSetup& setup, LuTestSuiteEnvironment& environment);

/// The cases that a run with this setup would run. Throws what FilterTestCases throws.
SSelection SelectCases(const LuTestSuiteSetup& setup);

} // namespace Runner
