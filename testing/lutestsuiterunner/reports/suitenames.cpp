#include "testing/lutestsuiterunner/reports/suitenames.h"

namespace Runner
{

CSuiteNames::CSuiteNames(const SPlan& plan) : m_plan(plan)
{
    for (const LuTestSuite::SUnitTest& unitTest : plan.unitTests)
    {
        m_folders[unitTest.className].insert(unitTest.dataDirectory);
    }
    for (const SDisabledCase& disabled : plan.disabled)
    {
        m_folders[disabled.className].insert(disabled.dataDirectory);
    }
}

std::wstring CSuiteNames::Get(const std::wstring& className, const std::wstring& dataDirectory) const
{
    return m_folders.at(className).size() == 1 ? className : GetUnitTestName(m_plan, dataDirectory, className);
}

} // namespace Runner
