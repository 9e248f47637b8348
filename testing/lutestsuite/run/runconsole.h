/// The console as an observer of a run.
#pragma once

#include <deque>

#include "base/lbcriticalsection.h"
#include "testing/lutestsuite/lutestsuiterunevents.h"
#include "testing/lutestsuite/lutestsuitesetup.h"
#include "testing/lutestsuite/run/consolelines.h"

namespace LuTestSuiteRun
{

/// Prints a run's cases and its summary, and passes each printed result to the setup's resultCallback. Prints only on
/// the thread that called the run: finished cases of worker threads wait until that thread prints them.
class CRunConsole : public IRunObserver
{
public:
    /// The setup and the unit tests must outlive the object. `resultEnd` determines whether the results of cases on the
    /// calling thread are written at once or deferred.
    CRunConsole(const LuTestSuiteSetup& setup, const std::vector<LuTestSuite::SUnitTest>& unitTests,
                LuTestSuite::EBatchEnd resultEnd);

    /// Prints a deferred result.
    ~CRunConsole() override;

    void OnCaseStarted(const SCaseStarted& started) override;
    void OnCaseFinished(const SCaseFinished& finished) override;
    void OnEnded(const SRunResult& result) override;

    /// Number of finished cases of worker threads that wait to be printed. Any thread.
    std::size_t CountWaiting();

    /// Prints the case that has waited longest. Call it on the thread that called the run, and only while a case is
    /// waiting.
    void PrintWaiting();

    /// The plan indices of the cases that are still waiting. Precondition: all workers have ended.
    std::vector<std::size_t> GetWaiting() const;

private:
    struct SWaiting
    {
        std::size_t index; ///< index in the plan
        const SCaseInfo* info;
    };

    const LuTestSuiteSetup& m_setup;
    const std::vector<LuTestSuite::SUnitTest>& m_unitTests;
    const LuTestSuite::EBatchEnd m_resultEnd;
    CCaseLines m_workerLines;
    CCaseLines m_ownLines;

    LbCriticalSection m_lock;       ///< protects m_waiting
    std::deque<SWaiting> m_waiting; ///< in the order in which they finished
};

} // namespace LuTestSuiteRun
