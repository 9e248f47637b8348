/// The work of one host on a run: runs cases and records what happens.
#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <mutex>
#include <span>
#include <string>
#include <unordered_map>

#include "base/inoncopyable.h"
#include "base/lbtimer.h"
#include "testing/lutestsuite/lutestsuitesetup.h"
#include "testing/lutestsuiterunner/execution/listener.h"
#include "testing/lutestsuiterunner/journal/writer.h"
#include "testing/lutestsuiterunner/model/runstate.h"

class LuTestSuiteEnvironment;

namespace Runner
{

/// What a session works with; the caller keeps all of it.
struct SSessionParts
{
    CRunState& state;
    CJournalWriter& writer;
    LuTestSuiteEnvironment& environment;
    IRunListener& listener;
    std::uint32_t journal;           ///< number of the writer's journal
    std::wstring dumpDirectory = {}; ///< full path, see LuTestSuiteRun::SRunOptions
};

/// Where cases run.
enum class EProcess
{
    AsPlanned,
    Own ///< each in its own child process
};

/// When failures are repeated, and when they end the run.
struct SSessionLimits
{
    std::uint32_t retries = 0;
    std::uint32_t failFast = 0;     ///< number of failed cases that ends the run; 0: no limit
    std::uint32_t failedBefore = 0; ///< failed cases of earlier sessions, which also count for `failFast`
};

class CSession : public INonCopyable
{
public:
    /// All cases run in the setup's mode; its selection and its reports are ignored.
    CSession(const SSessionParts& parts, const LuTestSuiteSetup& setup, const SSessionLimits& limits);

    /// Writes the record, then applies it to the state. Any thread.
    void Note(const Record& record);

    /// Records that the run is canceled. From then on any other thread that records something waits forever, so the
    /// caller must end the process. Any thread.
    void Abandon();

    /// Records the end of the open attempt at a case, adds the attempt's number to the record, and tells the listener.
    void End(SCaseEnded record);

    /// Runs the cases in this order. An interrupted case runs again under the same attempt number. If a request from
    /// outside cancels the run, records that. Throws LbException if recording fails; then no further case starts.
    /// Confirmations run even after `failFast` failed cases, because they explain these failures. Calls `isNeeded`
    /// before a case would start, and leaves the case out if it returns false; calls come one at a time, on any thread.
    void Run(std::span<const std::uint32_t> cases, EAttemptKind kind, EProcess process,
             const std::function<bool(std::uint32_t)>& isNeeded = {});

    /// True if no more cases may start, because of a request from outside or of `failFast` failed cases.
    bool IsCanceled() const;

    /// Records once that the run is canceled.
    void NoteCancellation();

private:
    class CObserver;

    void start(std::uint32_t caseIndex, EAttemptKind kind, std::int32_t worker, std::uint64_t processId);
    void fillTime(SCaseEnded& record);
    bool isCanceled(EAttemptKind kind) const;
    void noteInterruption();
    bool isFinal(const SAttempt& attempt) const;

    std::recursive_mutex m_mutex; ///< held while something is recorded
    SSessionParts m_parts;
    LuTestSuiteSetup m_setup;
    SSessionLimits m_limits;
    std::atomic<std::uint32_t> m_failed;
    const LbTimer m_timer{LbTimer::eR_NanoSecond};
    std::unordered_map<std::uint32_t, std::uint64_t> m_starts; ///< of the cases under way, by `m_timer`
    bool m_isCancellationNoted = false;
};

} // namespace Runner
