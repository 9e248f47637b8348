/// The entry of the host: one call, one mode.

#include "testing/lutestsuite/lutestsuiteenvironment.h"
#include "testing/lutestsuite/lutestsuiterun.h"
#include "testing/lutestsuite/lutestsuitesetup.h"
#include "testing/lutestsuite/lutestsuiteutils.h"
#include "testing/lutestsuite/utils/warning.h"

namespace
{

/// A mode that is known but not part of this version: it says so and does nothing.
struct SMissingMode
{
    const wchar_t* option;
    bool (*isRequested)(const LuTestSuiteSetup& setup);
};

/// In the order in which modes are tested.
constexpr SMissingMode c_AuxiliaryModes[] = {
    {L"--query-mode", [](const LuTestSuiteSetup& setup) { return setup.queryMode; }},
    {L"--archive-run", [](const LuTestSuiteSetup& setup) { return !setup.archiveRun.empty(); }},
    {L"--list-duplicates", [](const LuTestSuiteSetup& setup) { return setup.duplicateMode == eDM_List; }},
    {L"--delete-duplicates", [](const LuTestSuiteSetup& setup) { return setup.duplicateMode == eDM_Delete; }},
    {L"--list-disabled", [](const LuTestSuiteSetup& setup) { return setup.listDisabled; }},
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
    if (!setup.diffInputs.empty())
    {
        GenerateReportDiff(setup);
        return true;
    }
    for (const SMissingMode& mode : c_AuxiliaryModes)
    {
        if (endsAsMissing(mode, setup))
        {
            return true;
        }
    }
    if (setup.dataDir.empty() || endsAsMissing(c_ChildProcessMode, setup))
    {
        return true;
    }
    return isPassed(LuTestSuiteRun::Run(setup, environment).stats);
}
