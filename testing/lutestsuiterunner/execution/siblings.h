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

/// Reads, without locks, what the other hosts of a shard record. If a network file system shows a record late, a case
/// may run twice; its second verdict is a duplicate. One thread at a time.
///
/// A host counts as at work if it has recorded something since this object was created. For the first sc_Silence after
/// that, each host that has recorded neither its end nor a cancellation counts as at work, too.
class CSiblings : public INonCopyable
{
public:
    using Clock = std::function<std::chrono::steady_clock::time_point()>;

    /// For this time after another host's last record, more records are expected.
    static constexpr std::chrono::seconds sc_Silence{10};
    /// The shortest times between two polls for new records: the short one while more records are expected, otherwise
    /// the long one.
    static constexpr std::chrono::milliseconds sc_ShortInterval{20};
    static constexpr std::chrono::seconds sc_LongInterval{1};

    /// `folder` is that of the shard, with a separator at its end; `journal` is the number of this host's journal,
    /// `caseCount` is the plan's number of cases.
    CSiblings(const std::wstring& folder, std::uint32_t journal, std::size_t caseCount,
              Clock clock = std::chrono::steady_clock::now);

    /// True if the case has passed in another host. A failure there does not count: that host may still repeat the
    /// case, or may end before it does.
    bool HasPassed(std::uint32_t caseIndex);

    /// True if another host that is at work is running the case.
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
    CRunTail m_tail;                      ///< of the other hosts' journals
    std::vector<std::uint64_t> m_earlier; ///< number of records when the object was created, by journal number - 1
    std::uint64_t m_records = 0;          ///< number of records of all other hosts
    bool m_isExpecting = false;           ///< more records are expected until sc_Silence after m_lastRecord
    std::chrono::steady_clock::time_point m_lastRecord;
    std::chrono::steady_clock::time_point m_lastPoll;
};

/// True if a case is still needed; called immediately before the case would start.
using IsNeeded = std::function<bool(std::uint32_t)>;

/// Runs, in the given order, those of the cases that are still needed.
using RunCases = std::function<void(const std::vector<std::uint32_t>& cases, const IsNeeded& isNeeded)>;

/// Calls `run` with the cases, several times if necessary. Leaves out cases that have passed in another host. Puts off
/// a case that another host is running until only such cases are left; then runs it here, too, because that host may
/// end before the case does. If hosts with earlier journals are at work, takes the cases in another order than those
/// hosts. After a cancellation `run` may be called again; it then must not start any case.
void RunBesideSiblings(std::vector<std::uint32_t> cases, CSiblings& siblings, const RunCases& run);

} // namespace Runner
