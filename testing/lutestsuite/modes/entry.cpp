/// The function that a host calls: each call runs one mode.

#include "testing/lutestsuite/lutestsuiteenvironment.h"
#include "testing/lutestsuite/lutestsuiterun.h"
#include "testing/lutestsuite/lutestsuitesetup.h"
#include "testing/lutestsuite/lutestsuiteutils.h"

namespace
{

using Setup = LuTestSuiteSetup;
using Environment = LuTestSuiteEnvironment;

struct SMode
{
    bool (*isRequested)(const Setup& setup);
    void (*run)(const Setup& setup, Environment& environment);
};

/// The modes in order of precedence: only the first requested mode runs.
constexpr SMode c_AuxiliaryModes[] = {
    {[](const Setup& setup) { return !setup.diffInputs.empty(); },
     [](const Setup& setup, Environment& /*environment*/) { LuTestSuiteUtils::GenerateReportDiff(setup); }},
    {[](const Setup& setup) { return setup.queryMode; }, LuTestSuiteUtils::RunQueryMode},
    {[](const Setup& setup) { return !setup.archiveRun.empty(); },
     [](const Setup& setup, Environment& /*environment*/) { LuTestSuiteUtils::RunArchiveMode(setup); }},
    {[](const Setup& setup) { return setup.duplicateMode != eDM_None; }, LuTestSuiteUtils::RunDuplicateDetection},
    {[](const Setup& setup) { return setup.listDisabled; }, LuTestSuiteUtils::ListDisabledTestCases},
};

/// Warnings do not affect the verdict; a run that executed nothing counts as passed.
bool isPassed(const LuTestSuiteRun::SStats& stats)
{
    return stats.unitTestsExecuted == stats.unitTestsPassed;
}

} // namespace

bool LuTestSuiteUtils::RunCommandLine(LuTestSuiteEnvironment& environment, int argumentCount,
                                      const wchar_t* const* arguments)
{
    LuTestSuiteSetup setup;
    if (!ProcessCommandLine(setup, argumentCount, arguments))
    {
        return false;
    }
    for (const SMode& mode : c_AuxiliaryModes)
    {
        if (mode.isRequested(setup))
        {
            mode.run(setup, environment);
            return true;
        }
    }
    if (setup.dataDir.empty())
    {
        return true;
    }
    if (!setup.responseEventId.empty())
    {
        LuTestSuiteRun::RunExternalExecution(setup, environment);
        return true;
    }
    return isPassed(LuTestSuiteRun::Run(setup, environment).stats);
}
