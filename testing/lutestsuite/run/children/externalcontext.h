/// Assigns child processes to cases.
#pragma once

#include <condition_variable>
#include <cstddef>
#include <functional>
#include <memory>
#include <mutex>
#include <vector>

#include "base/inoncopyable.h"
#include "testing/lutestsuite/run/children/childchannel.h"

namespace LuTestSuiteRun
{

/// Channels with children that were started ahead, so that the isolated cases of all threads of a run need not wait for
/// the start of a child. Any thread.
class CSpareChildren : public INonCopyable
{
public:
    /// The settings are the caller's and outlive the object.
    explicit CSpareChildren(const SChildSettings& settings) : m_settings(settings) {}

    const SChildSettings& GetSettings() const { return m_settings; }

    /// The maximum number: what the machine can start at once; 0 if the user may have few processes.
    static std::size_t GetMost();

    /// Starts spare children, up to the number that `count` returns and at most GetMost. Starts at most two per call,
    /// because the caller has a case to run. A child that cannot be started is not an error. Calls `count` under the
    /// lock, so that concurrent calls start no more children than cases need.
    void Start(const std::function<std::size_t()>& count);

    /// An unused child. Waits if one is being started; null if there is no child.
    std::unique_ptr<CChildChannel> Take();

    /// Kills unused children to free resources and starts no more. False if there were no children.
    bool KillAll();

private:
    void dropEnded();
    bool takePlace(const std::function<std::size_t()>& count);
    std::unique_ptr<CChildChannel> start() const;

    const SChildSettings& m_settings;
    std::mutex m_mutex; ///< of all below
    std::condition_variable m_started;
    std::vector<std::unique_ptr<CChildChannel>> m_channels;
    std::size_t m_starting = 0;
    bool m_isClosed = false;
};

/// The channel of one executing thread.
class CExternalContext : public INonCopyable
{
public:
    explicit CExternalContext(CSpareChildren& spares) : m_spares(spares) {}
    ~CExternalContext() { Release(); }

    /// Gets the next channel ready with its child; false without a child. Throws LbException.
    bool MakeReady(bool isIsolated);

    /// The process id of the child; 0 without one.
    std::uint64_t GetProcessId() const { return m_channel ? m_channel->GetProcessId() : 0; }

    /// Gives the channel back. Asks its child to exit if it has run cases.
    void Release();

    /// The channel for the next case, with a child if one can be started. The child of an isolated case runs no other
    /// case. Throws LbException.
    CChildChannel& Obtain(bool isIsolated);

private:
    enum class EUse
    {
        None,
        Shared,
        Isolated ///< reserved for one isolated case
    };

    bool isChannelFor(bool isIsolated) const
    {
        return m_channel && (m_use == EUse::None || (m_use == EUse::Shared && !isIsolated));
    }

    void ensureChannel(bool isIsolated);
    bool tryReady(bool isIsolated);

    /// Kills spare and exiting children to free resources; false if there were no children.
    bool endOthers();

    CSpareChildren& m_spares;
    std::unique_ptr<CChildChannel> m_channel;
    EUse m_use = EUse::None;
};

} // namespace LuTestSuiteRun
