#include "testing/lutestsuiterunner/model/runstate.h"

#include <algorithm>
#include <utility>

#include "base/lbexception.h"
#include "base/lbformat.h"

namespace Runner
{

namespace
{

[[noreturn]] void refuse(const wchar_t* what, std::uint32_t caseIndex, std::uint32_t attempt)
{
    throw LbException(LbFormat(L"%s: Testfall %u, Versuch %u", what, caseIndex, attempt));
}

bool hasFailed(const SAttempt& attempt)
{
    return attempt.IsFinished() && !attempt.HasPassed();
}

void count(EVerdict verdict, bool isQuarantined, SVerdictCounts& counts)
{
    ++counts.planned;
    const bool isFailed = verdict == EVerdict::Failed || verdict == EVerdict::FailedShared;
    if (verdict == EVerdict::Missing)
    {
        ++counts.missing;
    }
    else if (isQuarantined)
    {
        ++counts.quarantined;
        counts.quarantinedFailed += isFailed ? 1U : 0U;
    }
    else
    {
        counts.passed += verdict == EVerdict::Passed ? 1U : 0U;
        counts.flaky += verdict == EVerdict::Flaky ? 1U : 0U;
        counts.failed += isFailed ? 1U : 0U;
        counts.failedShared += verdict == EVerdict::FailedShared ? 1U : 0U;
    }
}

} // namespace

CRunState::CRunState(SPlan plan) : m_plan(std::move(plan)), m_attempts(m_plan.cases.size()) {}

void CRunState::Apply(const SRecordPlace& place, const Record& record)
{
    if (place <= m_last)
    {
        throw LbException(L"Ein Eintrag steht vor dem Eintrag, dem er folgt");
    }
    std::visit([&](const auto& alternative) { apply(place, alternative); }, record);
    m_last = place;
}

std::vector<SAttempt>& CRunState::getAttempts(std::uint32_t caseIndex)
{
    if (caseIndex >= m_attempts.size() || !m_plan.cases[caseIndex].isInShard)
    {
        throw LbException(LbFormat(L"Der Plan enthält den Testfall %u nicht", caseIndex));
    }
    return m_attempts[caseIndex];
}

void CRunState::apply(const SRecordPlace& /*place*/, const SJournalBegun& record)
{
    if (record.caseCount != m_plan.cases.size())
    {
        throw LbException(L"Das Journal gehört zu einem anderen Plan");
    }
    m_isCanceled = false;
    m_isEnded = false;
    m_cancelReason.clear();
    m_problems.clear();
    m_host = record.processId;
    // In a distributed run the journals of one shard follow those of another, so a later journal may have started
    // earlier.
    const bool isEarliest = !record.time.empty() && record.time < m_startTime;
    m_startTime = m_startTime.empty() || isEarliest ? record.time : m_startTime;
    m_endTime = record.time;
    m_earlierTime += std::exchange(m_elapsed, 0);
}

/// True if a host with another journal has finished the attempt.
bool CRunState::isFinishedElsewhere(const SRecordPlace& place, std::uint32_t caseIndex, std::uint32_t attempt)
{
    const std::vector<SAttempt>& attempts = getAttempts(caseIndex);
    const bool isKnown = attempt >= 1 && attempt <= attempts.size();
    return isKnown && attempts[attempt - 1].IsFinished() && attempts[attempt - 1].ended.journal != place.journal;
}

void CRunState::apply(const SRecordPlace& place, const SCaseStarted& record)
{
    if (isFinishedElsewhere(place, record.caseIndex, record.attempt))
    {
        m_elapsed = std::max(m_elapsed, record.elapsed);
        return;
    }
    std::vector<SAttempt>& attempts = getAttempts(record.caseIndex);
    const bool isFirst = attempts.empty();
    const bool isRepeated = !isFirst && record.attempt == attempts.size() && !attempts.back().IsFinished() &&
                            (attempts.back().IsEnded() || attempts.back().started.journal != place.journal);
    const bool isNext = record.attempt == attempts.size() + 1 && (isFirst || attempts.back().IsFinished());
    if (!isRepeated && !isNext)
    {
        refuse(L"Ein Start folgt nicht auf die Versuche davor", record.caseIndex, record.attempt);
    }
    SAttempt attempt;
    attempt.kind = record.kind;
    attempt.started = place;
    attempt.result.caseIndex = record.caseIndex;
    attempt.result.attempt = record.attempt;
    attempt.result.processId = record.processId;
    attempt.result.info.threadIndex = record.worker;
    if (isRepeated)
    {
        const SAttempt& last = attempts.back();
        const bool isCanceled = !last.IsEnded() && WasHostCanceled(last.started.journal);
        attempt.lostHosts = last.lostHosts + (last.IsEnded() ? 0 : 1);
        attempt.canceledHosts = last.canceledHosts + (isCanceled ? 1 : 0);
        attempts.pop_back();
    }
    attempts.push_back(std::move(attempt));
    m_elapsed = std::max(m_elapsed, record.elapsed);
}

void CRunState::apply(const SRecordPlace& place, const SCaseEnded& record)
{
    std::vector<SAttempt>& attempts = getAttempts(record.caseIndex);
    if (isFinishedElsewhere(place, record.caseIndex, record.attempt))
    {
        attempts[record.attempt - 1].duplicates += record.end != EAttemptEnd::Canceled ? 1U : 0U;
        m_elapsed = std::max(m_elapsed, record.elapsed);
        return;
    }
    // A host that was wrongly considered lost may cancel an attempt that a later host completes.
    const bool isOver = !attempts.empty() && attempts.back().IsEnded() &&
                        (attempts.back().IsFinished() || attempts.back().ended.journal == place.journal);
    if (attempts.empty() || isOver || record.attempt != attempts.size())
    {
        refuse(L"Ein Ende ohne Start", record.caseIndex, record.attempt);
    }
    SAttempt& attempt = attempts.back();
    const SPlannedCase& planned = m_plan.cases[record.caseIndex];
    attempt.result = record;
    attempt.result.info.unitTest = planned.unitTest;
    attempt.result.info.testCase = planned.testCase;
    attempt.result.info.repetition = planned.repetition;
    attempt.result.info.executed = true;
    attempt.ended = place;
    attempt.process = findProcess(attempt);
    if (attempt.process != 0)
    {
        SEndedCases& ended = m_processes[attempt.process - 1];
        ended.places.push_back(place);
        ended.cases.push_back(record.caseIndex);
    }
    m_elapsed = std::max(m_elapsed, record.elapsed);
}

/// True if the attempt has run in a process that ran no other case.
bool CRunState::hasOwnProcess(const SAttempt& attempt) const
{
    if (attempt.kind == EAttemptKind::Confirm)
    {
        return true;
    }
    if (attempt.result.end == EAttemptEnd::HostEnded || attempt.result.processId == m_host)
    {
        return false;
    }
    const LuTestSuiteRun::SParams params = GetParams(m_plan, attempt.result.caseIndex);
    return params.external ? params.isolated : m_host != 0;
}

/// The number of the process that the attempt has shared with earlier cases, or may share with later ones; 0 if it had
/// its own process.
std::uint32_t CRunState::findProcess(const SAttempt& attempt)
{
    if (hasOwnProcess(attempt))
    {
        return 0;
    }
    // Uses the journal of the start: if the attempt ended its host, a later journal records the attempt's end.
    SLatestProcess& latest = m_latestProcesses[{attempt.started.journal, attempt.result.processId}];
    // A child process ends after the cases of its stage, so attempts of different stages never share one.
    const bool isChild = attempt.result.end != EAttemptEnd::HostEnded && attempt.result.processId != m_host;
    const bool isOfLaterStage = isChild && attempt.result.attempt != latest.attempt;
    if (latest.number == 0 || latest.isOver || isOfLaterStage)
    {
        m_processes.emplace_back();
        latest.number = static_cast<std::uint32_t>(m_processes.size());
    }
    latest.attempt = attempt.result.attempt;
    latest.isOver = isChild && attempt.result.end != EAttemptEnd::Returned;
    return latest.number;
}

void CRunState::apply(const SRecordPlace& place, const SRunCanceled& record)
{
    m_canceledJournals.insert(place.journal);
    m_isCanceled = true;
    m_cancelReason = record.reason;
    m_elapsed = std::max(m_elapsed, record.elapsed);
}

void CRunState::apply(const SRecordPlace& /*place*/, const SRunProblem& record)
{
    m_problems.push_back(record.text);
}

void CRunState::AddWarnings(const std::vector<std::wstring>& warnings)
{
    m_warnings.insert(m_warnings.end(), warnings.begin(), warnings.end());
}

void CRunState::apply(const SRecordPlace& /*place*/, const SRunFinished& record)
{
    m_isEnded = true;
    m_endTime = record.time;
    m_elapsed = std::max(m_elapsed, record.elapsed);
}

EVerdict CRunState::GetVerdict(std::uint32_t caseIndex) const
{
    const std::vector<SAttempt>& attempts = m_attempts[caseIndex];
    const auto passed = std::ranges::find_if(attempts, &SAttempt::HasPassed);
    if (passed != attempts.end())
    {
        const bool isConfirmation = passed->kind == EAttemptKind::Confirm;
        return passed == attempts.begin() ? EVerdict::Passed
               : isConfirmation           ? EVerdict::FailedShared
                                          : EVerdict::Flaky;
    }
    return std::ranges::any_of(attempts, hasFailed) ? EVerdict::Failed : EVerdict::Missing;
}

const SAttempt* CRunState::GetReported(std::uint32_t caseIndex) const
{
    const std::vector<SAttempt>& attempts = m_attempts[caseIndex];
    const auto isShown = [](const SAttempt& attempt) {
        return attempt.HasPassed() && attempt.kind != EAttemptKind::Confirm;
    };
    auto found = std::ranges::find_if(attempts, isShown);
    found = found != attempts.end() ? found : std::ranges::find_if(attempts, hasFailed);
    found = found != attempts.end() ? found : std::ranges::find_if(attempts, &SAttempt::IsEnded);
    return found != attempts.end() ? &*found : nullptr;
}

std::vector<std::uint32_t> CRunState::FindCases(const std::function<bool(std::uint32_t)>& isWanted) const
{
    std::vector<std::uint32_t> cases;
    for (std::uint32_t index = 0; index < m_plan.cases.size(); ++index)
    {
        if (m_plan.cases[index].isInShard && isWanted(index))
        {
            cases.push_back(index);
        }
    }
    return cases;
}

std::vector<std::uint32_t> CRunState::GetOpenCases() const
{
    std::vector<std::uint32_t> cases;
    for (std::uint32_t index = 0; index < m_attempts.size(); ++index)
    {
        if (!m_attempts[index].empty() && !m_attempts[index].back().IsEnded())
        {
            cases.push_back(index);
        }
    }
    return cases;
}

std::vector<std::uint32_t> CRunState::GetMissingCases() const
{
    return FindCases([this](std::uint32_t index) { return GetVerdict(index) == EVerdict::Missing; });
}

std::span<const std::uint32_t> CRunState::GetPredecessors(const SAttempt& attempt) const
{
    if (attempt.process == 0)
    {
        return {};
    }
    const auto& [places, cases] = m_processes[attempt.process - 1];
    return {cases.begin(), std::ranges::lower_bound(places, attempt.ended) - places.begin() + cases.begin()};
}

std::span<const std::uint32_t> CRunState::GetCasesOfProcess(std::uint32_t process) const
{
    return m_processes[process - 1].cases;
}

SVerdictCounts CRunState::CountVerdicts() const
{
    SVerdictCounts counts;
    for (std::uint32_t index = 0; index < m_attempts.size(); ++index)
    {
        if (m_plan.cases[index].isInShard)
        {
            count(GetVerdict(index), m_plan.cases[index].isQuarantined, counts);
        }
    }
    return counts;
}

bool CRunState::IsGreen() const
{
    const SVerdictCounts counts = CountVerdicts();
    return m_isEnded && !m_isCanceled && m_problems.empty() && counts.missing == 0 && counts.failed == 0 &&
           (counts.flaky == 0 || m_plan.rules.isFlakyAllowed);
}

} // namespace Runner
