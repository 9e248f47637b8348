#include "testing/lutestsuite/run/children/externalcontext.h"

#include <algorithm>
#include <utility>

#include "base/lbexception.h"
#include "base/os/processes.h"
#include "testing/lutestsuite/lutestsuiteutils.h"
#include "testing/lutestsuite/output/outputbatch.h"

namespace LuTestSuiteRun
{

std::size_t CSpareChildren::GetMost()
{
    return LbOs::HasFewProcesses() ? 0 : LuTestSuiteUtils::GetDefaultThreadCount();
}

/// Removes spare children that have ended; a child exits if it is not used for long.
void CSpareChildren::dropEnded()
{
    std::erase_if(m_channels, [](const std::unique_ptr<CChildChannel>& channel) { return !channel->IsChildRunning(); });
}

bool CSpareChildren::takePlace(const std::function<std::size_t()>& count)
{
    const std::lock_guard lock(m_mutex);
    dropEnded();
    if (m_isClosed || m_channels.size() + m_starting >= std::min(count(), GetMost()))
    {
        return false;
    }
    ++m_starting;
    return true;
}

/// Starts a spare child; null on failure.
std::unique_ptr<CChildChannel> CSpareChildren::start() const
{
    try
    {
        auto channel = std::make_unique<CChildChannel>(m_settings);
        const bool isReady = channel->MakeReady();
        channel->MarkAsSpare();
        return isReady ? std::move(channel) : nullptr;
    }
    catch (...)
    {
        // Ignores the failure, because the case that needs the child tries again and reports the failure.
        return nullptr;
    }
}

void CSpareChildren::Start(const std::function<std::size_t()>& count)
{
    constexpr int c_AtATime = 2;
    for (int started = 0; started < c_AtATime && takePlace(count); ++started)
    {
        std::unique_ptr<CChildChannel> channel = start();
        const std::lock_guard lock(m_mutex);
        --m_starting;
        m_started.notify_all();
        if (!channel || m_isClosed)
        {
            return;
        }
        m_channels.push_back(std::move(channel));
    }
}

std::unique_ptr<CChildChannel> CSpareChildren::Take()
{
    std::unique_lock lock(m_mutex);
    // Waits for a child that is starting, because starting another one would take as long.
    m_started.wait(lock, [this] {
        dropEnded();
        return !m_channels.empty() || m_starting == 0;
    });
    if (m_channels.empty())
    {
        return nullptr;
    }
    std::unique_ptr<CChildChannel> channel = std::move(m_channels.front());
    m_channels.erase(m_channels.begin());
    return channel;
}

bool CSpareChildren::KillAll()
{
    const std::lock_guard lock(m_mutex);
    m_isClosed = true;
    const bool wereThere = !m_channels.empty();
    m_channels.clear();
    return wereThere;
}

void CExternalContext::ensureChannel(bool isIsolated)
{
    if (isChannelFor(isIsolated))
    {
        return;
    }
    Release();
    if (isIsolated)
    {
        m_channel = m_spares.Take();
    }
    if (!m_channel)
    {
        m_channel = std::make_unique<CChildChannel>(m_spares.GetSettings());
    }
    m_use = EUse::None;
}

void CExternalContext::Release()
{
    CLeavingChildren* const leaving = m_spares.GetSettings().leaving;
    if (m_channel && leaving != nullptr)
    {
        // Prints before Add, because Add may wait for children that exit slowly.
        LuTestSuite::WriteDeferredOutput();
        leaving->Add(m_channel->RequestExit());
    }
    m_channel.reset();
}

bool CExternalContext::endOthers()
{
    CLeavingChildren* const leaving = m_spares.GetSettings().leaving;
    const bool wereSpares = m_spares.KillAll();
    return (leaving != nullptr && leaving->EndAll()) || wereSpares;
}

bool CExternalContext::tryReady(bool isIsolated)
{
    ensureChannel(isIsolated);
    return m_channel->MakeReady();
}

bool CExternalContext::MakeReady(bool isIsolated)
{
    bool isReady = false;
    bool mayTryAgain = false;
    try
    {
        isReady = tryReady(isIsolated);
        mayTryAgain = !isReady && endOthers();
    }
    catch (const LbException&)
    {
        mayTryAgain = endOthers();
        if (!mayTryAgain)
        {
            throw;
        }
    }
    return isReady || (mayTryAgain && tryReady(isIsolated));
}

CChildChannel& CExternalContext::Obtain(bool isIsolated)
{
    ensureChannel(isIsolated);
    m_use = isIsolated ? EUse::Isolated : EUse::Shared;
    m_channel->EnsureChild();
    if (!m_channel->HasChild() && endOthers())
    {
        m_channel->EnsureChild();
    }
    m_channel->EnsureProcessIndex();
    return *m_channel;
}

} // namespace LuTestSuiteRun
