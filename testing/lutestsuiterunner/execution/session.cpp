#include "testing/lutestsuiterunner/execution/session.h"

#include <algorithm>
#include <chrono>
#include <iterator>
#include <thread>

#include "base/lbformat.h"
#include "base/os/interruption.h"
#include "testing/lutestsuite/lutestsuiterunevents.h"
#include "testing/lutestsuiterunner/execution/caseend.h"
#include "testing/lutestsuiterunner/execution/caselist.h"

namespace Runner
{

namespace
{

std::wstring describeFailures(std::uint32_t count)
{
    return count == 1 ? std::wstring(L"nach einem fehlgeschlagenen Testfall (--fail-fast)")
                      : LbFormat(L"nach %u fehlgeschlagenen Testfällen (--fail-fast)", count);
}

/// `retriable`: the number of further cases that have failed, but have retries left.
std::wstring describeFailures(std::uint32_t count, std::uint32_t retriable)
{
    const std::wstring text = describeFailures(count);
    return retriable == 0   ? text
           : retriable == 1 ? text + L"; ein weiterer wurde nicht mehr wiederholt"
                            : text + LbFormat(L"; %u weitere wurden nicht mehr wiederholt", retriable);
}

/// True if a signal asked this process and the case's child process to end. Waits for 200 ms at most, because a signal
/// to a group of processes often reaches the child first.
bool isEndedFromOutside(const SCaseEnded& record)
{
    // Negated numbers of SIGHUP, SIGINT and SIGTERM; no process of Windows has such a status.
    constexpr std::int64_t c_Requests[] = {-1, -2, -15};
    constexpr std::chrono::milliseconds c_LongestWait(200);
    const bool isRequested = record.end == EAttemptEnd::ChildEnded && record.exitStatus &&
                             std::ranges::find(c_Requests, *record.exitStatus) != std::end(c_Requests);
    const auto end = std::chrono::steady_clock::now() + c_LongestWait;
    while (isRequested && LbOs::GetInterruption() == LbOs::EInterruption::None &&
           std::chrono::steady_clock::now() < end)
    {
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    return isRequested && LbOs::GetInterruption() != LbOs::EInterruption::None;
}

bool isFailure(const SAttempt& attempt)
{
    return attempt.IsFinished() && !attempt.HasPassed();
}

} // namespace

/// Turns the library's events into records.
class CSession::CObserver : public LuTestSuiteRun::IRunObserver
{
public:
    CObserver(CSession& session, std::span<const std::uint32_t> cases, EAttemptKind kind)
        : m_session(session), m_cases(cases), m_kind(kind)
    {
    }

    void OnCaseStarted(const LuTestSuiteRun::SCaseStarted& started) override
    {
        m_session.start(m_cases[started.index], m_kind, started.info.threadIndex, started.processId);
    }

    void OnCaseFinished(const LuTestSuiteRun::SCaseFinished& finished) override
    {
        SCaseEnded record = MakeCaseEnd(finished);
        record.caseIndex = m_cases[finished.index];
        m_session.End(std::move(record));
    }

    void OnCanceled() override { m_session.noteInterruption(); }

private:
    CSession& m_session;
    std::span<const std::uint32_t> m_cases;
    EAttemptKind m_kind;
};

CSession::CSession(const SSessionParts& parts, const LuTestSuiteSetup& setup, const SSessionLimits& limits)
    : m_parts(parts), m_setup(setup), m_limits(limits), m_failed(limits.failedBefore)
{
    // Each repetition is a case run of the plan.
    m_setup.params.repetitions = 1;
}

void CSession::Note(const Record& record)
{
    const std::lock_guard lock(m_mutex);
    const std::uint64_t sequence = m_parts.writer.Write(record);
    m_parts.state.Apply({m_parts.journal, sequence}, record);
}

void CSession::Abandon()
{
    m_mutex.lock();
    NoteCancellation();
}

void CSession::Run(std::span<const std::uint32_t> cases, EAttemptKind kind, EProcess process,
                   const std::function<bool(std::uint32_t)>& isNeeded)
{
    if (!cases.empty() && !isCanceled(kind))
    {
        m_setup.checkCallback = [this, kind] { return isCanceled(kind); };
        m_setup.unitTests = MakeCaseList(m_parts.state.GetPlan(), cases, process == EProcess::Own);
        CObserver observer(*this, cases, kind);
        LuTestSuiteRun::SRunOptions options;
        options.takeStacks = true;
        options.dumpDirectory = m_parts.dumpDirectory;
        if (isNeeded)
        {
            options.isNeeded = [&](std::size_t index) { return isNeeded(cases[index]); };
        }
        LuTestSuiteRun::Run(m_setup, m_parts.environment, observer, options);
    }
    noteInterruption();
}

bool CSession::IsCanceled() const
{
    return isCanceled(EAttemptKind::First);
}

bool CSession::isCanceled(EAttemptKind kind) const
{
    const bool hasFailedOften = m_limits.failFast != 0 && m_failed >= m_limits.failFast;
    return LbOs::GetInterruption() != LbOs::EInterruption::None || (hasFailedOften && kind != EAttemptKind::Confirm);
}

void CSession::start(std::uint32_t caseIndex, EAttemptKind kind, std::int32_t worker, std::uint64_t processId)
{
    const std::lock_guard lock(m_mutex);
    const std::span<const SAttempt> attempts = m_parts.state.GetAttempts(caseIndex);
    const bool isBrokenOff = !attempts.empty() && !attempts.back().IsFinished();
    SCaseStarted record;
    record.caseIndex = caseIndex;
    record.attempt = static_cast<std::uint32_t>(attempts.size()) + (isBrokenOff ? 0 : 1);
    record.kind = isBrokenOff ? attempts.back().kind : kind;
    record.worker = worker;
    record.processId = processId;
    Note(record);
    m_starts[caseIndex] = m_timer.GetElapsed();
    m_parts.listener.OnStarted(caseIndex);
}

void CSession::End(SCaseEnded record)
{
    if (isEndedFromOutside(record))
    {
        record.end = EAttemptEnd::Canceled;
    }
    const std::lock_guard lock(m_mutex);
    const std::uint32_t caseIndex = record.caseIndex;
    record.attempt = static_cast<std::uint32_t>(m_parts.state.GetAttempts(caseIndex).size());
    fillTime(record);
    Note(record);
    const SAttempt& attempt = m_parts.state.GetAttempts(caseIndex).back();
    const bool isCounted = isFailure(attempt) && isFinal(attempt) && attempt.kind != EAttemptKind::Confirm &&
                           !m_parts.state.GetPlan().cases[caseIndex].isQuarantined;
    m_failed += isCounted ? 1 : 0;
    m_parts.listener.OnEnded(caseIndex, attempt, isFinal(attempt));
}

/// The library measures no time for a case whose child process did not answer.
void CSession::fillTime(SCaseEnded& record)
{
    const auto start = m_starts.find(record.caseIndex);
    if (start == m_starts.end())
    {
        return;
    }
    if (record.info.time == 0)
    {
        record.info.time = m_timer.GetElapsed() - start->second;
    }
    m_starts.erase(start);
}

bool CSession::isFinal(const SAttempt& attempt) const
{
    return attempt.IsFinished() && (attempt.HasPassed() || attempt.result.attempt > m_limits.retries);
}

void CSession::noteInterruption()
{
    if (LbOs::GetInterruption() != LbOs::EInterruption::None)
    {
        NoteCancellation();
    }
}

void CSession::NoteCancellation()
{
    const std::lock_guard lock(m_mutex);
    if (m_isCancellationNoted)
    {
        return;
    }
    m_isCancellationNoted = true;
    const LbOs::EInterruption interruption = LbOs::GetInterruption();
    // `m_failed` counts only cases without remaining retries.
    const std::uint32_t failed = m_parts.state.CountVerdicts().failed;
    const std::uint32_t final = m_failed;
    SRunCanceled record;
    record.reason = interruption == LbOs::EInterruption::User ? std::wstring(L"durch den Benutzer (Strg-C)")
                    : interruption == LbOs::EInterruption::Terminate
                        ? std::wstring(L"durch eine Aufforderung des Systems, den Prozess zu beenden")
                        : describeFailures(final, failed - std::min(failed, final));
    Note(record);
}

} // namespace Runner
