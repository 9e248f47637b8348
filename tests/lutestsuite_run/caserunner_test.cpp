#include "testing/lutestsuite/run/caserunner.h"

#include <memory>
#include <span>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "base/luunittest.h"

namespace
{

class CRunnerModel : public LuUnitTest
{
    LB_RTTI(CRunnerModel)
    void InitSubtests() override
    {
        AddSubtest(L"Fall", [this] { Info(L"gelaufen"); });
    }
};

} // namespace

LB_RTTI_CLASS(CRunnerModel, LuUnitTest)

namespace
{

using LuTestSuiteRun::ECaseRunResult;
using LuTestSuiteRun::GetCaseParams;
using LuTestSuiteRun::SCaseInfo;
using LuTestSuiteRun::SParams;

TEST(GetCaseParams, AreThoseOfTheRunForACaseThatSaysNothing)
{
    SParams run;
    run.reportMemLeak = false;
    run.external = run.isolated = run.parallel = true;
    run.timeOutSec = 7;

    const SParams params = GetCaseParams(run, {});

    EXPECT_FALSE(params.reportMemLeak);
    EXPECT_TRUE(params.external);
    EXPECT_TRUE(params.isolated);
    EXPECT_TRUE(params.parallel);
    EXPECT_EQ(params.timeOutSec, 7U);
}

TEST(GetCaseParams, TakeWhatTheCaseSays)
{
    const SParams params = GetCaseParams(SParams(), {{L"ReportMemLeak", LbVariant(false)},
                                                     {L"TimeOutSec", LbVariant(std::uint32_t{12})},
                                                     {L"External", LbVariant(true)},
                                                     {L"Isolated", LbVariant(true)},
                                                     {L"Parallel", LbVariant(true)}});

    EXPECT_FALSE(params.reportMemLeak);
    EXPECT_EQ(params.timeOutSec, 12U);
    EXPECT_TRUE(params.external);
    EXPECT_TRUE(params.isolated);
    EXPECT_TRUE(params.parallel);
}

TEST(GetCaseParams, LetACaseSwitchOffWhatTheRunHasOn)
{
    SParams run;
    run.external = run.isolated = run.parallel = true;

    const SParams params = GetCaseParams(
        run, {{L"External", LbVariant(false)}, {L"Isolated", LbVariant(false)}, {L"Parallel", LbVariant(false)}});

    EXPECT_FALSE(params.external);
    EXPECT_FALSE(params.isolated);
    EXPECT_FALSE(params.parallel);
}

TEST(GetCaseParams, LeaveTheRunsValueWhereTheCaseHasNone)
{
    SParams run;
    run.reportMemLeak = false;

    EXPECT_FALSE(GetCaseParams(run, {{L"ReportMemLeak", LbVariant()}}).reportMemLeak);
    EXPECT_TRUE(GetCaseParams(SParams(), {{L"ReportMemLeak", LbVariant()}}).reportMemLeak);
}

TEST(GetCaseParams, DoNotTouchTheOtherParameters)
{
    SParams run;
    run.verbose = true;
    run.repetitions = 4;

    const SParams params = GetCaseParams(run, {{L"MessageReportMax", LbVariant(std::uint32_t{9})}});

    EXPECT_TRUE(params.verbose);
    EXPECT_EQ(params.repetitions, 4U);
}

TEST(WriteRequest, AnswersItselfForAClassNameThatDoesNotFit)
{
    const auto buffer = std::make_unique<LuTestSuiteRun::SWorkBuffer>();
    LuTestSuite::SUnitTest unitTest;
    unitTest.className = std::wstring(1024, L'n');

    EXPECT_FALSE(LuTestSuiteRun::WriteRequest(*buffer, unitTest, {{}, L"Fall", {}}, SParams()));
    EXPECT_EQ(buffer->result, 6U);
}

TEST(WriteRequest, SaysUnknownUntilThereIsAnAnswer)
{
    const auto buffer = std::make_unique<LuTestSuiteRun::SWorkBuffer>();
    LuTestSuite::SUnitTest unitTest;
    unitTest.className = std::wstring(1023, L'n');

    EXPECT_TRUE(LuTestSuiteRun::WriteRequest(*buffer, unitTest, {{}, L"Fall", {}}, SParams()));
    EXPECT_EQ(buffer->result, 5U);
}

class CaseRunner : public testing::Test
{
protected:
    /// The record of a run of one case of the model.
    SCaseInfo Run(const std::wstring& caseName, bool isCanceled = false) const
    {
        std::vector<LuTestSuite::SUnitTest> unitTests(1);
        unitTests[0].className = L"CRunnerModel";
        unitTests[0].cases.resize(1);
        unitTests[0].cases[0].name = caseName;
        const std::function<bool()> cancel = [isCanceled] { return isCanceled; };
        std::vector<SCaseInfo> cases(1);
        const LuTestSuiteRun::SChildSettings childSettings;
        LuTestSuiteRun::CSpareChildren spares(childSettings);
        LuTestSuiteRun::CCaseRunner runner(unitTests, cases, m_params, cancel, spares);
        runner.Run(cases.front(), [] { return std::span<const std::uint32_t>(); });
        return cases.front();
    }

    SParams m_params;
};

TEST_F(CaseRunner, FillsTheRecord)
{
    const SCaseInfo info = Run(L"Fall");

    EXPECT_EQ(info.result, ECaseRunResult::Ok);
    EXPECT_EQ(info.messages, L"\t\tINFO:  gelaufen\n");
    EXPECT_FALSE(info.warning);
}

TEST_F(CaseRunner, AsksForANameOf1023Characters)
{
    EXPECT_EQ(Run(std::wstring(1023, L'n')).result, ECaseRunResult::NoMatchingCase);
}

TEST_F(CaseRunner, CannotAskForANameOf1024Characters)
{
    EXPECT_EQ(Run(std::wstring(1024, L'n')).result, ECaseRunResult::Unknown);
}

TEST_F(CaseRunner, LeavesTheRecordOfACanceledCase)
{
    const SCaseInfo info = Run(L"Fall", true);

    EXPECT_EQ(info.result, ECaseRunResult::Unknown);
    EXPECT_EQ(info.messages, L"");
}

} // namespace
