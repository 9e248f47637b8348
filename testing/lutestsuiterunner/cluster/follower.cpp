#include "testing/lutestsuiterunner/cluster/follower.h"

#include <algorithm>

#include "base/lbformat.h"
#include "testing/lutestsuiterunner/cluster/submissions.h"
#include "testing/lutestsuiterunner/journal/filenames.h"

namespace Runner
{

CFollower::CFollower(const std::wstring& folder, const std::vector<SShardEntry>& shards, IEngine& engine)
    : m_folder(folder), m_engine(engine), m_status(shards.size()), m_watches(shards.size())
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
    if (!m_hasAsked || now >= m_nextQuestion)
    {
        ask(now);
    }
    if (m_isCanceled)
    {
        return hasEndedCanceled(now);
    }
    judge(now);
    return isDone() && hasEndedTasks(now);
}

/// The hosts of the remaining tasks end soon by themselves. If a shard has two hosts, the slower one is not needed.
bool CFollower::hasEndedTasks(Time now)
{
    m_doneSince = m_doneSince ? m_doneSince : now;
    if (isAnyTaskActive() && now < *m_doneSince + sc_EndLimit)
    {
        return false;
    }
    // The scheduler may still hold tasks of lost shards, which would never end.
    if (isAnyTaskActive() || m_submissions.size() > 1)
    {
        m_engine.Cancel(m_submissions);
    }
    return true;
}

bool CFollower::hasEndedCanceled(Time now)
{
    if (!m_canceledSince)
    {
        m_canceledSince = now;
        m_engine.Cancel(m_submissions);
        // The last answer may be older than the tasks.
        m_hasAnswer = false;
    }
    return isDone() || (m_hasAnswer && !isAnyTaskActive()) || now >= *m_canceledSince + sc_CancelLimit;
}

void CFollower::Look()
{
    readJournals();
    ask({});
}

void CFollower::Cancel()
{
    MarkCanceled(m_folder);
    readSubmissions();
    m_isCanceled = true;
}

std::vector<std::wstring> CFollower::GetProblems() const
{
    std::vector<std::wstring> problems;
    if (m_isCanceled)
    {
        problems.emplace_back(L"Der verteilte Lauf wurde abgebrochen");
    }
    for (std::size_t index = 0; index < m_status.size(); ++index)
    {
        const SShardStatus& status = m_status[index];
        if (status.isGivenUp)
        {
            problems.push_back(LbFormat(L"Teil %u wurde %u mal vergeben und jedes Mal verloren, zuletzt: %s", index + 1,
                                        status.submissions,
                                        status.task.note.empty() ? std::wstring(L"ohne Angabe") : status.task.note));
        }
    }
    return problems;
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
    const std::optional<Tasks> tasks = m_submissions.empty() ? Tasks() : m_engine.Poll(m_submissions);
    m_hasAsked = true;
    m_nextQuestion = now + m_engine.GetPollInterval();
    m_hasAnswer = tasks.has_value();
    if (!m_hasAnswer)
    {
        return;
    }
    for (std::uint32_t index = 0; index < m_status.size(); ++index)
    {
        const auto found = tasks->find(index + 1);
        m_status[index].task = found == tasks->end() ? STask() : found->second;
        m_status[index].hasBegun = false;
        SWatch& watch = m_watches[index];
        const bool isOver = m_status[index].task.state == ETaskState::Over;
        watch.since = watch.isSuspect ? watch.since : now;
        watch.isSuspect = isOver;
    }
}

/// Called after the journals were read.
void CFollower::judge(Time now)
{
    std::vector<std::uint32_t> lost;
    for (std::uint32_t index = 0; index < m_status.size(); ++index)
    {
        SShardStatus& status = m_status[index];
        const bool isNew = status.submissions == 0;
        // In the step in which the engine reports the tasks as over (now == since), the journals were read before that
        // report.
        const Time since = m_watches[index].since;
        const bool isLost = m_watches[index].isSuspect && now > since && now >= since + m_engine.GetGrace();
        if (status.isEnded || status.isGivenUp || (!isNew && !isLost))
        {
            continue;
        }
        if (status.submissions > sc_MostRepetitions)
        {
            // A problem that the host has reported says more than the end of the task.
            const std::vector<std::wstring>& problems = m_tails[index].GetProblems();
            status.task.note = problems.empty() ? status.task.note : problems.front();
            status.isGivenUp = true;
        }
        else
        {
            lost.push_back(index + 1);
        }
    }
    if (!lost.empty())
    {
        submit(std::move(lost));
    }
}

void CFollower::submit(std::vector<std::uint32_t> shards)
{
    const SSubmission submission = {static_cast<std::uint32_t>(m_submissions.size()) + 1, std::move(shards)};
    const bool isOurs = ClaimSubmission(m_folder, submission);
    readSubmissions();
    for (const std::uint32_t shard : submission.shards)
    {
        m_watches[shard - 1].isSuspect = false;
    }
    // Another process that follows the run may have been quicker.
    if (isOurs)
    {
        m_engine.Submit(submission);
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
