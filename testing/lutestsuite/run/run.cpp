/// A normal run, stage by stage.

#include <typeinfo>

#include "base/lbdatetime.h"
#include "base/lbtimer.h"
#include "base/ludebugserialization.h"
#include "base/os/childprocess.h"
#include "base/os/signalstate.h"
#include "testing/lutestsuite/environment/crashnotes.h"
#include "testing/lutestsuite/lutestsuiteout.h"
#include "testing/lutestsuite/lutestsuitesetup.h"
#include "testing/lutestsuite/lutestsuiteutils.h"
#include "testing/lutestsuite/run/caserunner.h"
#include "testing/lutestsuite/run/children/leavingchildren.h"
#include "testing/lutestsuite/run/consolelines.h"
#include "testing/lutestsuite/run/debugfolders.h"
#include "testing/lutestsuite/run/plan.h"
#include "testing/lutestsuite/run/preparation.h"
#include "testing/lutestsuite/run/reports.h"
#include "testing/lutestsuite/run/runconsole.h"
#include "testing/lutestsuite/run/runevents.h"
#include "testing/lutestsuite/run/workerthreads.h"
#include "testing/lutestsuite/settings/setupdefaults.h"

namespace LuTestSuiteRun
{

namespace
{

using UnitTests = std::vector<LuTestSuite::SUnitTest>;

/// Returns the unit tests to run: the host's own list unchanged if there is one, otherwise the selected cases of the
/// data directory.
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
void executeSequentially(CRunEvents& events, const SChildSettings& childSettings, PlannedCases toCome)
{
    if (toCome.empty())
    {
        return;
    }
    const CDebugFolders debugFolders;
    CSpareChildren spares(childSettings);
    CCaseRunner runner(events, spares);
    while (!toCome.empty())
    {
        if (events.IsCanceled())
        {
            WriteCanceled();
            return;
        }
        const SPlannedCase& planned = toCome.front();
        toCome = toCome.subspan(1);
        if (!events.IsNeeded(planned))
        {
            continue;
        }
        LuDebugSerializationGeneric::SetDefaultOutputDirectory(debugFolders.GetFolder(planned.testCase.name));
        runner.Run(planned, [toCome] { return toCome; });
    }
}

void execute(const SParams& params, const SChildSettings& childSettings, const SPlan& plan, CRunEvents& events,
             CRunConsole& console)
{
    ExecuteInParallel(params, childSettings, plan.parallel, events, console);
    executeSequentially(events, childSettings, plan.sequential);
}

/// The host's observer, and the options of the run.
struct SWatch
{
    IRunObserver& observer;
    const SRunOptions& options;
};

/// If no code of the host runs between two cases, the result of a case is written together with the header of the next
/// case.
LuTestSuite::EBatchEnd getResultEnd(const LuTestSuiteSetup& setup, const IRunObserver& observer)
{
    const bool isUnwatched = typeid(observer) == typeid(IRunObserver) && LuTestSuite::HasDefaultCallbacks(setup);
    return isUnwatched ? LuTestSuite::EBatchEnd::Defer : LuTestSuite::EBatchEnd::Write;
}

/// Runs everything up to and including the summary. Restores the user's working directory before it returns, because
/// the user's report paths refer to that directory.
SRunResult runCases(const LuTestSuiteSetup& setup, LuTestSuiteEnvironment& environment, const SWatch& watch,
                    UnitTests& unitTests, CLeavingChildren& leaving)
{
    constexpr const wchar_t* c_TimeFormat = L"Y-m-d H:i:s";
    const CPreparation preparation(setup, environment);
    unitTests = gather(setup, preparation);
    CRunConsole console(setup, unitTests, getResultEnd(setup, watch.observer));
    CRunEvents events(setup.checkCallback, {&watch.observer, &console}, watch.options.isNeeded);

    SRunResult result;
    const LbTimer timer(LbTimer::eR_NanoSecond);
    const std::wstring startTime = LbDateTime::FormatNow(c_TimeFormat);
    const SPlan plan = MakePlan(unitTests, setup.params, result.cases);
    LbOs::RecordSignals();
    if (plan.hasExternal)
    {
        // Forks the keeper before the run allocates much memory, because the keeper is a copy of this process.
        LbOs::CChildProcess::PrepareStarts();
    }
    events.Plan({unitTests, setup.params, result.cases, watch.options.attempt});
    CSharedListings listings;
    const SChildSettings childSettings = {
        preparation.GetDataDirectory(), setup.dlls, setup.params.assertDialog, &leaving, watch.options.takeStacks,
        watch.options.dumpDirectory,    &listings};
    execute(setup.params, childSettings, plan, events, console);
    // After a cancellation, finished cases whose lines were not printed do not count as executed.
    CRunEvents::Withdraw(console.GetWaiting(), result.cases);
    result.stats = CountCases(result.cases, unitTests.size());
    result.stats.startTime = startTime;
    result.stats.totalTime = timer.GetElapsed();
    result.stats.endTime = LbDateTime::FormatNow(c_TimeFormat);
    events.End(result);
    return result;
}

} // namespace

SRunResult Run(const LuTestSuiteSetup& setup, LuTestSuiteEnvironment& environment)
{
    IRunObserver nobody;
    return Run(setup, environment, nobody);
}

SRunResult Run(const LuTestSuiteSetup& setup, LuTestSuiteEnvironment& environment, IRunObserver& observer,
               const SRunOptions& options)
{
    RequireReportPlaces(setup);
    // Created before the modules are loaded, because their initialisation may crash. Kept until the end, because
    // threads that cases have left running may still crash.
    const LuTestSuite::CCrashNotes notes;
    // Waits for exiting children only in its destructor, so that they can exit while the reports are written.
    CLeavingChildren leaving;
    UnitTests unitTests;
    SRunResult result = runCases(setup, environment, {observer, options}, unitTests, leaving);
    WriteReports(setup, environment, unitTests, result);
    return result;
}

} // namespace LuTestSuiteRun
