#include "testing/lutestsuite/run/caserunner.h"

#include "testing/lutestsuite/run/executor.h"
#include "testing/lutestsuite/utils/parameters.h"

namespace LuTestSuiteRun
{

namespace
{

/// False when a name does not fit; the buffer then says "no matching case" to whoever looks at it.
bool writeRequest(SWorkBuffer& buffer, const LuTestSuite::SUnitTest& unitTest, const LuTestSuite::STestCase& testCase,
                  const SParams& params)
{
    if (!StoreName(buffer.className, unitTest.className) || !StoreName(buffer.caseName, testCase.name) ||
        !StoreName(buffer.dataDirectory, unitTest.dataDirectory))
    {
        buffer.result = static_cast<std::uint32_t>(ECaseRunResult::NoMatchingCase);
        return false;
    }
    buffer.params = params;
    buffer.result = static_cast<std::uint32_t>(ECaseRunResult::Unknown);
    buffer.memoryGrowth = buffer.allocations = buffer.peakMemory = buffer.time = 0;
    buffer.messageLength = 0;
    buffer.messages[0] = u'\0';
    return true;
}

void readAnswer(const SWorkBuffer& buffer, SCaseInfo& info)
{
    info.result = static_cast<ECaseRunResult>(buffer.result);
    info.memoryGrowth = buffer.memoryGrowth;
    info.allocations = buffer.allocations;
    info.peakMemory = buffer.peakMemory;
    info.time = buffer.time;
    info.messages = LoadMessages(buffer);
}

} // namespace

SParams GetCaseParams(const SParams& runParams, const LuTestSuite::ParameterMap& caseParameters)
{
    SParams params = runParams;
    using LuTestSuite::GetFlag;
    using LuTestSuite::GetNumber;
    params.reportMemLeak = GetFlag(caseParameters, L"ReportMemLeak").value_or(params.reportMemLeak);
    params.timeOutSec = GetNumber(caseParameters, L"TimeOutSec").value_or(params.timeOutSec);
    params.external = GetFlag(caseParameters, L"External").value_or(params.external);
    params.isolated = GetFlag(caseParameters, L"Isolated").value_or(params.isolated);
    params.parallel = GetFlag(caseParameters, L"Parallel").value_or(params.parallel);
    return params;
}

CCaseRunner::CCaseRunner(const std::vector<LuTestSuite::SUnitTest>& unitTests, const SParams& runParams,
                         const std::function<bool()>& isCanceled)
    : m_unitTests(unitTests), m_runParams(runParams), m_isCanceled(isCanceled)
{
}

void CCaseRunner::Run(SCaseInfo& info)
{
    if (m_isCanceled())
    {
        return;
    }
    const LuTestSuite::SUnitTest& unitTest = m_unitTests[info.unitTest];
    const LuTestSuite::STestCase& testCase = unitTest.cases[info.testCase];
    const SParams params = GetCaseParams(m_runParams, testCase.parameters);
    {
        const CWorkBufferWriteView buffer = m_buffer.GetWriteAccess();
        if (!writeRequest(*buffer, unitTest, testCase, params))
        {
            return;
        }
        ExecuteInBuffer(*buffer);
    }
    readAnswer(*m_buffer.GetReadAccess(), info);
    info.warning = params.reportMemLeak && static_cast<std::int64_t>(info.memoryGrowth) > 0;
}

} // namespace LuTestSuiteRun
