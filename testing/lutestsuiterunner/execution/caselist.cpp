#include "testing/lutestsuiterunner/execution/caselist.h"

#include <optional>

namespace Runner
{

std::vector<LuTestSuite::SUnitTest> MakeCaseList(const SPlan& plan, std::span<const std::uint32_t> cases, bool isApart)
{
    std::vector<LuTestSuite::SUnitTest> list;
    std::optional<std::uint32_t> last;
    for (const std::uint32_t index : cases)
    {
        const SPlannedCase& planned = plan.cases[index];
        const LuTestSuite::SUnitTest& unitTest = plan.unitTests[planned.unitTest];
        if (last != planned.unitTest)
        {
            list.push_back({unitTest.className, unitTest.dataDirectory, {}, unitTest.contacts, unitTest.moduleName});
            last = planned.unitTest;
        }
        LuTestSuite::STestCase& testCase = list.back().cases.emplace_back(unitTest.cases[planned.testCase]);
        if (isApart)
        {
            testCase.parameters[L"External"] = true;
            testCase.parameters[L"Isolated"] = true;
        }
    }
    return list;
}

} // namespace Runner
