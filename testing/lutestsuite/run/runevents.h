/// Reports the events of a run.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <vector>

#include "base/inoncopyable.h"
#include "base/lbcriticalsection.h"
#include "testing/lutestsuite/lutestsuiterunevents.h"
#include "testing/lutestsuite/run/plan.h"

namespace LuTestSuiteRun
{

/// The only class that reports events of a run to observers and asks the host whether to continue. Any thread; the
/// object makes one call at a time.
///
/// The first exception of an observer or of a callback of the host fails the run: then no observer or callback is
/// called again.
///
/// In this library, only this class sets SCaseInfo::executed.
class CRunEvents : public INonCopyable
{
public:
    enum class EState
    {
        Running,
        Canceled, ///< by the host
        Failed    ///< by an exception
    };

    /// `isCanceled` and the observers must outlive the object. Observers are called in the order of the list. For
    /// `isNeeded` see SRunOptions.
    CRunEvents(const std::function<bool()>& isCanceled, std::vector<IRunObserver*> observers,
               std::function<bool(std::size_t)> isNeeded = {});

    void Plan(const SRunPlanned& planned);

    /// False if SRunOptions::isNeeded leaves the case out.
    bool IsNeeded(const SPlannedCase& planned);

    /// For `processId` see SCaseStarted.
    void Start(const SPlannedCase& planned, std::uint64_t processId);

    /// Marks the record as executed, then reports the end of the case.
    void Finish(const SPlannedCase& planned, const SCaseEnd& end);

    /// Marks finished cases, given by their indices in the plan, as not executed. Precondition: all cases have ended.
    static void Withdraw(const std::vector<std::size_t>& indices, std::vector<SCaseInfo>& cases);

    void End(const SRunResult& result);

    /// Asks the host whether to continue, unless the run is already canceled or failed, and returns the state of the
    /// run. A canceled or failed run never continues.
    EState AskState();

    /// True if no case may start or continue.
    bool IsCanceled() { return AskState() != EState::Running; }

    /// Fails the run because of an exception thrown elsewhere.
    void Fail() noexcept;

private:
    template<typename Call>
    void guarded(const Call& call);

    template<typename... Event>
    void tell(void (IRunObserver::*operation)(const Event&...), const Event&... event);

    const std::function<bool()>& m_isHostCanceling;
    const std::function<bool(std::size_t)> m_isNeeded;

    LbCriticalSection m_lock; ///< protects all members below
    std::vector<IRunObserver*> m_observers;
    const SCaseInfo* m_firstCase = nullptr; ///< first record of the plan
    EState m_state = EState::Running;
};

} // namespace LuTestSuiteRun
