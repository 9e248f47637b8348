#include "tests/support/runtest.h"

#include <algorithm>
#include <iterator>
#include <utility>

#include "tests/modules/outcomes.h"

LuTestSuite::SUnitTest MakeUnitTest(const std::wstring& className, const std::vector<std::wstring>& caseNames)
{
    LuTestSuite::SUnitTest unitTest;
    unitTest.className = className;
    for (const std::wstring& name : caseNames)
    {
        unitTest.cases.push_back({{}, name, {}});
    }
    return unitTest;
}

LuTestSuiteSetup MakeSetup(std::vector<LuTestSuite::SUnitTest> unitTests)
{
    LuTestSuiteSetup setup;
    setup.unitTests = std::move(unitTests);
    setup.dlls.assign(std::begin(models::c_Modules), std::end(models::c_Modules));
    return setup;
}

LuTestSuiteSetup MakeSetup(const std::wstring& dataDir)
{
    LuTestSuiteSetup setup = MakeSetup(std::vector<LuTestSuite::SUnitTest>());
    setup.dlls.emplace_back(L"datasetmodels");
    setup.dataDir = dataDir;
    return setup;
}

LuTestSuiteRun::SRunResult RunTest::Run(const LuTestSuiteSetup& setup)
{
    return LuTestSuiteRun::Run(setup, m_environment);
}

LuTestSuiteRun::SCaseInfo RunTest::RunCase(const std::wstring& className, const std::wstring& caseName)
{
    return Run(MakeSetup({MakeUnitTest(className, {caseName})})).cases.at(0);
}

std::vector<CapturedOutput::SLine> RunTest::GetLinesFrom(const std::wstring& text) const
{
    const std::vector<CapturedOutput::SLine> lines = m_output.GetLines();
    return {std::ranges::find(lines, text, &CapturedOutput::SLine::text), lines.end()};
}
