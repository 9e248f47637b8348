#include "testing/lutestsuite/run/runevents.h"

#include <utility>

namespace LuTestSuiteRun
{

IRunObserver::~IRunObserver() = default;

void IRunObserver::OnPlanned(const SRunPlanned&) {}
void IRunObserver::OnCaseStarted(const SCaseStarted&) {}
void IRunObserver::OnCaseFinished(const SCaseFinished&) {}
void IRunObserver::OnCanceled() {}
void IRunObserver::OnEnded(const SRunResult&) {}

CRunEvents::CRunEvents(const std::function<bool()>& isCanceled, std::vector<IRunObserver*> observers,
                       std::function<bool(std::size_t)> isNeeded)
    : m_isHostCanceling(isCanceled), m_isNeeded(std::move(isNeeded)), m_observers(std::move(observers))
{
}

/// Calls code of the host, one call at a time. An exception fails the run and passes through.
template<typename Call>
void CRunEvents::guarded(const Call& call)
{
    const LbCriticalSectionLock lock(m_lock);
    try
    {
        call();
    }
    catch (...)
    {
        Fail();
        throw;
    }
}

template<typename... Event>
void CRunEvents::tell(void (IRunObserver::*operation)(const Event&...), const Event&... event)
{
    guarded([&] {
        for (IRunObserver* const observer : m_observers)
        {
            (observer->*operation)(event...);
        }
    });
}

void CRunEvents::Plan(const SRunPlanned& planned)
{
    m_firstCase = planned.cases.data();
    tell(&IRunObserver::OnPlanned, planned);
}

bool CRunEvents::IsNeeded(const SPlannedCase& planned)
{
    bool isNeeded = true;
    if (!m_isNeeded)
    {
        return isNeeded;
    }
    guarded([&] {
        if (m_state == EState::Running)
        {
            isNeeded = m_isNeeded(static_cast<std::size_t>(&planned.info - m_firstCase));
        }
    });
    return isNeeded;
}

void CRunEvents::Start(const SPlannedCase& planned, std::uint64_t processId)
{
    const auto index = static_cast<std::size_t>(&planned.info - m_firstCase);
    tell(&IRunObserver::OnCaseStarted, SCaseStarted{index, planned.info, processId});
}

void CRunEvents::Finish(const SPlannedCase& planned, const SCaseEnd& end)
{
    const auto index = static_cast<std::size_t>(&planned.info - m_firstCase);
    planned.info.executed = true;
    tell(&IRunObserver::OnCaseFinished, SCaseFinished{index, planned.info, end});
}

void CRunEvents::Withdraw(const std::vector<std::size_t>& indices, std::vector<SCaseInfo>& cases)
{
    for (const std::size_t index : indices)
    {
        cases[index].executed = false;
    }
}

void CRunEvents::End(const SRunResult& result)
{
    tell(&IRunObserver::OnEnded, result);
}

CRunEvents::EState CRunEvents::AskState()
{
    EState state = EState::Running;
    guarded([&] {
        if (m_state == EState::Running && m_isHostCanceling())
        {
            m_state = EState::Canceled;
            tell(&IRunObserver::OnCanceled);
        }
        state = m_state;
    });
    return state;
}

void CRunEvents::Fail() noexcept
{
    const LbCriticalSectionLock lock(m_lock);
    m_observers.clear();
    m_state = EState::Failed;
}

} // namespace LuTestSuiteRun
