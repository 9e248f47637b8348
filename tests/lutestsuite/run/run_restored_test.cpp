// Cases that change the state of their process, which the run restores before the next case.

#include <cfenv>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "tests/support/os/testaids.h"
#include "tests/support/runtest.h"

namespace
{

using LuTestSuiteRun::ECaseRunResult;
using LuTestSuiteRun::SRunResult;

class RunRestored : public RunTest
{
protected:
    ~RunRestored() override
    {
        LbOs::SetSignalsDisturbed(false);
        LbOs::SetTimersArmed(false);
        std::fesetenv(FE_DFL_ENV);
    }

    static LuTestSuiteSetup MakeIntrusive(const std::vector<std::wstring>& caseNames)
    {
        LuTestSuiteSetup setup = MakeSetup({MakeUnitTest(L"CIntrusiveModel", caseNames)});
        setup.dlls.emplace_back(L"intrusivemodels");
        return setup;
    }
};

/// The parameter is true if the cases run in a shared child process.
class RunRestoredIn : public RunRestored, public testing::WithParamInterface<bool>
{
protected:
    SRunResult RunCases(const std::vector<std::wstring>& caseNames)
    {
        LuTestSuiteSetup setup = MakeIntrusive(caseNames);
        setup.params.external = GetParam();
        return Run(setup);
    }

    std::wstring RunForMessages(const std::wstring& caseName) { return RunCases({caseName}).cases.at(0).messages; }
};

TEST_P(RunRestoredIn, KeepsStatusesOfChildrenForTheNextCase)
{
    const SRunResult result = RunCases({L"stört Signale", L"wartet auf ein Kind"});

    EXPECT_EQ(result.cases.at(1).result, ECaseRunResult::Ok);
}

TEST_P(RunRestoredIn, BlocksNoFurtherSignalsInTheNextCase)
{
    const std::wstring expected = RunForMessages(L"nennt Signale");

    const SRunResult result = RunCases({L"stört Signale", L"nennt Signale"});

    EXPECT_EQ(result.cases.at(1).messages, expected);
}

TEST_P(RunRestoredIn, DisarmsTimersBeforeTheNextCase)
{
    const SRunResult result = RunCases({L"zählt", L"stellt Wecker", L"nennt Wecker"});

    EXPECT_EQ(result.cases.at(2).messages, L"\t\tINFO:  0\n");
}

TEST_P(RunRestoredIn, DisarmsTheAlarmBeforeTheNextCase)
{
    const SRunResult result = RunCases({L"stellt einen Wecker", L"nennt Wecker"});

    EXPECT_EQ(result.cases.at(1).messages, L"\t\tINFO:  0\n");
}

TEST_P(RunRestoredIn, LeavesNoMmxRegistersInUseForTheNextCase)
{
    const SRunResult result = RunCases({L"benutzt MMX", L"rechnet lang"});

    EXPECT_EQ(result.cases.at(1).messages, L"\t\tINFO:  1.5\n");
}

TEST_P(RunRestoredIn, RoundsAsBeforeInTheNextCase)
{
    const std::wstring expected = RunForMessages(L"nennt Rundung");

    const SRunResult result = RunCases({L"rundet auf", L"nennt Rundung", L"teilt durch null", L"nennt Rundung"});

    EXPECT_EQ(result.cases.at(0).result, ECaseRunResult::Ok);
    EXPECT_EQ(result.cases.at(1).messages, expected);
    EXPECT_EQ(result.cases.at(3).messages, expected);
}

INSTANTIATE_TEST_SUITE_P(Processes, RunRestoredIn, testing::Bool(),
                         [](const auto& isExternal) { return isExternal.param ? "Child" : "OwnProcess"; });

TEST_F(RunRestored, KeepsTimersThatWereArmedBeforeTheRun)
{
    LbOs::SetAlarm();
    const int expected = LbOs::CountArmedTimers();

    Run(MakeIntrusive({L"zählt"}));

    EXPECT_EQ(LbOs::CountArmedTimers(), expected);
}

TEST_F(RunRestored, KeepsTimersOfACaseThatRunsAtTheSameTime)
{
    if (!LbOs::SetTimersArmed(false))
    {
        GTEST_SKIP() << "there are no timers";
    }
    LuTestSuiteSetup setup = MakeIntrusive({L"hält Wecker", L"läuft neben einem Wecker", L"läuft danach"});
    setup.params.parallel = true;
    setup.params.workerThreads = 2;

    const SRunResult result = Run(setup);

    EXPECT_EQ(result.cases.at(0).messages, L"\t\tINFO:  3\n");
    EXPECT_EQ(LbOs::CountArmedTimers(), 0);
}

} // namespace
