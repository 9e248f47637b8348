/// Follows a distributed run to its end: submits its shards, watches their journals, and submits lost shards again.
#pragma once

#include <chrono>
#include <cstdint>
#include <deque>
#include <optional>
#include <string>
#include <vector>

#include "base/inoncopyable.h"
#include "testing/lutestsuiterunner/cluster/engine.h"
#include "testing/lutestsuiterunner/cluster/shards.h"
#include "testing/lutestsuiterunner/journal/tail.h"

namespace Runner
{

/// How far a shard is.
struct SShardStatus
{
    std::uint32_t cases = 0;
    std::uint32_t done = 0;
    std::uint32_t failed = 0;
    std::uint32_t submissions = 0; ///< how often it was submitted
    bool hasBegun = false;         ///< a host has begun a journal since the engine was asked last
    bool isEnded = false;          ///< its journals contain the results of all its cases
    bool isGivenUp = false;        ///< it was lost too often
    STask task;
};

/// Several processes may follow one run. One thread at a time.
class CFollower : public INonCopyable
{
public:
    using Time = std::chrono::steady_clock::time_point;

    /// How often a lost shard is submitted again.
    static constexpr std::uint32_t sc_MostRepetitions = 3;

    /// How long hosts whose work is done may take to end by themselves.
    static constexpr std::chrono::seconds sc_EndLimit{2};

    /// How long the tasks of a canceled run may take to end.
    static constexpr std::chrono::seconds sc_CancelLimit{60};

    /// `folder` ends in a separator. The engine outlives the object.
    CFollower(const std::wstring& folder, const std::vector<SShardEntry>& shards, IEngine& engine);

    /// Takes all steps that are due at this time, which never goes back. True when there is nothing left to wait for.
    /// Throws LbException with a German message if the scheduler takes no tasks.
    bool Step(Time now);

    /// Reads the journals and asks the scheduler, but submits no tasks.
    void Look();

    /// Asks the scheduler to end all tasks. From now on neither this process nor another one that follows the run
    /// submits tasks.
    void Cancel();

    bool IsCanceled() const { return m_isCanceled; }

    /// False if the scheduler did not answer the last request.
    bool HasAnswer() const { return m_hasAnswer; }

    /// Indexed by the shard's number - 1.
    const std::vector<SShardStatus>& GetShards() const { return m_status; }

    /// The number of a shard's journals; `index` is the shard's number - 1.
    std::uint32_t CountJournals(std::size_t index) const { return m_tails[index].GetJournalCount(); }

    /// One German line for each shard that was given up, with the reason, and one if the run was canceled.
    std::vector<std::wstring> GetProblems() const;

private:
    /// What is known of a shard beside its status.
    struct SWatch
    {
        bool isSuspect = false; ///< the scheduler says that its tasks are over
        Time since;             ///< when it said so
    };

    void readJournals();
    void readSubmissions();
    void ask(Time now);
    void judge(Time now);
    bool hasEndedTasks(Time now);
    bool hasEndedCanceled(Time now);
    void submit(std::vector<std::uint32_t> shards);
    bool isDone() const;
    bool isAnyTaskActive() const;

    const std::wstring m_folder;
    IEngine& m_engine;
    std::deque<CRunTail> m_tails;
    std::vector<SShardStatus> m_status;
    std::vector<SWatch> m_watches;
    std::vector<SSubmission> m_submissions;
    bool m_hasAsked = false;
    Time m_nextQuestion;
    bool m_hasAnswer = true;
    bool m_isCanceled = false;
    std::optional<Time> m_canceledSince; ///< the engine was told to cancel
    std::optional<Time> m_doneSince;     ///< nothing is left but tasks that are not over yet
};

} // namespace Runner
