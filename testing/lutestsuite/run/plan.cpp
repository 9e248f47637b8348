#include "testing/lutestsuite/run/plan.h"

#include "testing/lutestsuite/settings/parameters.h"

namespace LuTestSuiteRun
{

namespace
{

std::size_t countCases(const std::vector<LuTestSuite::SUnitTest>& unitTests)
{
    std::size_t count = 0;
    for (const LuTestSuite::SUnitTest& unitTest : unitTests)
    {
        count += unitTest.cases.size();
    }
    return count;
}

/// Creates the records of all case runs. Nothing may be added later, because the plan keeps references to the records.
std::vector<SCaseInfo> makeRecords(const std::vector<LuTestSuite::SUnitTest>& unitTests, std::uint32_t repetitions)
{
    std::vector<SCaseInfo> cases;
    cases.reserve(countCases(unitTests) * repetitions);
    for (std::size_t unitTest = 0; unitTest < unitTests.size(); ++unitTest)
    {
        for (std::size_t testCase = 0; testCase < unitTests[unitTest].cases.size(); ++testCase)
        {
            for (std::uint32_t repetition = 0; repetition < repetitions; ++repetition)
            {
                SCaseInfo& info = cases.emplace_back();
                info.unitTest = static_cast<std::uint32_t>(unitTest);
                info.testCase = static_cast<std::uint32_t>(testCase);
                info.repetition = repetition;
            }
        }
    }
    return cases;
}

} // namespace

SParams GetCaseParams(const SParams& runParams, const LuTestSuite::ParameterMap& caseParameters)
{
    using LuTestSuite::GetFlag;
    using LuTestSuite::GetNumber;
    constexpr const wchar_t* c_Parallel = L"Parallel";
    SParams params = runParams;
    params.reportMemLeak = GetFlag(caseParameters, L"ReportMemLeak").value_or(params.reportMemLeak);
    params.timeOutSec = GetNumber(caseParameters, L"TimeOutSec").value_or(params.timeOutSec);
    params.external = GetFlag(caseParameters, L"External").value_or(params.external);
    params.isolated = GetFlag(caseParameters, L"Isolated").value_or(params.isolated);
    if (caseParameters.contains(c_Parallel))
    {
        params.parallel = GetFlag(caseParameters, c_Parallel) == true;
    }
    return params;
}

SPlan MakePlan(const std::vector<LuTestSuite::SUnitTest>& unitTests, const SParams& params,
               std::vector<SCaseInfo>& cases)
{
    SPlan plan;
    cases = makeRecords(unitTests, params.repetitions);
    (params.parallel ? plan.parallel : plan.sequential).reserve(cases.size());
    const SParams* caseParams = &params;
    for (SCaseInfo& info : cases)
    {
        const LuTestSuite::SUnitTest& unitTest = unitTests[info.unitTest];
        const LuTestSuite::STestCase& testCase = unitTest.cases[info.testCase];
        if (info.repetition == 0)
        {
            caseParams = testCase.parameters.empty()
                             ? &params
                             : &plan.ownParams.emplace_back(GetCaseParams(params, testCase.parameters));
        }
        plan.hasExternal = plan.hasExternal || caseParams->external;
        // A case is parallel only if both the run and the case allow it.
        const bool isParallel = params.parallel && caseParams->parallel;
        (isParallel ? plan.parallel : plan.sequential).push_back({unitTest, testCase, *caseParams, info});
    }
    return plan;
}

} // namespace LuTestSuiteRun
