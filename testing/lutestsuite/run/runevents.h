/// The stream of a run's events.
#pragma once

#include <cstdint>
#include <functional>
#include <vector>

#include "base/inoncopyable.h"
#include "base/lbcriticalsection.h"
#include "testing/lutestsuite/lutestsuiterunevents.h"
#include "testing/lutestsuite/run/plan.h"

namespace LuTestSuiteRun
{

/// The one place that tells observers what happens in a run, and that asks its host whether to go on. Any thread;
/// one call at a time.
///
/// The first exception, of an observer or of the host's question, fails the run: nobody is told or asked any more.
class CRunEvents : public INonCopyable
{
public:
    enum class EState
    {
        Running,
        Canceled, ///< by the host
        Failed    ///< by an exception
    };

    /// `isCanceled` and the observers, which are told in this order, are the caller's and outlive the object.
    CRunEvents(const std::function<bool()>& isCanceled, std::vector<IRunObserver*> observers);

    void Plan(const SRunPlanned& planned);

    /// `processId` as in SCaseStarted.
    void Start(const SPlannedCase& planned, std::uint64_t processId);

    /// Marks the record executed.
    void Finish(const SPlannedCase& planned, const SCaseEnd& end);

    void End(const SRunResult& result);

    /// Whether the run goes on. A run that is canceled or has failed remains so.
    EState AskState();

    /// Whether no case is to begin or go on.
    bool IsCanceled() { return AskState() != EState::Running; }

    /// The run ends by an exception that nobody else here has seen.
    void Fail() noexcept;

private:
    template<typename Call>
    void guarded(const Call& call);

    template<typename... Event>
    void tell(void (IRunObserver::*operation)(const Event&...), const Event&... event);

    const std::function<bool()>& m_isHostCanceling;

    LbCriticalSection m_lock; ///< of all below
    std::vector<IRunObserver*> m_observers;
    const SCaseInfo* m_firstCase = nullptr; ///< of the plan
    EState m_state = EState::Running;
};

} // namespace LuTestSuiteRun
