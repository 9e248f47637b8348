/// Follows a distributed run to its end: hands its shards over, watches their journals, and hands over again what was
/// lost.
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
    std::uint32_t submissions = 0; ///< how often it was handed over
    bool hasBegun = false;         ///< a host has begun a journal since the engine was asked last
    bool isEnded = false;          ///< its journals hold all that it had to do
    bool isGivenUp = false;        ///< it was lost too often
    STask task;
};

/// Several processes may follow one run. One thread at a time.
class CFollower : public INonCopyable
{
public:
    using Time = std::chrono::steady_clock::time_point;

    /// How often a shard that was lost is handed over again.
    static constexpr std::uint32_t sc_MostRepetitions = 3;

    /// Hosts that have nothing left to do are given so long to end by themselves.
    static constexpr std::chrono::seconds sc_EndLimit{2};

    /// A cancelled run's tasks are waited for so long.
    static constexpr std::chrono::seconds sc_CancelLimit{60};

    /// `folder` ends in a separator. The engine outlives the object.
    CFollower(const std::wstring& folder, const std::vector<SShardEntry>& shards, IEngine& engine);

    /// Does what is to do at this time, which never goes back; true when there is nothing left to wait for. Throws
    /// LbException with a German message if the scheduler takes no tasks.
    bool Step(Time now);

    /// Reads journals and asks the scheduler, but hands nothing over.
    void Look();

    /// Asks the scheduler to end all tasks, and hands none over from now on; also for other processes that follow.
    void Cancel();

    bool IsCanceled() const { return m_isCanceled; }

    /// False if the scheduler did not answer when it was asked last.
    bool HasAnswer() const { return m_hasAnswer; }

    /// By number - 1.
    const std::vector<SShardStatus>& GetShards() const { return m_status; }

    /// Journals of a shard, by number - 1.
    std::uint32_t CountJournals(std::size_t index) const { return m_tails[index].GetJournalCount(); }

    /// Why shards were given up, and that the run was canceled. German, one line each.
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
