/// The other hosts that run the same shard of a distributed run.
#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "base/inoncopyable.h"
#include "testing/lutestsuiterunner/journal/tail.h"

namespace Runner
{

/// Reads what the other hosts of a shard record, without locks. A network file system may show it late; then cases run
/// twice and their second verdicts are duplicates. One thread at a time.
///
/// A host counts as at work if it has recorded something since the object was made. Until sc_Silence has passed, each
/// host that has recorded neither its end nor a cancellation counts as at work, too.
class CSiblings : public INonCopyable
{
public:
    using Clock = std::function<std::chrono::steady_clock::time_point()>;

    /// For this time after its last record, another host is expected to record something more.
    static constexpr std::chrono::seconds sc_Silence{10};
    /// The shortest times between two polls for new records: while some host is expected to record more, and otherwise.
    static constexpr std::chrono::milliseconds sc_ShortInterval{20};
    static constexpr std::chrono::seconds sc_LongInterval{1};

    /// `folder` is that of the shard, with a separator at its end; `journal` is the number of this host's journal,
    /// `caseCount` that of the plan.
    CSiblings(const std::wstring& folder, std::uint32_t journal, std::size_t caseCount,
              Clock clock = std::chrono::steady_clock::now);

    /// True if the case has passed in another host. A case that failed there may still be repeated by that host, but
    /// that host may also end before it does so.
    bool HasPassed(std::uint32_t caseIndex);

    /// True if another host that is at work runs the case.
    bool IsUnderWay(std::uint32_t caseIndex);

    /// The number of hosts at work that have an earlier journal.
    std::uint32_t CountEarlier();

private:
    void poll();
    bool isAtWork(std::uint32_t number) const;
    std::uint64_t countRecords() const;

    const Clock m_clock;
    const std::uint32_t m_journal;
    const std::chrono::steady_clock::time_point m_begin;
    CRunTail m_tail;                      ///< of the others
    std::vector<std::uint64_t> m_earlier; ///< number of records at the beginning, by number - 1 of the journal
    std::uint64_t m_records = 0;          ///< of all others
    bool m_isExpecting = false;           ///< true until sc_Silence after m_lastRecord
    std::chrono::steady_clock::time_point m_lastRecord;
    std::chrono::steady_clock::time_point m_lastPoll;
};

/// True if a case is still needed; called immediately before the case would start.
using IsNeeded = std::function<bool(std::uint32_t)>;

/// Runs the cases that are needed in the given order.
using RunCases = std::function<void(const std::vector<std::uint32_t>& cases, const IsNeeded& isNeeded)>;

/// Calls `run` until it has been offered each case as often as necessary. Leaves out cases that have passed in another
/// host. Puts off cases that another host runs until no other case is left, because that host may end before the case
/// does. If hosts with earlier journals are at work, takes the cases in another order than they do. May call `run`
/// again after a cancellation; it then must not start any case.
void RunBesideSiblings(std::vector<std::uint32_t> cases, CSiblings& siblings, const RunCases& run);

} // namespace Runner
