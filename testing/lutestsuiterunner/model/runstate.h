/// The state of a run: its plan, and the outcomes of its cases so far.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <set>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include "testing/lutestsuiterunner/model/plan.h"
#include "testing/lutestsuiterunner/model/records.h"

namespace Runner
{

/// The place of a record. Records are ordered by journal and sequence, never by time.
struct SRecordPlace
{
    std::uint32_t journal = 0;  ///< number of the journal, from 1; 0: no place
    std::uint64_t sequence = 0; ///< number of the record in it, from 1

    auto operator<=>(const SRecordPlace&) const = default;
};

/// One attempt at a case.
struct SAttempt
{
    EAttemptKind kind = EAttemptKind::First;
    SRecordPlace started;
    SRecordPlace ended;              ///< no place while it runs, and also if its host died
    std::uint32_t lostHosts = 0;     ///< number of earlier hosts that died while they ran it
    std::uint32_t canceledHosts = 0; ///< how many of these had recorded that the run was canceled
    std::uint32_t duplicates = 0;    ///< results of other hosts for this attempt, which do not count
    std::uint32_t process = 0;       ///< number of the process that it has shared with other cases; 0 for none
    SCaseEnded result;               ///< until the attempt has ended, only what its start record contains is set

    bool IsEnded() const { return ended.journal != 0; }
    /// True if the attempt has a verdict. It then never runs again.
    bool IsFinished() const { return IsEnded() && result.end != EAttemptEnd::Canceled; }
    bool HasPassed() const { return IsFinished() && result.info.result == LuTestSuiteRun::ECaseRunResult::Ok; }
};

/// The verdict of a case run over all its attempts. Quarantine does not change it.
enum class EVerdict : std::uint32_t
{
    Missing = 0,     ///< not run, or not finished
    Passed = 1,      ///< passed at the first attempt
    Flaky = 2,       ///< passed at a later attempt
    Failed = 3,      ///< failed at all attempts
    FailedShared = 4 ///< it failed, but passed in a process of its own ("nur im gemeinsamen Prozess")
};

/// Counts of case runs in the shard.
struct SVerdictCounts
{
    std::uint32_t planned = 0;
    std::uint32_t missing = 0;
    std::uint32_t passed = 0;
    std::uint32_t flaky = 0;
    std::uint32_t failed = 0; ///< EVerdict::Failed and FailedShared, without those in quarantine
    std::uint32_t failedShared = 0;
    std::uint32_t quarantined = 0; ///< in quarantine and not missing; of the counts above, only `planned` includes them
    std::uint32_t quarantinedFailed = 0;
};

/// Receives records in their order. One thread at a time.
class CRunState
{
public:
    explicit CRunState(SPlan plan);

    /// Applies a record. Throws LbException with a German message, and changes nothing, if the record contradicts the
    /// earlier ones: a case that is not in the plan or in the shard, an end without a start, a second start of a
    /// finished attempt. If a scheduler wrongly considers a host lost, two hosts may run the same shard. Therefore an
    /// attempt that another journal has finished may start again, and its second result is a duplicate; an attempt that
    /// another journal has canceled may end.
    void Apply(const SRecordPlace& place, const Record& record);

    const SPlan& GetPlan() const { return m_plan; }

    /// The attempts of a case in their order; attempt 1 is the first.
    std::span<const SAttempt> GetAttempts(std::uint32_t caseIndex) const { return m_attempts[caseIndex]; }

    EVerdict GetVerdict(std::uint32_t caseIndex) const;

    /// The attempt that reports show: the one that passed and is not a confirmation, else the first that failed, else a
    /// canceled one; null if no attempt has ended.
    const SAttempt* GetReported(std::uint32_t caseIndex) const;

    /// The cases in the shard for which `isWanted` returns true; ascending.
    std::vector<std::uint32_t> FindCases(const std::function<bool(std::uint32_t)>& isWanted) const;

    /// The cases with an attempt that has not ended; ascending.
    std::vector<std::uint32_t> GetOpenCases() const;

    /// The cases in the shard without a finished attempt; ascending. A resumed run runs these.
    std::vector<std::uint32_t> GetMissingCases() const;

    /// The cases that ended in the same process before the attempt, in the order of their ends; empty for an attempt in
    /// a process of its own. Valid until the next record.
    std::span<const std::uint32_t> GetPredecessors(const SAttempt& attempt) const;

    /// The cases that ended in the process with this number (see SAttempt), in the order of their ends. Valid until the
    /// next record.
    std::span<const std::uint32_t> GetCasesOfProcess(std::uint32_t process) const;

    SVerdictCounts CountVerdicts() const;

    /// Whether the last journal records that the run was canceled, and whether it records that the run ended. Both are
    /// false again when the run is resumed.
    bool IsCanceled() const { return m_isCanceled; }
    bool IsEnded() const { return m_isEnded; }
    const std::wstring& GetCancelReason() const { return m_cancelReason; }

    /// True if the host of this journal has recorded that the run was canceled. It may have left attempts open.
    bool WasHostCanceled(std::uint32_t journal) const { return m_canceledJournals.contains(journal); }

    /// The problems in the last journal.
    const std::vector<std::wstring>& GetProblems() const { return m_problems; }

    /// Possible damage that was found when the journals were read. Does not make the run red.
    const std::vector<std::wstring>& GetWarnings() const { return m_warnings; }
    void AddWarnings(const std::vector<std::wstring>& warnings);

    /// True if the run has ended and is green.
    bool IsGreen() const;

    /// Local times of the earliest start and of the end, and the sum of the times that hosts ran, in nanoseconds.
    const std::wstring& GetStartTime() const { return m_startTime; }
    const std::wstring& GetEndTime() const { return m_endTime; }
    std::uint64_t GetTotalTime() const { return m_earlierTime + m_elapsed; }

private:
    void apply(const SRecordPlace& place, const SJournalBegun& record);
    void apply(const SRecordPlace& place, const SCaseStarted& record);
    void apply(const SRecordPlace& place, const SCaseEnded& record);
    void apply(const SRecordPlace& place, const SRunCanceled& record);
    void apply(const SRecordPlace& place, const SRunProblem& record);
    void apply(const SRecordPlace& place, const SRunFinished& record);
    std::vector<SAttempt>& getAttempts(std::uint32_t caseIndex);
    bool isFinishedElsewhere(const SRecordPlace& place, std::uint32_t caseIndex, std::uint32_t attempt);

    bool hasOwnProcess(const SAttempt& attempt) const;
    std::uint32_t findProcess(const SAttempt& attempt);

    /// Cases that ended in one process, in the order of their places.
    struct SEndedCases
    {
        std::vector<SRecordPlace> places;
        std::vector<std::uint32_t> cases;
    };

    /// The latest process with a given id. The system may reuse the id of an ended process.
    struct SLatestProcess
    {
        std::uint32_t number = 0;
        std::uint32_t attempt = 1;
        bool isOver = false;
    };

    SPlan m_plan;
    std::vector<std::vector<SAttempt>> m_attempts; ///< one list per case run of the plan
    std::vector<SEndedCases> m_processes;          ///< process 1 comes first
    /// By journal and process id, since ids are unique only among the running processes of one machine.
    std::map<std::pair<std::uint32_t, std::uint64_t>, SLatestProcess> m_latestProcesses;
    std::uint64_t m_host = 0; ///< process id of the last journal's host
    SRecordPlace m_last;
    std::set<std::uint32_t> m_canceledJournals;
    bool m_isCanceled = false;
    bool m_isEnded = false;
    std::wstring m_cancelReason;
    std::vector<std::wstring> m_problems;
    std::vector<std::wstring> m_warnings;
    std::wstring m_startTime;
    std::wstring m_endTime;
    std::uint64_t m_earlierTime = 0; ///< of the journals before the last
    std::uint64_t m_elapsed = 0;     ///< of the last journal
};

} // namespace Runner
