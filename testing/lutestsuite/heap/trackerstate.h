/// The state that the heap tracker's counting and its fork handling share.
#pragma once

#include <atomic>

#include "base/os/process.h"
#include "testing/lutestsuite/heap/operationlog.h"

namespace LuTestSuite
{

/// The forks under way on all threads. A thread that forks must not hold the tracker's lock, because the fork waits for
/// locks of the run-time, such as that of the stream list. If another thread held such a lock, allocated, and waited
/// for the tracker's lock, there would be a deadlock. Instead, trackers do not change while a fork is under way, and
/// operations are queued here. So the child gets consistent copies of the trackers.
///
/// Changed under the tracker's lock, or in a child that has no other thread yet.
class CForks
{
public:
    bool AreUnderWay() const noexcept { return m_count.load(std::memory_order_relaxed) != 0; }

    /// True in a child that has not called StartOver. Compares process ids, so it misses a child that is in another
    /// name space of process ids and has the same id as its parent.
    bool IsInChild() const noexcept { return AreUnderWay() && LbOs::GetProcessId() != m_process; }

    void Begin() noexcept
    {
        m_process = LbOs::GetProcessId();
        ++m_count;
    }
    /// True if no other fork is under way.
    bool End() noexcept { return --m_count == 0; }

    void Defer(const SOperation& operation) noexcept { m_operations.Append(operation); }
    void Replay(void (*function)(const SOperation& operation) noexcept) noexcept { m_operations.Replay(function); }

    /// For a child, where no fork is under way. Queued operations may be half written and are dropped.
    void StartOver() noexcept
    {
        m_operations.Abandon();
        m_count = 0;
    }

private:
    std::atomic<unsigned> m_count = 0;
    std::atomic<unsigned long> m_process = 0;
    COperationLog m_operations;
};

/// Has no destructor: the detours may run until the process ends.
struct STrackerState
{
    /// Number of registered, active trackers. While it is 0 the detours take no lock.
    std::atomic<unsigned> activeCount = 0;

    /// Set when the run-time's realloc is about to call its own malloc or free. That one call is not counted; calls
    /// that a new-handler makes inside it are counted. Guarded by the lock.
    bool isInsideRealloc = false;

    CForks forks;
};
extern constinit STrackerState s_trackerState;

} // namespace LuTestSuite
