/// A normal run, stage by stage.

#include "base/lbdatetime.h"
#include "base/lbtimer.h"
#include "base/ludebugserialization.h"
#include "base/os/childprocess.h"
#include "testing/lutestsuite/lutestsuiteout.h"
#include "testing/lutestsuite/lutestsuitesetup.h"
#include "testing/lutestsuite/lutestsuiteutils.h"
#include "testing/lutestsuite/run/caserunner.h"
#include "testing/lutestsuite/run/children/leavingchildren.h"
#include "testing/lutestsuite/run/consolelines.h"
#include "testing/lutestsuite/run/crashnotes.h"
#include "testing/lutestsuite/run/debugfolders.h"
#include "testing/lutestsuite/run/delivery.h"
#include "testing/lutestsuite/run/plan.h"
#include "testing/lutestsuite/run/preparation.h"
#include "testing/lutestsuite/run/reports.h"
#include "testing/lutestsuite/run/statistics.h"
#include "testing/lutestsuite/run/workerthreads.h"

namespace LuTestSuiteRun
{

namespace
{

using UnitTests = std::vector<LuTestSuite::SUnitTest>;

/// A host's own list of unit tests is run as it is.
UnitTests gather(const LuTestSuiteSetup& setup, const CPreparation& preparation)
{
    if (!setup.unitTests.empty())
    {
        return setup.unitTests;
    }
    UnitTests unitTests = LuTestSuiteUtils::ScanDirectoryForUnitTests(preparation.GetDataDirectory(), true);
    LuTestSuiteUtils::FilterTestCases(unitTests, preparation.GetIncludeConfig(), setup.includes, setup.excludes,
                                      setup.params.testCaseMax, setup.noRegex);
    return unitTests;
}

/// Runs the cases one after another on the calling thread.
void executeSequentially(const LuTestSuiteSetup& setup, const UnitTests& unitTests, const SChildSettings& childSettings,
                         PlannedCases toCome)
{
    if (toCome.empty())
    {
        return;
    }
    const CDebugFolders debugFolders;
    CSpareChildren spares(childSettings);
    CCaseRunner runner(setup.checkCallback, spares);
    CCaseLines lines(unitTests, setup.params);
    while (!toCome.empty())
    {
        if (setup.checkCallback())
        {
            WriteCanceled();
            return;
        }
        const SPlannedCase& planned = toCome.front();
        toCome = toCome.subspan(1);
        LuDebugSerializationGeneric::SetDefaultOutputDirectory(debugFolders.GetFolder(planned.testCase.name));
        lines.WriteHeader(planned.info);
        runner.Run(planned, [toCome] { return toCome; });
        DeliverCase(lines, setup.resultCallback, planned.info);
    }
}

void planAndExecute(const LuTestSuiteSetup& setup, const UnitTests& unitTests, const SChildSettings& childSettings,
                    SRunResult& result)
{
    const SPlan plan = MakePlan(unitTests, setup.params, result.cases);
    if (plan.hasExternal)
    {
        // Before any case makes the process large.
        LbOs::CChildProcess::PrepareStarts();
    }
    ExecuteInParallel(setup, unitTests, childSettings, plan.parallel);
    executeSequentially(setup, unitTests, childSettings, plan.sequential);
}

/// The run up to its summary. The working directory is restored when it returns, so that the user's paths of reports
/// count from there.
SRunResult runCases(const LuTestSuiteSetup& setup, LuTestSuiteEnvironment& environment, UnitTests& unitTests,
                    CLeavingChildren& leaving)
{
    constexpr const wchar_t* c_TimeFormat = L"Y-m-d H:i:s";
    // Before the modules are loaded, so that their handlers come first.
    const CCrashNotes notes;
    const CPreparation preparation(setup, environment);
    unitTests = gather(setup, preparation);

    SRunResult result;
    const LbTimer timer(LbTimer::eR_NanoSecond);
    result.stats.startTime = LbDateTime::FormatNow(c_TimeFormat);
    if (!unitTests.empty())
    {
        const SChildSettings childSettings = {preparation.GetDataDirectory(), setup.dlls, setup.params.assertDialog,
                                              &leaving};
        planAndExecute(setup, unitTests, childSettings, result);
        CountCases(result.cases, unitTests.size(), result.stats);
        WriteSummary(unitTests, result.stats);
    }
    result.stats.totalTime = timer.GetElapsed();
    result.stats.endTime = LbDateTime::FormatNow(c_TimeFormat);
    return result;
}

} // namespace

SRunResult Run(const LuTestSuiteSetup& setup, LuTestSuiteEnvironment& environment)
{
    RequireReportPlaces(setup);
    // Last of all, the run waits for children that leave.
    CLeavingChildren leaving;
    UnitTests unitTests;
    SRunResult result = runCases(setup, environment, unitTests, leaving);
    WriteReports(setup, environment, unitTests, result);
    return result;
}

} // namespace LuTestSuiteRun
