#include "testing/lutestsuiterunner/cluster/follower.h"

#include <algorithm>
#include <iterator>
#include <map>
#include <utility>

#include "base/lbexception.h"
#include "base/lbformat.h"
#include "testing/lutestsuiterunner/cluster/submissions.h"
#include "testing/lutestsuiterunner/journal/filenames.h"

namespace Runner
{

CFollower::CFollower(const std::wstring& folder, const std::vector<SShardEntry>& shards, IEngine& engine)
    : m_folder(folder), m_shards(shards), m_engine(engine), m_status(shards.size()), m_watches(shards.size())
{
    for (std::uint32_t index = 0; index < shards.size(); ++index)
    {
        m_tails.emplace_back(folder + GetShardFolderName(index + 1), shards[index].places);
        m_status[index].cases = shards[index].cases;
    }
    readSubmissions();
}

bool CFollower::Step(Time now)
{
    readJournals();
    if (!m_isCanceled && IsMarkedCanceled(m_folder))
    {
        Cancel();
    }
    const bool isDue = !m_hasAsked || now >= m_lastQuestion + m_engine.GetPollInterval();
    if (isDue)
    {
        ask(now);
    }
    if (m_isCanceled)
    {
        return hasEndedCanceled(now, isDue);
    }
    judge(now);
    return isDone() && hasEndedTasks(now);
}

/// Called when every shard has ended or was given up. Waits up to sc_EndLimit for the remaining hosts to end by
/// themselves, then cancels their tasks: if a shard has two hosts, the slower one is not needed.
bool CFollower::hasEndedTasks(Time now)
{
    m_doneSince = m_doneSince ? m_doneSince : now;
    // An earlier answer may show hosts as running although they have ended since.
    if (isAnyTaskActive() && m_lastQuestion < *m_doneSince + sc_EndLimit)
    {
        return false;
    }
    // The scheduler may still keep tasks of lost shards on hold. These tasks would never end by themselves.
    if (isAnyTaskActive() || m_submissions.size() > 1)
    {
        m_engine.Cancel(m_submissions);
    }
    return true;
}

bool CFollower::hasEndedCanceled(Time now, bool hasAsked)
{
    const bool isFirst = !m_canceledSince;
    m_canceledSince = m_canceledSince.value_or(now);
    // The last answer before the cancellation may lack the newest tasks.
    m_isEndKnown = !isFirst && (hasAsked ? m_hasAnswer && !isAnyTaskActive() : m_isEndKnown);
    if (isFirst || (hasAsked && !m_isEndKnown))
    {
        m_engine.Cancel(m_submissions);
    }
    if (isDone() || m_isEndKnown)
    {
        return true;
    }
    const bool isOverdue = now >= *m_canceledSince + sc_CancelLimit;
    if (isOverdue)
    {
        m_warnings.emplace_back(c_UnconfirmedCancellation);
    }
    return isOverdue;
}

bool CFollower::IsComplete() const
{
    return std::ranges::all_of(m_status, &SShardStatus::isEnded);
}

void CFollower::RequireSameRun() const
{
    bool isSame = false;
    try
    {
        isSame = std::ranges::equal(ReadShards(m_folder), m_shards, {}, &SShardEntry::digest, &SShardEntry::digest);
    }
    catch (const LbException&)
    {
        // The other process has not written its list yet.
    }
    if (!isSame)
    {
        throw LbException(LbFormat(L"Im Ordner %s ist nicht mehr der Lauf, den dieser Prozess begleitet: ein anderer "
                                   L"hat ihn ersetzt",
                                   m_folder));
    }
}

void CFollower::Poll()
{
    readJournals();
    ask({});
    for (std::uint32_t index = 0; index < m_status.size(); ++index)
    {
        // The process that follows the run may wait up to a minute longer before it gives up the shard.
        if (!m_status[index].isEnded && m_watches[index].isSuspect && isLastSubmission(index))
        {
            giveUp(index);
        }
    }
}

void CFollower::Watch()
{
    RequireSameRun();
    readJournals();
}

void CFollower::Cancel()
{
    RequireSameRun();
    MarkCanceled(m_folder);
    readSubmissions();
    m_isCanceled = true;
}

std::vector<std::wstring> CFollower::GetProblems() const
{
    std::vector<std::wstring> problems;
    if (m_isCanceled && !IsComplete())
    {
        problems.emplace_back(L"Der verteilte Lauf wurde abgebrochen");
    }
    for (std::size_t index = 0; index < m_status.size(); ++index)
    {
        if (m_status[index].isGivenUp && !m_status[index].isEnded)
        {
            problems.push_back(m_watches[index].problem);
        }
    }
    return problems;
}

std::vector<std::wstring> CFollower::GetLosses() const
{
    std::vector<std::wstring> losses;
    for (const SSubmission& submission : ReadSubmissions(m_folder))
    {
        std::ranges::move(DescribeLosses(submission), std::back_inserter(losses));
    }
    return losses;
}

std::vector<std::wstring> CFollower::TakeWarnings()
{
    return std::exchange(m_warnings, {});
}

void CFollower::readJournals()
{
    for (std::size_t index = 0; index < m_tails.size(); ++index)
    {
        SShardStatus& status = m_status[index];
        if (status.isEnded)
        {
            continue;
        }
        const std::uint32_t journals = m_tails[index].GetJournalCount();
        m_tails[index].Poll();
        status.hasBegun = status.hasBegun || m_tails[index].GetJournalCount() > journals;
        status.done = m_tails[index].GetDone();
        status.failed = m_tails[index].GetFailed();
        status.isEnded = m_tails[index].HasEnded() && status.done >= status.cases;
    }
}

void CFollower::readSubmissions()
{
    m_submissions = ReadSubmissions(m_folder);
    for (std::uint32_t index = 0; index < m_status.size(); ++index)
    {
        m_status[index].submissions =
            static_cast<std::uint32_t>(std::ranges::count_if(m_submissions, [index](const SSubmission& submission) {
                return std::ranges::binary_search(submission.shards, index + 1);
            }));
    }
}

void CFollower::ask(Time now)
{
    RequireSameRun();
    const std::optional<Tasks> tasks = m_submissions.empty() ? Tasks() : m_engine.Poll(m_submissions);
    m_hasAsked = true;
    m_lastQuestion = now;
    m_hasAnswer = tasks.has_value();
    if (m_hasAnswer)
    {
        takeAnswer(*tasks, now);
    }
}

void CFollower::takeAnswer(const Tasks& tasks, Time now)
{
    for (std::uint32_t index = 0; index < m_status.size(); ++index)
    {
        const auto found = tasks.find(index + 1);
        m_status[index].task = found == tasks.end() ? STask() : found->second;
        m_status[index].hasBegun = false;
        SWatch& watch = m_watches[index];
        const bool isOver = m_status[index].task.state == ETaskState::Over;
        watch.since = watch.isSuspect ? watch.since : now;
        watch.isSuspect = isOver;
    }
    warnOfStuckTasks();
}

/// Warns once for each reason.
void CFollower::warnOfStuckTasks()
{
    std::map<std::wstring, std::vector<std::uint32_t>> shards;
    for (std::uint32_t index = 0; index < m_status.size(); ++index)
    {
        if (const STask& task = m_status[index].task; task.isStuck)
        {
            shards[task.note].push_back(index + 1);
        }
    }
    for (const auto& [reason, numbers] : shards)
    {
        if (m_stuckReasons.insert(reason).second)
        {
            m_warnings.push_back(
                LbFormat(L"Teil %s beginnt ohne einen Eingriff nicht: %s", FormatNumbers(numbers), reason));
        }
    }
}

/// Called after the journals were read.
void CFollower::judge(Time now)
{
    const bool isAnyUnreadable =
        std::ranges::any_of(m_submissions, [](const SSubmission& submission) { return submission.shards.empty(); });
    std::vector<std::uint32_t> shards;
    for (std::uint32_t index = 0; index < m_status.size(); ++index)
    {
        const SShardStatus& status = m_status[index];
        // A submission that another process is just writing may contain the shard.
        const bool isNew = status.submissions == 0 && !isAnyUnreadable;
        if (status.isEnded || status.isGivenUp || (!isNew && !isLost(index, now)))
        {
            continue;
        }
        if (!isLastSubmission(index))
        {
            shards.push_back(index + 1);
        }
        else if (now >= m_watches[index].since + m_engine.GetLongestGrace())
        {
            giveUp(index);
        }
    }
    if (!shards.empty())
    {
        submit(std::move(shards));
    }
}

bool CFollower::isLost(std::size_t index, Time now) const
{
    const SWatch& watch = m_watches[index];
    // In the step in which the engine reports the tasks as over (now == since), the journals were read before that
    // report and may lack the last records.
    return watch.isSuspect && now > watch.since && now >= watch.since + m_engine.GetGrace();
}

/// The number of submissions of the shard since its last new verdict.
std::uint32_t CFollower::countFutile(std::size_t index) const
{
    const std::uint64_t verdicts = m_tails[index].GetVerdicts();
    const auto shard = static_cast<std::uint32_t>(index + 1);
    return static_cast<std::uint32_t>(
        std::ranges::count_if(m_submissions, [verdicts, shard](const SSubmission& submission) {
            const auto found = std::ranges::lower_bound(submission.shards, shard);
            return found != submission.shards.end() && *found == shard &&
                   submission.verdicts[static_cast<std::size_t>(found - submission.shards.begin())] >= verdicts;
        }));
}

/// True if the shard is not submitted again once it is lost.
bool CFollower::isLastSubmission(std::size_t index) const
{
    return countFutile(index) > sc_MostRepetitions || m_status[index].submissions >= sc_MostSubmissions;
}

/// Why the shard was lost. A problem that the host has reported says more than the end of the task.
std::wstring CFollower::getReason(std::size_t index) const
{
    const SWatch& watch = m_watches[index];
    const std::vector<std::wstring>& problems = m_tails[index].GetProblems();
    const std::wstring& reason = !watch.refusal.empty() ? watch.refusal
                                 : !problems.empty()    ? problems.front()
                                                        : m_status[index].task.note;
    return reason.empty() ? std::wstring(L"ohne Angabe") : reason;
}

void CFollower::giveUp(std::size_t index)
{
    const std::uint32_t futile = countFutile(index);
    m_watches[index].problem =
        futile > sc_MostRepetitions
            ? LbFormat(L"Teil %u ging %u-mal hintereinander ohne neues Ergebnis verloren, zuletzt: %s", index + 1,
                       futile, getReason(index))
            : LbFormat(L"Teil %u ging %u-mal verloren und wird nicht mehr vergeben, zuletzt: %s", index + 1,
                       m_status[index].submissions, getReason(index));
    m_status[index].isGivenUp = true;
}

void CFollower::submit(std::vector<std::uint32_t> shards)
{
    RequireSameRun();
    const std::vector<SShardStatus> before = m_status;
    readSubmissions();
    SSubmission submission = {static_cast<std::uint32_t>(m_submissions.size()) + 1, {}, {}};
    for (const std::uint32_t shard : shards)
    {
        m_watches[shard - 1].isSuspect = false;
        // Another process that follows the run may have submitted the shard already.
        if (m_status[shard - 1].submissions == before[shard - 1].submissions)
        {
            submission.shards.push_back(shard);
            submission.verdicts.push_back(m_tails[shard - 1].GetVerdicts());
            const bool isFirst = m_status[shard - 1].submissions == 0;
            submission.reasons.push_back(isFirst ? std::wstring() : getReason(shard - 1));
        }
    }
    if (submission.shards.empty() || !ClaimSubmission(m_folder, submission))
    {
        readSubmissions();
        return;
    }
    readSubmissions();
    submitClaimed(submission);
}

void CFollower::submitClaimed(const SSubmission& submission)
{
    std::ranges::move(DescribeLosses(submission), std::back_inserter(m_warnings));
    std::wstring refusal;
    try
    {
        m_engine.Submit(submission);
    }
    catch (const LbException& exception)
    {
        // The options for the scheduler are probably wrong: the user sees the error at once and submits the run again.
        if (submission.number == 1)
        {
            ForgetShards(m_folder);
            throw;
        }
        refusal = exception.GetMessageText();
        m_warnings.push_back(LbFormat(L"Die Neuvergabe der verlorenen Teile %s ist gescheitert: %s",
                                      FormatNumbers(submission.shards), refusal));
    }
    for (const std::uint32_t shard : submission.shards)
    {
        m_watches[shard - 1].refusal = refusal;
    }
}

bool CFollower::isDone() const
{
    return std::ranges::all_of(m_status, [](const SShardStatus& status) { return status.isEnded || status.isGivenUp; });
}

bool CFollower::isAnyTaskActive() const
{
    return std::ranges::any_of(m_status,
                               [](const SShardStatus& status) { return status.task.state != ETaskState::Over; });
}

} // namespace Runner
