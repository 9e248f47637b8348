/// Which child process a case gets.
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

/// Channels with children that were started ahead, for the isolated cases of all threads of a run, so that these need
/// not wait for the start. Any thread.
class CSpareChildren : public INonCopyable
{
public:
    /// The settings are the caller's and outlive the object.
    explicit CSpareChildren(const SChildSettings& settings) : m_settings(settings) {}

    const SChildSettings& GetSettings() const { return m_settings; }

    /// How many there are at most: as many as the machine can start at a time, or none where the system lets the user
    /// have few processes.
    static std::size_t GetMost();

    /// Sees to it that there are as many as `count` says that cases to come could use. Returns after two starts, since
    /// whoever calls has to look after a case, too. What cannot be had for them is no error. The question is asked
    /// while nobody else takes or starts one, so that no more are started than are taken as long as cases are.
    void Start(const std::function<std::size_t()>& count);

    /// One that nobody has used, also when it is being started just now; null when there is none.
    std::unique_ptr<CChildChannel> Take();

    /// Ends all that nobody has taken, for a thread that lacks what they use, and starts no more. False if there was
    /// none.
    bool GiveUp();

private:
    void dropEnded();
    bool takePlace(const std::function<std::size_t()>& count);
    std::unique_ptr<CChildChannel> start() const;

    const SChildSettings& m_settings;
    std::mutex m_mutex; ///< of all below
    std::condition_variable m_started;
    std::vector<std::unique_ptr<CChildChannel>> m_channels;
    std::size_t m_starting = 0;
    bool m_areGivenUp = false;
};

/// The channel of one executing thread.
class CExternalContext : public INonCopyable
{
public:
    explicit CExternalContext(CSpareChildren& spares) : m_spares(spares) {}
    ~CExternalContext() { Release(); }

    /// Gets the next channel ready with its child; false without a child. Throws LbException.
    bool MakeReady(bool isIsolated);

    /// The system's number of the child of the channel; 0 without one.
    std::uint64_t GetProcessId() const { return m_channel ? m_channel->GetProcessId() : 0; }

    /// Gives the channel back. Its child leaves, if it has run cases.
    void Release();

    /// The channel for the next case, with a child if one can be started; for an isolated case, one that nobody
    /// has used or will use. Throws LbException.
    CChildChannel& Obtain(bool isIsolated);

private:
    enum class EUse
    {
        None,
        Shared,
        Isolated ///< an isolated case has it: it is no other's
    };

    bool isChannelFor(bool isIsolated) const
    {
        return m_channel && (m_use == EUse::None || (m_use == EUse::Shared && !isIsolated));
    }

    void ensureChannel(bool isIsolated);
    bool tryReady(bool isIsolated);

    /// Gives back what spare and leaving children use; false if there were none.
    bool endOthers();

    CSpareChildren& m_spares;
    std::unique_ptr<CChildChannel> m_channel;
    EUse m_use = EUse::None;
};

} // namespace LuTestSuiteRun
