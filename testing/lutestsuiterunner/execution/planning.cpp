#include "testing/lutestsuiterunner/execution/planning.h"

#include "base/os/files.h"

namespace Runner
{

namespace
{

std::vector<SDisabledCase> listDisabled(const std::vector<LuTestSuite::SUnitTest>& unitTests)
{
    std::vector<SDisabledCase> disabled;
    for (const LuTestSuite::SUnitTest& unitTest : unitTests)
    {
        for (const LuTestSuite::STestCase& testCase : unitTest.cases)
        {
            disabled.push_back({unitTest.className, unitTest.dataDirectory, testCase.name, testCase.dataSetFile});
        }
    }
    return disabled;
}

/// Which cases have failed, by unit test and case.
std::vector<std::vector<bool>> findFailed(const SPlan& plan, const CPrevious& previous)
{
    std::vector<std::vector<bool>> hasFailed;
    for (const LuTestSuite::SUnitTest& unitTest : plan.unitTests)
    {
        hasFailed.emplace_back(unitTest.cases.size(), false);
    }
    for (std::uint32_t index = 0; index < plan.cases.size(); ++index)
    {
        const std::optional<SPreviousCase> one = previous.Find(plan, index);
        if (one && one->hasFailed)
        {
            hasFailed[plan.cases[index].unitTest][plan.cases[index].testCase] = true;
        }
    }
    return hasFailed;
}

} // namespace

SPlan MakePlan(const SRunOptions& options, const LuTestSuiteSetup& setup, SSelection selection)
{
    SPlan plan;
    plan.runId = MakeRunId();
    plan.arguments = options.arguments;
    plan.workingDirectory = LbOs::GetWorkingDirectory();
    plan.dataDirectory = LbOs::GetFullPath(setup.dataDir);
    plan.params = setup.params;
    plan.rules = {setup.messageReportMax, setup.smallReport, setup.tolerateWarnings, options.allowFlaky};
    plan.shard = {options.shard, options.shardCount};
    plan.origin = DescribeOrigin();
    plan.unitTests = std::move(selection.enabled);
    plan.cases = PlanCases(plan.unitTests, setup.params.repetitions);
    plan.disabled = listDisabled(selection.disabled);
    return plan;
}

void KeepFailed(SPlan& plan, const CPrevious& previous)
{
    const std::vector<std::vector<bool>> isKept = findFailed(plan, previous);
    for (std::size_t unit = 0; unit < plan.unitTests.size(); ++unit)
    {
        std::size_t place = 0;
        std::erase_if(plan.unitTests[unit].cases, [&](const auto&) { return !isKept[unit][place++]; });
    }
    std::erase_if(plan.unitTests, [](const LuTestSuite::SUnitTest& unitTest) { return unitTest.cases.empty(); });
    plan.cases = PlanCases(plan.unitTests, plan.params.repetitions);
    plan.disabled.clear();
}

} // namespace Runner
