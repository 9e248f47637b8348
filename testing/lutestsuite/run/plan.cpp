#include "testing/lutestsuite/run/plan.h"

#include "testing/lutestsuite/run/caserunner.h"
#include "testing/lutestsuite/settings/parameters.h"

namespace LuTestSuiteRun
{

namespace
{

/// A parameter that is there must say yes; one without a value says no.
bool mayRunParallel(const SParams& params, const LuTestSuite::STestCase& testCase)
{
    constexpr const wchar_t* c_Name = L"Parallel";
    return params.parallel && (testCase.parameters.empty() || !testCase.parameters.contains(c_Name) ||
                               LuTestSuite::GetFlag(testCase.parameters, c_Name) == true);
}

} // namespace

SPlan MakePlan(const std::vector<LuTestSuite::SUnitTest>& unitTests, const SParams& params)
{
    SPlan plan;
    for (std::size_t unitTest = 0; unitTest < unitTests.size(); ++unitTest)
    {
        const std::vector<LuTestSuite::STestCase>& cases = unitTests[unitTest].cases;
        for (std::size_t testCase = 0; testCase < cases.size(); ++testCase)
        {
            plan.hasExternal = plan.hasExternal || IsExternal(params, cases[testCase].parameters);
            std::vector<std::uint32_t>& list =
                mayRunParallel(params, cases[testCase]) ? plan.parallel : plan.sequential;
            for (std::uint32_t repetition = 0; repetition < params.repetitions; ++repetition)
            {
                list.push_back(static_cast<std::uint32_t>(plan.cases.size()));
                SCaseInfo& info = plan.cases.emplace_back();
                info.unitTest = static_cast<std::uint32_t>(unitTest);
                info.testCase = static_cast<std::uint32_t>(testCase);
                info.repetition = repetition;
            }
        }
    }
    return plan;
}

} // namespace LuTestSuiteRun
