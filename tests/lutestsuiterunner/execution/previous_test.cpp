#include "testing/lutestsuiterunner/execution/previous.h"

#include <gtest/gtest.h>

#include "base/lbexception.h"
#include "testing/lutestsuite/lutestsuitereport.h"
#include "tests/support/scopedfolder.h"

namespace
{

using LuTestSuiteRun::ECaseRunResult;

constexpr std::uint64_t c_Second = 1'000'000'000;

class RunnerPrevious : public testing::Test
{
protected:
    /// Writes the report of a run with one case.
    void write(const std::wstring& begin, float seconds, ECaseRunResult result = ECaseRunResult::Ok,
               const std::wstring& configuration = L"Release x64") const
    {
        LuTestSuiteReport::SReportData data;
        data.BuildConfiguration = configuration;
        data.DateBegin = begin;
        data.Cases.emplace_back();
        data.Cases.back().ClassName = L"CKlasse";
        data.Cases.back().CaseName = L"Fall";
        data.Cases.back().Time = seconds;
        data.Cases.back().Result = result;
        LuTestSuiteReport::GenerateXMLReport(m_folder.GetPathOf(begin + L".xml"), data);
    }

    /// What the archive knows about the case in a plan of this configuration.
    std::optional<Runner::SPreviousCase> find(const std::wstring& name = L"Fall",
                                              const std::wstring& configuration = L"Release x64") const
    {
        Runner::SPlan plan;
        plan.origin.buildConfiguration = configuration;
        LuTestSuite::SUnitTest unitTest;
        unitTest.className = L"CKlasse";
        unitTest.cases.emplace_back().name = name;
        plan.unitTests = {unitTest};
        plan.cases = Runner::PlanCases(plan.unitTests, 1);
        return Runner::CPrevious(m_folder.GetPath()).Find(plan, 0);
    }

    const ScopedFolder m_folder;
};

TEST_F(RunnerPrevious, UsesTheMedianTimeInAnArchive)
{
    write(L"1", 1.0F);
    write(L"2", 50.0F);
    write(L"3", 2.0F);

    ASSERT_TRUE(find());
    EXPECT_EQ(find()->time, 2 * c_Second);
    EXPECT_FALSE(find()->hasFailed);
    EXPECT_FALSE(find(L"anderer Fall"));
}

TEST_F(RunnerPrevious, UsesOnlyTheNewestRunsOfAnArchive)
{
    for (const wchar_t* const old : {L"01", L"02", L"03", L"04", L"05", L"06", L"07", L"08", L"09", L"10", L"11"})
    {
        write(old, 1.0F);
    }
    for (const wchar_t* const newer : {L"21", L"22", L"23", L"24", L"25", L"26"})
    {
        write(newer, 4.0F);
    }

    ASSERT_TRUE(find());
    EXPECT_EQ(find()->time, 4 * c_Second);
}

TEST_F(RunnerPrevious, FindsFailuresInTheNewestRunOfAnArchive)
{
    write(L"1", 1.0F, ECaseRunResult::Error);
    write(L"2", 1.0F);
    EXPECT_FALSE(find()->hasFailed);
    write(L"3", 1.0F, ECaseRunResult::Different);
    EXPECT_TRUE(find()->hasFailed);
}

TEST_F(RunnerPrevious, TreatsACaseWithoutAnOutcomeAsFailedAndKeepsItsTime)
{
    write(L"1", 3.0F);
    write(L"2", 0.0F, ECaseRunResult::Canceled);

    ASSERT_TRUE(find());
    EXPECT_EQ(find()->time, 3 * c_Second);
    EXPECT_TRUE(find()->hasFailed);
}

TEST_F(RunnerPrevious, PrefersRunsOfThePlansConfiguration)
{
    write(L"1", 1.0F);
    write(L"2", 9.0F, ECaseRunResult::Error, L"Debug x64");

    EXPECT_EQ(find()->time, 1 * c_Second);
    EXPECT_FALSE(find()->hasFailed);
    EXPECT_EQ(find(L"Fall", L"Debug x64")->time, 9 * c_Second);
    EXPECT_EQ(find(L"Fall", L"Profile x64")->time, 5 * c_Second);
}

TEST_F(RunnerPrevious, RefusesAFolderWithoutRuns)
{
    EXPECT_THROW(find(), std::wstring);
}

} // namespace
