/// Follows a distributed run to its end: submits its shards, watches their journals, and submits lost shards again.
#pragma once

#include <chrono>
#include <cstdint>
#include <deque>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "base/inoncopyable.h"
#include "testing/lutestsuiterunner/cluster/engine.h"
#include "testing/lutestsuiterunner/cluster/shards.h"
#include "testing/lutestsuiterunner/journal/tail.h"

namespace Runner
{

/// The warning if the scheduler has not confirmed that all canceled tasks have ended.
inline constexpr const wchar_t* c_UnconfirmedCancellation =
    L"Der Abbruch ist nicht bestätigt: Prozesse können noch laufen";

/// The progress of a shard.
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

    /// A lost shard that brings no new verdict is submitted again at most this often in a row.
    static constexpr std::uint32_t sc_MostRepetitions = 3;

    /// How often a shard is submitted at most, with new verdicts or without.
    static constexpr std::uint32_t sc_MostSubmissions = 100;

    /// How long hosts whose work is done may take to end by themselves.
    static constexpr std::chrono::seconds sc_EndLimit{2};

    /// How long the tasks of a canceled run may take to end.
    static constexpr std::chrono::seconds sc_CancelLimit{60};

    /// `folder` ends in a separator. The engine must outlive the object.
    CFollower(const std::wstring& folder, const std::vector<SShardEntry>& shards, IEngine& engine);

    /// Does everything that is due at `now`, which must not decrease from call to call. Returns true when there is
    /// nothing left to wait for. Throws LbException with a German message if the scheduler refuses the first submission
    /// (the folder then holds no run), or if a file cannot be written. Also throws as RequireSameRun. If the scheduler
    /// refuses a later submission, its shards count as lost.
    bool Step(Time now);

    /// Throws LbException with a German message if the folder does not contain this run any more, because another
    /// process has replaced it.
    void RequireSameRun() const;

    /// Returns each new warning once: German lines about tasks that do not begin by themselves, lost shards, refused
    /// submissions, and an unconfirmed cancellation.
    std::vector<std::wstring> TakeWarnings();

    /// Reads the journals and asks the scheduler, but submits no tasks. Throws as RequireSameRun.
    void Poll();

    /// Reads only the journals, while the tasks belong to another process. Throws as RequireSameRun.
    void Watch();

    /// Marks the run as canceled; the next Step asks the scheduler to end all tasks. From now on neither this process
    /// nor another one that follows the run submits tasks. Throws as RequireSameRun.
    void Cancel();

    bool IsCanceled() const { return m_isCanceled; }

    /// True if the journals contain the results of all cases.
    bool IsComplete() const;

    /// False if the scheduler did not answer the last request.
    bool HasAnswer() const { return m_hasAnswer; }

    /// Indexed by the shard's number - 1.
    const std::vector<SShardStatus>& GetShards() const { return m_status; }

    /// One German line for each shard that was given up and is not complete, with the reason for its last loss, and one
    /// if the run was canceled before it was complete.
    std::vector<std::wstring> GetProblems() const;

    /// One German line for each loss of shards that were submitted again, by this or another process.
    std::vector<std::wstring> GetLosses() const;

private:
    /// What is known of a shard beside its status.
    struct SWatch
    {
        bool isSuspect = false; ///< the scheduler says that its tasks are over
        Time since;             ///< when it first said so
        std::wstring refusal;   ///< why the scheduler did not take the last submission; empty if it did
        std::wstring problem;   ///< why the shard was given up, German; empty if it was not
    };

    void readJournals();
    void readSubmissions();
    void ask(Time now);
    void takeAnswer(const Tasks& tasks, Time now);
    void warnOfStuckTasks();
    void judge(Time now);
    bool isLost(std::size_t index, Time now) const;
    std::uint32_t countFutile(std::size_t index) const;
    bool isLastSubmission(std::size_t index) const;
    std::wstring getReason(std::size_t index) const;
    void giveUp(std::size_t index);
    bool hasEndedTasks(Time now);
    bool hasEndedCanceled(Time now, bool hasAsked);
    void submit(std::vector<std::uint32_t> shards);
    void submitClaimed(const SSubmission& submission);
    bool isDone() const;
    bool isAnyTaskActive() const;

    const std::wstring m_folder;
    const std::vector<SShardEntry> m_shards;
    IEngine& m_engine;
    std::deque<CRunTail> m_tails;
    std::vector<SShardStatus> m_status;
    std::vector<SWatch> m_watches;
    std::vector<SSubmission> m_submissions;
    std::vector<std::wstring> m_warnings;
    std::set<std::wstring> m_stuckReasons; ///< reasons of which the user has been warned
    bool m_hasAsked = false;
    Time m_lastQuestion;
    bool m_hasAnswer = true;
    bool m_isCanceled = false;
    bool m_isEndKnown = false;           ///< after the cancellation, the engine has said that all tasks are over
    std::optional<Time> m_canceledSince; ///< when the engine was first told to cancel
    std::optional<Time> m_doneSince;     ///< since when every shard has ended or was given up
};

} // namespace Runner
