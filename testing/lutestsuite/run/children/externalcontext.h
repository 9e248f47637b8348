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

/// Keeps channels with spare children: children that are started before their cases, so that isolated cases need not
/// wait for the start of a child. All threads of a run share one object. Any thread.
class CSpareChildren : public INonCopyable
{
public:
    /// The caller owns the settings, which must outlive the object.
    explicit CSpareChildren(const SChildSettings& settings) : m_settings(settings) {}

    const SChildSettings& GetSettings() const { return m_settings; }

    /// The maximum number of spare children: the number of hardware threads; 0 if the system allows the user only few
    /// processes.
    static std::size_t GetMost();

    /// Starts spare children, up to the number that `count` returns and at most GetMost. Starts at most two per call,
    /// because the caller has a case to run. A child that cannot be started is not an error. Calls `count` under the
    /// lock, so that concurrent calls start no more children than cases need.
    void Start(const std::function<std::size_t()>& count);

    /// Returns an unused child. If all unused children are still being started, waits for one. Null if there are no
    /// unused children.
    std::unique_ptr<CChildChannel> Take();

    /// Kills the unused children to free resources; afterwards Start has no effect. False if there were no unused
    /// children.
    bool KillAll();

private:
    void dropEnded();
    bool takePlace(const std::function<std::size_t()>& count);
    std::unique_ptr<CChildChannel> start() const;

    const SChildSettings& m_settings;
    std::mutex m_mutex; ///< protects all members below
    std::condition_variable m_started;
    std::vector<std::unique_ptr<CChildChannel>> m_channels;
    std::size_t m_starting = 0;
    bool m_isClosed = false;
};

/// Owns the channel of one executing thread.
class CExternalContext : public INonCopyable
{
public:
    explicit CExternalContext(CSpareChildren& spares) : m_spares(spares) {}
    ~CExternalContext() { Release(); }

    /// Prepares a channel and a child for the next case; false if no child could be started. If the first attempt
    /// fails, kills spare and exiting children to free resources and tries again. Throws LbException if the shared
    /// objects cannot be created.
    bool MakeReady(bool isIsolated);

    /// The process id of the child; 0 without one.
    std::uint64_t GetProcessId() const { return m_channel ? m_channel->GetProcessId() : 0; }

    /// Destroys the channel. Asks a child that has run cases to exit if SChildSettings::leaving is set; otherwise ends
    /// the child.
    void Release();

    /// Returns the channel for the next case, with a child if one can be started. The child of an isolated case runs no
    /// other case. Throws LbException if the shared objects cannot be created.
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
