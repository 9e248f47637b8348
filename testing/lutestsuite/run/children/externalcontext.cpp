#include "testing/lutestsuite/run/children/externalcontext.h"

#include <algorithm>
#include <utility>

#include "testing/lutestsuite/lutestsuiteutils.h"

namespace LuTestSuiteRun
{

std::size_t CSpareLanes::GetMost()
{
    return LuTestSuiteUtils::GetDefaultThreadCount();
}

/// A spare that no case has taken for long has left.
void CSpareLanes::dropEnded()
{
    std::erase_if(m_lanes, [](const std::unique_ptr<CExternalLane>& lane) { return !lane->IsChildRunning(); });
}

bool CSpareLanes::takePlace(const std::function<std::size_t()>& count)
{
    const std::lock_guard lock(m_mutex);
    dropEnded();
    if (m_lanes.size() + m_starting >= std::min(count(), GetMost()))
    {
        return false;
    }
    ++m_starting;
    return true;
}

/// Null when something is missing for it.
std::unique_ptr<CExternalLane> CSpareLanes::start() const
{
    try
    {
        auto lane = std::make_unique<CExternalLane>(m_settings);
        const bool isReady = lane->MakeReady();
        lane->BeSpare();
        return isReady ? std::move(lane) : nullptr;
    }
    catch (...)
    {
        // The case that is under way needs none. One that does not get its objects itself says so.
        return nullptr;
    }
}

void CSpareLanes::Start(const std::function<std::size_t()>& count)
{
    constexpr int c_AtATime = 2;
    for (int started = 0; started < c_AtATime && takePlace(count); ++started)
    {
        std::unique_ptr<CExternalLane> lane = start();
        const std::lock_guard lock(m_mutex);
        --m_starting;
        m_started.notify_all();
        if (!lane)
        {
            return;
        }
        m_lanes.push_back(std::move(lane));
    }
}

std::unique_ptr<CExternalLane> CSpareLanes::Take()
{
    std::unique_lock lock(m_mutex);
    // To start another one would take as long.
    m_started.wait(lock, [this] {
        dropEnded();
        return !m_lanes.empty() || m_starting == 0;
    });
    if (m_lanes.empty())
    {
        return nullptr;
    }
    std::unique_ptr<CExternalLane> lane = std::move(m_lanes.front());
    m_lanes.erase(m_lanes.begin());
    return lane;
}

void CExternalContext::assertLane(bool isIsolated)
{
    if (isLaneFor(isIsolated))
    {
        return;
    }
    m_lane.reset();
    if (isIsolated)
    {
        m_lane = m_spares.Take();
    }
    if (!m_lane)
    {
        m_lane = std::make_unique<CExternalLane>(m_spares.GetSettings());
    }
    m_use = EUse::None;
}

bool CExternalContext::MakeReady(bool isIsolated)
{
    assertLane(isIsolated);
    return m_lane->MakeReady();
}

CExternalLane& CExternalContext::Obtain(bool isIsolated)
{
    assertLane(isIsolated);
    m_use = isIsolated ? EUse::Isolated : EUse::Shared;
    m_lane->AssertChild();
    m_lane->AssertProcessIndex();
    return *m_lane;
}

} // namespace LuTestSuiteRun
