/// The progress of a run, and its failures as they happen.
#pragma once

#include <condition_variable>
#include <cstdint>
#include <map>
#include <mutex>
#include <set>
#include <span>
#include <string>
#include <thread>
#include <vector>

#include "base/inoncopyable.h"
#include "base/lbtimer.h"
#include "testing/lutestsuiterunner/execution/listener.h"

namespace Runner
{

/// The progress at one moment.
struct SProgress
{
    std::size_t done = 0;
    std::size_t total = 0;
    std::size_t failed = 0;
    std::uint64_t elapsed = 0; ///< seconds, like all times in this record
    std::uint64_t left = 0;    ///< estimate; 0 while it is unknown
    /// The cases that have been running longest, and how long.
    std::vector<std::pair<std::wstring, std::uint64_t>> running;
};

/// One line, without line feed. Shortens the names of the running cases, or leaves cases out, so that the line has at
/// most `width` characters; 0: no limit.
std::wstring FormatProgress(const SProgress& progress, std::size_t width = 0);

/// A duration in minutes and seconds, or with hours: "0:07", "1:02:03".
std::wstring FormatDuration(std::uint64_t seconds);

/// Shows the progress while the object exists: on a terminal as a line that is rewritten, otherwise as a new line every
/// 30 seconds. Prints failed attempts at once, with their messages.
class CProgressLine : public IRunListener, public INonCopyable
{
public:
    /// `state` tells which cases ran earlier, and `cases` are those to run; `times` contains the expected time of each
    /// case by case index, in nanoseconds, or is empty. The plan of the state must outlive the object.
    CProgressLine(const CRunState& state, std::span<const std::uint32_t> cases, std::vector<std::uint64_t> times);
    ~CProgressLine() override;

    void OnStarted(std::uint32_t caseIndex) override;
    void OnEnded(std::uint32_t caseIndex, const SAttempt& attempt, bool isFinal) override;

    SProgress GetProgress() const;

private:
    void run();
    void count(std::uint32_t caseIndex, const SAttempt& attempt);
    std::uint64_t getWeight(std::uint32_t caseIndex) const;

    /// Adds the cases that have run longest. The caller has locked m_mutex.
    void addRunning(std::uint64_t now, SProgress& progress) const;

    const SPlan& m_plan;
    const std::vector<std::uint64_t> m_times;
    const LbTimer m_timer;
    mutable std::mutex m_mutex; ///< protects the members below
    std::condition_variable m_ended;
    bool m_hasEnded = false;
    SProgress m_progress;
    std::set<std::uint32_t> m_failed; ///< the cases outside the quarantine that have failed so far
    double m_doneWeight = 0;
    double m_totalWeight = 0;
    std::map<std::uint32_t, std::uint64_t> m_running; ///< by case index: start time on `m_timer`, in nanoseconds
    std::thread m_thread;
};

} // namespace Runner
