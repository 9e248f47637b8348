#include "testing/lutestsuite/run/runconsole.h"

#include <algorithm>
#include <iterator>

namespace LuTestSuiteRun
{

namespace
{

bool isOfWorker(const SCaseInfo& info)
{
    return info.threadIndex >= 0;
}

} // namespace

CRunConsole::CRunConsole(const LuTestSuiteSetup& setup, const std::vector<LuTestSuite::SUnitTest>& unitTests,
                         LuTestSuite::EBatchEnd resultEnd)
    : m_setup(setup), m_unitTests(unitTests), m_resultEnd(resultEnd), m_workerLines(unitTests, setup.params),
      m_ownLines(unitTests, setup.params)
{
}

CRunConsole::~CRunConsole()
{
    LuTestSuite::WriteDeferredOutput();
}

void CRunConsole::OnCaseStarted(const SCaseStarted& started)
{
    if (!isOfWorker(started.info))
    {
        m_ownLines.WriteHeader(started.info);
    }
}

void CRunConsole::OnCaseFinished(const SCaseFinished& finished)
{
    if (!isOfWorker(finished.info))
    {
        m_ownLines.WriteResult(finished.info, m_resultEnd);
        m_setup.resultCallback(finished.info.result);
        return;
    }
    const LbCriticalSectionLock lock(m_lock);
    m_waiting.push_back({finished.index, &finished.info});
}

void CRunConsole::OnEnded(const SRunResult& result)
{
    if (!m_unitTests.empty())
    {
        WriteSummary(m_unitTests, result.stats);
    }
}

std::size_t CRunConsole::CountWaiting()
{
    const LbCriticalSectionLock lock(m_lock);
    return m_waiting.size();
}

void CRunConsole::PrintWaiting()
{
    const SCaseInfo* info = nullptr;
    {
        const LbCriticalSectionLock lock(m_lock);
        info = m_waiting.front().info;
        m_waiting.pop_front();
    }
    {
        const LuTestSuite::COutputBatch batch;
        m_workerLines.WriteHeader(*info);
        m_workerLines.WriteResult(*info);
    }
    m_setup.resultCallback(info->result);
}

std::vector<std::size_t> CRunConsole::GetWaiting() const
{
    std::vector<std::size_t> indices;
    std::ranges::transform(m_waiting, std::back_inserter(indices), &SWaiting::index);
    return indices;
}

} // namespace LuTestSuiteRun
