/// The console as an observer of a run.
#pragma once

#include <deque>

#include "base/lbcriticalsection.h"
#include "testing/lutestsuite/lutestsuiterunevents.h"
#include "testing/lutestsuite/lutestsuitesetup.h"
#include "testing/lutestsuite/run/consolelines.h"

namespace LuTestSuiteRun
{

/// Prints a run's cases and its summary, and hands each printed result to the setup's resultCallback. All of it by the
/// thread that called the run: cases of worker threads wait until that thread prints them.
class CRunConsole : public IRunObserver
{
public:
    /// The arguments are the caller's and outlive the object.
    CRunConsole(const LuTestSuiteSetup& setup, const std::vector<LuTestSuite::SUnitTest>& unitTests);

    void OnCaseStarted(const SCaseStarted& started) override;
    void OnCaseFinished(const SCaseFinished& finished) override;
    void OnEnded(const SRunResult& result) override;

    /// Number of finished cases of worker threads that wait. Any thread.
    std::size_t CountWaiting();

    /// Prints the case that has been waiting longest; there is one. By the thread that called the run.
    void PrintWaiting();

    /// The plan's indices of those that wait. Nothing finishes any more.
    std::vector<std::size_t> GetWaiting() const;

private:
    struct SWaiting
    {
        std::size_t index; ///< in the plan
        const SCaseInfo* info;
    };

    void deliver(const CCaseLines& lines, const SCaseInfo& info) const;

    const LuTestSuiteSetup& m_setup;
    const std::vector<LuTestSuite::SUnitTest>& m_unitTests;
    CCaseLines m_workerLines;
    CCaseLines m_ownLines;

    LbCriticalSection m_lock;       ///< of those that wait
    std::deque<SWaiting> m_waiting; ///< in the order in which they have finished
};

} // namespace LuTestSuiteRun
