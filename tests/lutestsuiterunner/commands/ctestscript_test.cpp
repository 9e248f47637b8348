#include "testing/lutestsuiterunner/commands/ctestscript.h"

#include <gtest/gtest.h>

namespace
{

/// A plan with one unit test in the folder "/data/parts/CShapes/".
Runner::SPlan makePlan(const std::wstring& caseName, const LuTestSuite::ParameterMap& parameters = {})
{
    Runner::SPlan plan;
    plan.dataDirectory = L"/data/";
    LuTestSuite::SUnitTest unitTest;
    unitTest.className = L"CShapes";
    unitTest.dataDirectory = L"/data/parts/CShapes/";
    unitTest.cases.push_back({{}, caseName, parameters});
    plan.unitTests.push_back(unitTest);
    plan.cases = Runner::PlanCases(plan.unitTests, 1);
    return plan;
}

/// The script without the line that names the writer.
std::string makeCases(const Runner::SPlan& plan)
{
    const std::string script = Runner::MakeCTestScript(plan);
    return script.substr(script.find('\n') + 1);
}

TEST(CTestScript, NamesCaseClassAndFolder)
{
    EXPECT_EQ(makeCases(makePlan(L"round")),
              "lutestsuite_add_case([[parts/CShapes:round]] [[CShapes]] [[parts]] 0 \"\")\n");
}

TEST(CTestScript, NamesTheFileOfADataSet)
{
    Runner::SPlan plan = makePlan(L"round.shape");
    plan.unitTests.front().cases.front().dataSetFile = L"/data/parts/CShapes/round.shape";

    EXPECT_TRUE(makeCases(plan).ends_with(" 0 \"\" [[/data/parts/CShapes/round.shape]])\n"));
}

TEST(CTestScript, KeepsBracketsInNames)
{
    EXPECT_EQ(makeCases(makePlan(L"a]]b]=]c")),
              "lutestsuite_add_case([==[parts/CShapes:a]]b]=]c]==] [[CShapes]] [[parts]] 0 \"\")\n");
}

TEST(CTestScript, KeepsABracketAtTheEndOfAName)
{
    EXPECT_EQ(makeCases(makePlan(L"a]")),
              "lutestsuite_add_case([=[parts/CShapes:a]]=] [[CShapes]] [[parts]] 0 \"\")\n");
}

TEST(CTestScript, PrefersTheTimeLimitOfTheCase)
{
    Runner::SPlan plan = makePlan(L"round", {{L"TimeOutSec", LbVariant(std::uint32_t{5})}});
    plan.params.timeOutSec = 60;

    EXPECT_TRUE(makeCases(plan).ends_with(" 5 \"\")\n"));
}

TEST(CTestScript, MarksCasesThatMustNotRunInParallel)
{
    EXPECT_TRUE(makeCases(makePlan(L"round", {{L"Parallel", LbVariant(false)}})).ends_with(" 0 \"SERIAL\")\n"));
    EXPECT_TRUE(makeCases(makePlan(L"round", {{L"Parallel", LbVariant(true)}})).ends_with(" 0 \"\")\n"));
}

TEST(CTestScript, ListsDisabledCasesLast)
{
    Runner::SPlan plan = makePlan(L"round");
    plan.disabled.push_back({L"CShapes", L"/data/parts/CShapes/", L"off", {}});

    EXPECT_TRUE(makeCases(plan).ends_with(
        "\nlutestsuite_add_case([[parts/CShapes:off]] [[CShapes]] [[parts]] 0 \"DISABLED\")\n"));
}

} // namespace
