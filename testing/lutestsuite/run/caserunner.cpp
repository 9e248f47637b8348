#include "testing/lutestsuite/run/caserunner.h"

#include <algorithm>

#include "testing/lutestsuite/run/executor.h"
#include "testing/lutestsuite/settings/parameters.h"

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

bool IsExternal(const SParams& runParams, const LuTestSuite::ParameterMap& caseParameters)
{
    return LuTestSuite::GetFlag(caseParameters, L"External").value_or(runParams.external);
}

SParams GetCaseParams(const SParams& runParams, const LuTestSuite::ParameterMap& caseParameters)
{
    SParams params = runParams;
    using LuTestSuite::GetFlag;
    using LuTestSuite::GetNumber;
    params.reportMemLeak = GetFlag(caseParameters, L"ReportMemLeak").value_or(params.reportMemLeak);
    params.timeOutSec = GetNumber(caseParameters, L"TimeOutSec").value_or(params.timeOutSec);
    params.external = IsExternal(runParams, caseParameters);
    params.isolated = GetFlag(caseParameters, L"Isolated").value_or(params.isolated);
    params.parallel = GetFlag(caseParameters, L"Parallel").value_or(params.parallel);
    return params;
}

CCaseRunner::CCaseRunner(const std::vector<LuTestSuite::SUnitTest>& unitTests, const std::vector<SCaseInfo>& cases,
                         const SParams& runParams, const std::function<bool()>& isCanceled, CSpareChildren& spares)
    : m_unitTests(unitTests), m_cases(cases), m_runParams(runParams), m_isCanceled(isCanceled), m_spares(spares),
      m_external(spares)
{
}

SParams CCaseRunner::getParams(const SCaseInfo& info) const
{
    return GetCaseParams(m_runParams, m_unitTests[info.unitTest].cases[info.testCase].parameters);
}

bool CCaseRunner::MakeReadyFor(const SCaseInfo& info)
{
    const SParams params = getParams(info);
    return !params.external || m_external.MakeReady(params.isolated);
}

/// Of the next few: more processes than for these are not started ahead anyway.
std::size_t CCaseRunner::countIsolated(std::span<const std::uint32_t> toCome) const
{
    const auto next = toCome.first(std::min(toCome.size(), CSpareChildren::GetMost()));
    return static_cast<std::size_t>(std::ranges::count_if(next, [this](std::uint32_t index) {
        const SParams params = getParams(m_cases[index]);
        return params.external && params.isolated;
    }));
}

void CCaseRunner::Run(SCaseInfo& info, const ToCome& toCome)
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
        runInChild(unitTest, testCase, params, info, toCome);
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
                             const ToCome& toCome)
{
    CChildChannel& channel = m_external.Obtain(params.isolated);
    if (!WriteRequest(*channel.GetBuffer().GetWriteAccess(), unitTest, testCase, params))
    {
        return;
    }
    channel.Ask();
    if (params.isolated)
    {
        m_spares.Start([this, &toCome] { return countIsolated(toCome()); });
    }
    info.processIndex = channel.WaitForAnswer(params.timeOutSec, m_isCanceled);
    readAnswer(*channel.GetBuffer().GetReadAccess(), info);
}

} // namespace LuTestSuiteRun
