/// What the heap tracker's counting and its way through forks share.
#pragma once

#include <atomic>

#include "base/os/process.h"
#include "testing/lutestsuite/heap/operationlog.h"

namespace LuTestSuite
{

/// Forks under way, on their threads. A fork cannot hold the tracker's lock: behind this library's own handler it waits
/// for locks of the run-time, such as that of the list of streams, whose holders may allocate. So as long as there are
/// any, trackers stay as they are, for the child to find whole, and operations are put down here.
///
/// Written under the tracker's lock, or in a child that has no other thread yet.
class CForks
{
public:
    bool AreUnderWay() const noexcept { return m_count.load(std::memory_order_relaxed) != 0; }

    /// True in a child that has not started over. By its number, and so not in one whose number is its parent's, as two
    /// name spaces of numbers allow.
    bool IsInChild() const noexcept { return AreUnderWay() && LbOs::GetProcessId() != m_process; }

    void Begin() noexcept
    {
        m_process = LbOs::GetProcessId();
        ++m_count;
    }
    /// True for the last one.
    bool End() noexcept { return --m_count == 0; }

    void Defer(const SOperation& operation) noexcept { m_operations.Append(operation); }
    void Replay(void (*function)(const SOperation& operation) noexcept) noexcept { m_operations.Replay(function); }

    /// In a child, which has none of these forks. What was put down may be half written.
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

/// Without a destructor: the detours may run until the last instruction of the process.
struct STrackerState
{
    /// Registered trackers that are switched on. Without any, the detours need no lock.
    std::atomic<unsigned> activeCount = 0;

    /// The run-time's realloc is about to call its own malloc or free, once, which is no operation of the program. What
    /// these call in turn (the program's handler for a lack of memory) is. Under the lock.
    bool isInsideRealloc = false;

    CForks forks;
};
extern constinit STrackerState s_trackerState;

} // namespace LuTestSuite
