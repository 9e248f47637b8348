/// A normal run, stage by stage.

#include "base/lbassert.h"
#include "base/lbdatetime.h"
#include "base/lbfilesystem.h"
#include "base/lbpath.h"
#include "base/lbtimer.h"
#include "base/ludebugserialization.h"
#include "testing/lutestsuite/lutestsuiteenvironment.h"
#include "testing/lutestsuite/lutestsuiteout.h"
#include "testing/lutestsuite/lutestsuitesetup.h"
#include "testing/lutestsuite/lutestsuiteutils.h"
#include "testing/lutestsuite/run/caserunner.h"
#include "testing/lutestsuite/run/consolelines.h"
#include "testing/lutestsuite/run/missingfeatures.h"
#include "testing/lutestsuite/run/plan.h"
#include "testing/lutestsuite/run/reports.h"
#include "testing/lutestsuite/run/statistics.h"
#include "testing/lutestsuite/utils/selection.h"

namespace LuTestSuiteRun
{

namespace
{

using UnitTests = std::vector<LuTestSuite::SUnitTest>;

/// The process as a run needs it, for as long as the object lives.
class CPreparation : public INonCopyable
{
public:
    CPreparation(const LuTestSuiteSetup& setup, LuTestSuiteEnvironment& environment)
        : m_environment(environment), m_assertDialog(setup.params.assertDialog),
          m_dataDirectory(LbOs::GetFullPath(setup.dataDir)), m_includeConfig(LbOs::GetFullPath(setup.includeConfig))
    {
        LuTestSuite::LoadTestModules(setup, environment);
        LbAssert::SetDialogEnabled(m_assertDialog);
        environment.SetExecutableDirectoryAsWorkingDirectory();
    }

    ~CPreparation()
    {
        if (!m_assertDialog)
        {
            LbAssert::SetDialogEnabled(true);
        }
        m_environment.RestoreWorkingDirectory();
    }

    /// The user's paths, which are meant from the working directory that the run leaves.
    const std::wstring& GetDataDirectory() const { return m_dataDirectory; }
    const std::wstring& GetIncludeConfig() const { return m_includeConfig; }

private:
    LuTestSuiteEnvironment& m_environment;
    bool m_assertDialog;
    std::wstring m_dataDirectory;
    std::wstring m_includeConfig;
};

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

/// Runs the listed cases one after another on the calling thread.
void executeSequentially(const LuTestSuiteSetup& setup, const UnitTests& unitTests,
                         const std::vector<std::uint32_t>& list, std::vector<SCaseInfo>& cases)
{
    if (list.empty())
    {
        return;
    }
    const std::wstring debugRoot =
        LbFileSystem::GetDirectory(LbFileSystem::eDK_DebugOutput) + LbDateTime::FormatNow(L"Y-m-d H.i.s");
    CCaseRunner runner(unitTests, setup.params, setup.checkCallback);
    CCaseLines lines(unitTests, setup.params);
    for (const std::uint32_t index : list)
    {
        if (setup.checkCallback())
        {
            WriteCanceled();
            return;
        }
        SCaseInfo& info = cases[index];
        const std::wstring& caseName = unitTests[info.unitTest].cases[info.testCase].name;
        LuDebugSerializationGeneric::SetDefaultOutputDirectory(debugRoot + LbPath::c_Separator +
                                                               LbPath::ToSafeName(caseName));
        lines.WriteHeader(info);
        runner.Run(info);
        lines.WriteResult(info);
        setup.resultCallback(info.result);
        info.executed = true;
    }
}

void planAndExecute(const LuTestSuiteSetup& setup, const UnitTests& unitTests, SRunResult& result)
{
    SPlan plan = MakePlan(unitTests, setup.params);
    result.cases = std::move(plan.cases);
    executeSequentially(setup, unitTests, plan.parallel, result.cases);
    executeSequentially(setup, unitTests, plan.sequential, result.cases);
}

/// The run up to its summary. The working directory is restored when it returns, so that the user's paths of reports
/// count from there.
SRunResult runCases(const LuTestSuiteSetup& setup, LuTestSuiteEnvironment& environment, UnitTests& unitTests)
{
    constexpr const wchar_t* c_TimeFormat = L"Y-m-d H:i:s";
    const CPreparation preparation(setup, environment);
    unitTests = gather(setup, preparation);
    WarnAboutMissingFeatures(setup, unitTests);

    SRunResult result;
    const LbTimer timer(LbTimer::eR_NanoSecond);
    result.stats.startTime = LbDateTime::FormatNow(c_TimeFormat);
    if (!unitTests.empty())
    {
        planAndExecute(setup, unitTests, result);
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
    UnitTests unitTests;
    SRunResult result = runCases(setup, environment, unitTests);
    WriteReports(setup, unitTests, result);
    return result;
}

} // namespace LuTestSuiteRun
