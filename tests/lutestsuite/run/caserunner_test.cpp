#include "testing/lutestsuite/run/caserunner.h"

#include <memory>
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
using LuTestSuiteRun::SCaseInfo;
using LuTestSuiteRun::SParams;

TEST(WriteRequest, SetsNoMatchingCaseForAClassNameThatDoesNotFit)
{
    const auto buffer = std::make_unique<LuTestSuiteRun::SWorkBuffer>();
    LuTestSuite::SUnitTest unitTest;
    unitTest.className = std::wstring(1024, L'n');

    EXPECT_FALSE(LuTestSuiteRun::WriteRequest(*buffer, unitTest, {{}, L"Fall", {}}, SParams()));
    EXPECT_EQ(buffer->result, 6U);
}

TEST(WriteRequest, SetsTheResultToUnknown)
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
    /// Runs one case of the model and returns its record.
    SCaseInfo Run(const std::wstring& caseName, bool isCanceled = false) const
    {
        std::vector<LuTestSuite::SUnitTest> unitTests(1);
        unitTests[0].className = L"CRunnerModel";
        unitTests[0].cases.resize(1);
        unitTests[0].cases[0].name = caseName;
        const std::function<bool()> cancel = [isCanceled] { return isCanceled; };
        LuTestSuiteRun::CRunEvents events(cancel, {});
        std::vector<SCaseInfo> cases;
        const LuTestSuiteRun::SPlan plan = LuTestSuiteRun::MakePlan(unitTests, m_params, cases);
        const LuTestSuiteRun::SChildSettings childSettings;
        LuTestSuiteRun::CSpareChildren spares(childSettings);
        LuTestSuiteRun::CCaseRunner runner(events, spares);
        runner.Run(plan.sequential.front(), [] { return LuTestSuiteRun::PlannedCases(); });
        return cases.front();
    }

    SParams m_params;
};

TEST_F(CaseRunner, FillsTheRecordOfTheCase)
{
    const SCaseInfo info = Run(L"Fall");

    EXPECT_EQ(info.result, ECaseRunResult::Ok);
    EXPECT_EQ(info.messages, L"\t\tINFO:  gelaufen\n");
    EXPECT_FALSE(info.warning);
}

TEST_F(CaseRunner, AcceptsANameOf1023Characters)
{
    EXPECT_EQ(Run(std::wstring(1023, L'n')).result, ECaseRunResult::NoMatchingCase);
}

TEST_F(CaseRunner, RefusesANameOf1024Characters)
{
    const SCaseInfo info = Run(std::wstring(1024, L'n'));

    EXPECT_EQ(info.result, ECaseRunResult::Unknown);
    EXPECT_EQ(info.messages,
              L"\t\tERROR: Der Name des Testfalls ist zu lang: 1024 Zeichen, höchstens 1023 sind möglich\n");
}

TEST_F(CaseRunner, DoesNotChangeTheRecordOfACanceledCase)
{
    const SCaseInfo info = Run(L"Fall", true);

    EXPECT_EQ(info.result, ECaseRunResult::Unknown);
    EXPECT_EQ(info.messages, L"");
}

} // namespace
