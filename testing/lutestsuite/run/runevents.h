/// The stream of a run's events.
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

/// The only place that reports events of a run to observers and asks the host whether to continue. Any thread; calls
/// are serialised.
///
/// The first exception of an observer or of the host's callback fails the run: then neither is called again.
///
/// In this library only this class writes SCaseInfo::executed.
class CRunEvents : public INonCopyable
{
public:
    enum class EState
    {
        Running,
        Canceled, ///< by the host
        Failed    ///< by an exception
    };

    /// `isCanceled` and the observers, which are called in this order, must outlive the object. `isNeeded` as in
    /// SRunOptions.
    CRunEvents(const std::function<bool()>& isCanceled, std::vector<IRunObserver*> observers,
               std::function<bool(std::size_t)> isNeeded = {});

    void Plan(const SRunPlanned& planned);

    /// False if the host leaves the case out.
    bool IsNeeded(const SPlannedCase& planned);

    /// `processId` as in SCaseStarted.
    void Start(const SPlannedCase& planned, std::uint64_t processId);

    /// Marks the record as executed.
    void Finish(const SPlannedCase& planned, const SCaseEnd& end);

    /// Marks finished cases, given by their indices in the plan, as not executed again. Precondition: all cases have
    /// ended.
    static void Withdraw(const std::vector<std::size_t>& indices, std::vector<SCaseInfo>& cases);

    void End(const SRunResult& result);

    /// True if the run continues. Once canceled or failed, a run stays so.
    EState AskState();

    /// True if no case may start or continue.
    bool IsCanceled() { return AskState() != EState::Running; }

    /// Fails the run for an exception thrown elsewhere.
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
