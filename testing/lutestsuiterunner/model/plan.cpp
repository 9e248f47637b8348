#include "testing/lutestsuiterunner/model/plan.h"

#include <algorithm>
#include <numeric>

#include "base/lbformat.h"
#include "base/lbpath.h"
#include "base/os/clock.h"
#include "base/os/machine.h"
#include "testing/lutestsuite/lutestsuitereport.h"
#include "testing/lutestsuite/lutestsuiterunevents.h"

namespace Runner
{

namespace
{

template<typename T>
std::optional<T> toOptional(const std::unique_ptr<T>& value)
{
    return value ? std::optional<T>(*value) : std::nullopt;
}

std::wstring withSlashes(std::wstring_view path)
{
    std::wstring result(path);
    std::ranges::replace(result, LbPath::c_Separator, L'/');
    return result;
}

} // namespace

std::string MakeRunId()
{
    constexpr std::size_t c_Bytes = 16;
    constexpr std::string_view c_Digits = "0123456789abcdef";
    unsigned char bytes[c_Bytes] = {};
    LbOs::FillRandom(bytes, sizeof(bytes));
    std::string id;
    for (const unsigned char byte : bytes)
    {
        id += c_Digits[byte >> 4U];
        id += c_Digits[byte & 0xFU];
    }
    return id;
}

std::vector<SPlannedCase> PlanCases(const std::vector<LuTestSuite::SUnitTest>& unitTests, std::uint32_t repetitions)
{
    std::vector<SPlannedCase> cases;
    for (std::uint32_t unitTest = 0; unitTest < unitTests.size(); ++unitTest)
    {
        const auto caseCount = static_cast<std::uint32_t>(unitTests[unitTest].cases.size());
        for (std::uint32_t testCase = 0; testCase < caseCount; ++testCase)
        {
            for (std::uint32_t repetition = 0; repetition < repetitions; ++repetition)
            {
                cases.push_back({unitTest, testCase, repetition});
            }
        }
    }
    return cases;
}

SOrigin DescribeOrigin()
{
    SOrigin origin;
    origin.buildConfiguration = LuTestSuiteUtils::GetBuildConfiguration();
    origin.svn = toOptional(LuTestSuiteUtils::GetSvnInfo());
    origin.pscm = toOptional(LuTestSuiteUtils::GetPscmInfo());
    origin.processor = LuTestSuiteReport::getCPUInfo();
    origin.graphics = LuTestSuiteReport::getGPUInfo();
    origin.machine = LbOs::GetMachineName();
    return origin;
}

LuTestSuiteRun::SParams GetParams(const SPlan& plan, std::uint32_t caseIndex)
{
    const SPlannedCase& planned = plan.cases[caseIndex];
    return LuTestSuiteRun::GetCaseParams(plan.params,
                                         plan.unitTests[planned.unitTest].cases[planned.testCase].parameters);
}

std::wstring GetRelativeFolder(const SPlan& plan, std::wstring_view dataDirectory)
{
    const std::wstring root = withSlashes(plan.dataDirectory);
    std::wstring folder = withSlashes(dataDirectory);
    if (folder.starts_with(root))
    {
        folder.erase(0, root.size());
    }
    while (folder.ends_with(L'/'))
    {
        folder.pop_back();
    }
    return folder;
}

std::wstring GetUnitTestName(const SPlan& plan, std::wstring_view dataDirectory, const std::wstring& className)
{
    const std::wstring folder = GetRelativeFolder(plan, dataDirectory);
    const bool isOwnFolder = folder == className || folder.ends_with(L"/" + className);
    return isOwnFolder ? folder : folder.empty() ? className : folder + L"/" + className;
}

std::wstring GetRunName(const std::wstring& caseName, std::uint32_t repetition)
{
    return repetition == 0 ? caseName : caseName + LbFormat(L" (%u)", repetition + 1);
}

std::wstring GetCaseName(const SPlan& plan, std::uint32_t caseIndex)
{
    const SPlannedCase& planned = plan.cases[caseIndex];
    const LuTestSuite::SUnitTest& unitTest = plan.unitTests[planned.unitTest];
    const std::wstring name = GetUnitTestName(plan, unitTest.dataDirectory, unitTest.className);
    return name + L":" + GetRunName(unitTest.cases[planned.testCase].name, planned.repetition);
}

std::vector<std::uint32_t> SortByName(const SPlan& plan)
{
    std::vector<std::wstring> names;
    for (std::uint32_t index = 0; index < plan.cases.size(); ++index)
    {
        names.push_back(GetCaseName(plan, index));
    }
    std::vector<std::uint32_t> cases(plan.cases.size());
    std::iota(cases.begin(), cases.end(), 0U);
    std::ranges::stable_sort(cases, [&names](std::uint32_t a, std::uint32_t b) { return names[a] < names[b]; });
    return cases;
}

} // namespace Runner
