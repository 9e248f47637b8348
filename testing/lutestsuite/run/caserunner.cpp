#include "testing/lutestsuite/run/caserunner.h"

#include "testing/lutestsuite/run/executor.h"
#include "testing/lutestsuite/utils/parameters.h"

namespace LuTestSuiteRun
{

bool WriteRequest(SWorkBuffer& buffer, const LuTestSuite::SUnitTest& unitTest, const LuTestSuite::STestCase& testCase,
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

namespace
{

void readAnswer(const SWorkBuffer& buffer, SCaseInfo& info)
{
    info.result = LoadResult(buffer);
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
                         const std::function<bool()>& isCanceled, const SChildSettings& childSettings)
    : m_unitTests(unitTests), m_runParams(runParams), m_isCanceled(isCanceled), m_external(childSettings)
{
}

SParams CCaseRunner::getParams(const SCaseInfo& info) const
{
    return GetCaseParams(m_runParams, m_unitTests[info.unitTest].cases[info.testCase].parameters);
}

bool CCaseRunner::IsReadyFor(const SCaseInfo& info) const
{
    const SParams params = getParams(info);
    return !params.external || m_external.IsReady(params.isolated);
}

bool CCaseRunner::MakeReadyFor(const SCaseInfo& info)
{
    return m_external.MakeReady(getParams(info).isolated);
}

void CCaseRunner::Run(SCaseInfo& info, std::size_t casesToCome)
{
    if (m_isCanceled())
    {
        return;
    }
    const UnitTest& unitTest = m_unitTests[info.unitTest];
    const TestCase& testCase = unitTest.cases[info.testCase];
    const SParams params = getParams(info);
    if (params.external)
    {
        runInChild(unitTest, testCase, params, info, casesToCome);
    }
    else
    {
        runHere(unitTest, testCase, params, info);
    }
    info.warning = params.reportMemLeak && static_cast<std::int64_t>(info.memoryGrowth) > 0;
}

void CCaseRunner::runHere(const UnitTest& unitTest, const TestCase& testCase, const SParams& params, SCaseInfo& info)
{
    if (!m_buffer)
    {
        m_buffer.emplace();
    }
    {
        const CWorkBufferWriteView buffer = m_buffer->GetWriteAccess();
        if (!WriteRequest(*buffer, unitTest, testCase, params))
        {
            return;
        }
        ExecuteInBuffer(*buffer);
    }
    readAnswer(*m_buffer->GetReadAccess(), info);
}

void CCaseRunner::runInChild(const UnitTest& unitTest, const TestCase& testCase, const SParams& params, SCaseInfo& info,
                             std::size_t casesToCome)
{
    CExternalLane& lane = m_external.Obtain(params.isolated);
    if (!WriteRequest(*lane.GetBuffer().GetWriteAccess(), unitTest, testCase, params))
    {
        return;
    }
    lane.Ask();
    if (params.isolated)
    {
        m_external.StartSpares(casesToCome);
    }
    info.processIndex = lane.WaitForAnswer(params.timeOutSec, m_isCanceled);
    readAnswer(*lane.GetBuffer().GetReadAccess(), info);
}

} // namespace LuTestSuiteRun
