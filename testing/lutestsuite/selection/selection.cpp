#include "testing/lutestsuite/selection/selection.h"

#include "base/os/files.h"
#include "testing/lutestsuite/lutestsuiteenvironment.h"
#include "testing/lutestsuite/lutestsuitesetup.h"
#include "testing/lutestsuite/lutestsuiteutils.h"

void LuTestSuite::LoadTestModules(const LuTestSuiteSetup& setup, LuTestSuiteEnvironment& environment)
{
    environment.LoadTestDLLs();
    for (const std::wstring& name : setup.dlls)
    {
        environment.LoadDLL(name, false);
    }
}

std::vector<LuTestSuite::SUnitTest> LuTestSuite::FindUnitTests(const LuTestSuiteSetup& setup, bool removeDisabled)
{
    return LuTestSuiteUtils::ScanDirectoryForUnitTests(LbOs::GetFullPath(setup.dataDir), removeDisabled);
}

void LuTestSuite::SelectTestCases(const LuTestSuiteSetup& setup, std::vector<SUnitTest>& tests)
{
    LuTestSuiteUtils::FilterTestCases(tests, LbOs::GetFullPath(setup.includeConfig), setup.includes, setup.excludes,
                                      setup.params.testCaseMax, setup.noRegex);
}
