// Cases of the run's own process that change its signal handling, which child processes inherit.

#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "tests/support/externalruntest.h"
#include "tests/support/os/testaids.h"

namespace
{

using LuTestSuiteRun::ECaseRunResult;
using LuTestSuiteRun::SRunResult;

/// The first case runs in the run's own process and changes its signal handling.
class RunExternalSignalState : public ExternalRunTest
{
protected:
    ~RunExternalSignalState() override { LbOs::SetSignalsDisturbed(false); }

    SRunResult RunDisturbed(LuTestSuite::SUnitTest unitTest)
    {
        LuTestSuite::SUnitTest disturbing = MakeUnitTest(L"CIntrusiveModel", {L"stört Signale"});
        disturbing.cases[0].parameters[L"External"] = false;
        LuTestSuiteSetup setup = MakeExternal({std::move(disturbing), std::move(unitTest)});
        setup.dlls.emplace_back(L"intrusivemodels");
        return Run(setup);
    }
};

TEST_F(RunExternalSignalState, IsUnchangedInLaterProcesses)
{
    LuTestSuiteSetup before = MakeExternal({MakeUnitTest(L"CIntrusiveModel", {L"nennt Signale"})});
    before.dlls.emplace_back(L"intrusivemodels");
    const std::wstring expected = Run(before).cases.at(0).messages;

    const SRunResult result = RunDisturbed(MakeUnitTest(L"CIntrusiveModel", {L"nennt Signale"}));

    if (result.cases.at(0).result == ECaseRunResult::NoInput)
    {
        GTEST_SKIP() << "signals exist only on Linux";
    }
    EXPECT_NE(expected.find(L"SigBlk"), std::wstring::npos);
    EXPECT_EQ(result.cases.at(1).messages, expected);
}

TEST_F(RunExternalSignalState, IsRestoredAfterEachCaseInTheRunsOwnProcess)
{
    const std::wstring before = LbOs::DescribeSignals();

    const SRunResult result = RunDisturbed(MakeUnitTest(L"CIntrusiveModel", {L"nennt Signale"}));

    if (result.cases.at(0).result == ECaseRunResult::NoInput)
    {
        GTEST_SKIP() << "signals exist only on Linux";
    }
    EXPECT_EQ(result.cases.at(0).result, ECaseRunResult::Ok);
    EXPECT_EQ(LbOs::DescribeSignals(), before);
}

TEST_F(RunExternalSignalState, DoesNotHideExitStatuses)
{
    const SRunResult result = RunDisturbed(MakeUnitTest(L"CCrashModel", {L"schreibt viel und endet", L"nachher"}));

    if (result.cases.at(0).result == ECaseRunResult::NoInput)
    {
        GTEST_SKIP() << "signals exist only on Linux";
    }
    EXPECT_EQ(result.cases.at(1).result, ECaseRunResult::Unknown);
    EXPECT_NE(result.cases.at(1).messages.find(models::c_EndOfProcess + std::wstring(L"Status 3\n")),
              std::wstring::npos);
    EXPECT_EQ(result.cases.at(2).result, ECaseRunResult::Ok);
}

TEST_F(RunExternalSignalState, DoesNotPreventANewProcessAfterMemoryHasRunOut)
{
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
    GTEST_SKIP() << "sanitizers end the process when there is no memory";
#endif
    const SRunResult result = RunDisturbed(MakeUnitTest(L"CCrashModel", {L"aller Speicher", L"nachher"}));

    if (result.cases.at(0).result == ECaseRunResult::NoInput)
    {
        GTEST_SKIP() << "signals exist only on Linux";
    }
    EXPECT_EQ(result.cases.at(1).result, ECaseRunResult::Exception);
    EXPECT_EQ(result.cases.at(2).result, ECaseRunResult::Ok);
    EXPECT_EQ(result.cases.at(2).processIndex, result.cases.at(1).processIndex + 1);
}

} // namespace
