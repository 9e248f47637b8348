/// The entry of the host: one call, one mode.

#include "testing/lutestsuite/lutestsuiteenvironment.h"
#include "testing/lutestsuite/lutestsuiterun.h"
#include "testing/lutestsuite/lutestsuitesetup.h"
#include "testing/lutestsuite/lutestsuiteutils.h"
#include "testing/lutestsuite/utils/warning.h"

namespace
{

using Setup = LuTestSuiteSetup;
using Environment = LuTestSuiteEnvironment;

struct SMode
{
    bool (*isRequested)(const Setup& setup);
    void (*run)(const Setup& setup, Environment& environment);
};

/// In the order in which modes are tested; the first that is requested is the only one that runs.
constexpr SMode c_AuxiliaryModes[] = {
    {[](const Setup& setup) { return !setup.diffInputs.empty(); },
     [](const Setup& setup, Environment& /*environment*/) { LuTestSuiteUtils::GenerateReportDiff(setup); }},
    {[](const Setup& setup) { return setup.queryMode; }, LuTestSuiteUtils::RunQueryMode},
    {[](const Setup& setup) { return !setup.archiveRun.empty(); },
     [](const Setup& setup, Environment& /*environment*/) { LuTestSuiteUtils::RunArchiveMode(setup); }},
    {[](const Setup& setup) { return setup.duplicateMode != eDM_None; }, LuTestSuiteUtils::RunDuplicateDetection},
    {[](const Setup& setup) { return setup.listDisabled; }, LuTestSuiteUtils::ListDisabledTestCases},
};

/// A mode that is known but not part of this version: it says so and does nothing.
struct SMissingMode
{
    const wchar_t* option;
    bool (*isRequested)(const LuTestSuiteSetup& setup);
};

constexpr SMissingMode c_ChildProcessMode = {
    L"--response-event-id", [](const LuTestSuiteSetup& setup) { return !setup.responseEventId.empty(); }};

bool endsAsMissing(const SMissingMode& mode, const LuTestSuiteSetup& setup)
{
    if (!mode.isRequested(setup))
    {
        return false;
    }
    LuTestSuite::WriteWarning(L"Warnung: Der Modus %s ist in dieser Version nicht enthalten.\n", mode.option);
    return true;
}

/// Warnings do not spoil a verdict, and a run in which nothing was executed has none to spoil.
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
    if (setup.dataDir.empty() || endsAsMissing(c_ChildProcessMode, setup))
    {
        return true;
    }
    return isPassed(LuTestSuiteRun::Run(setup, environment).stats);
}
