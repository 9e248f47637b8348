/// The other hosts that run the same shard of a distributed run.
#pragma once

#include <chrono>
#include <cstdint>
#include <string>

#include "base/inoncopyable.h"
#include "testing/lutestsuiterunner/journal/tail.h"

namespace Runner
{

/// Reads what the other hosts of a shard record, without locks. A network file system may show it late; then cases run
/// twice and their second verdicts are duplicates. One thread at a time.
class CSiblings : public INonCopyable
{
public:
    /// `folder` is that of the shard, with a separator at its end; `journal` is the number of this host's journal,
    /// `caseCount` that of the plan. Looks for new records after each interval at most.
    CSiblings(const std::wstring& folder, std::uint32_t journal, std::size_t caseCount,
              std::chrono::milliseconds interval = std::chrono::seconds(1));

    /// True if the case has passed according to any journal of the shard. A case that failed there may still be
    /// repeated by that host, but that host may also end before it does so.
    bool HasPassed(std::uint32_t caseIndex);

    /// True if a host with an earlier journal has recorded something since the object was made; then it stays true.
    /// During the first interval, true if there is such a journal whose host has not recorded its end.
    bool IsEarlierHostActive();

private:
    void poll();
    std::uint64_t countEarlierRecords() const;

    CRunTail m_tail;
    const std::uint32_t m_journal;
    const std::chrono::milliseconds m_interval;
    std::chrono::steady_clock::time_point m_last;
    std::uint64_t m_earlierRecords = 0; ///< in the journals of earlier hosts at the beginning
    bool m_hasOpenJournal = false;      ///< an earlier host had not recorded its end at the beginning
    bool m_hasPolled = false;           ///< since the beginning
};

} // namespace Runner
