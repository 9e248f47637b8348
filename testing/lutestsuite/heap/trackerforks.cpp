#include <memory>

#include "base/os/heapfunctions.h"
#include "base/os/platform.h"
#include "testing/lutestsuite/heap/trackerstate.h"
#include "testing/lutestsuite/lutestsuiteheaptracker.h"

// How the heap tracker survives forks.

using LuTestSuite::s_trackerState;
using LuTestSuite::SOperation;

// Initialised when the library is loaded. The first use would be too late: a fork at that moment would miss the
// handlers, and its child would inherit a locked initialisation guard. Finding the functions also takes the loader's
// lock, whose owner may be waiting inside a detour.
const LbOs::SHeapFunctions LuTestSuiteHeapTracker::s_functions = prepare();

LbOs::SHeapFunctions LuTestSuiteHeapTracker::prepare()
{
    LbOs::CallAroundForks({.before = beforeFork, .afterInParent = afterForkInParent, .afterInChild = afterForkInChild});
    return LbOs::GetHeapFunctions();
}

/// Call before taking the lock. In a forked child, fork handlers of other libraries may run, and allocate, before this
/// library's handler; then the first call of this function does the work of this library's handler.
void LuTestSuiteHeapTracker::goOnInChild() noexcept
{
    if (s_trackerState.forks.IsInChild())
    {
        startOverInChild();
    }
}

void LuTestSuiteHeapTracker::beforeFork() noexcept
{
    goOnInChild();
    const LbCriticalSectionLock lock(s_CriticalSection);
    s_trackerState.forks.Begin();
}

void LuTestSuiteHeapTracker::afterForkInParent() noexcept
{
    const LbCriticalSectionLock lock(s_CriticalSection);
    if (s_trackerState.forks.End())
    {
        s_trackerState.forks.Replay([](const SOperation& operation) noexcept { dispatch(operation); });
    }
}

void LuTestSuiteHeapTracker::afterForkInChild() noexcept
{
    if (s_trackerState.forks.AreUnderWay())
    {
        startOverInChild();
    }
}

void LuTestSuiteHeapTracker::startOverInChild() noexcept
{
    // A thread that does not exist in the child may hold the lock and may have left the guarded data half written.
    std::construct_at(&s_CriticalSection);
    s_trackerState.isInsideRealloc = false;
    dropTrackersOfOtherThreads();
    s_trackerState.forks.StartOver();
}

/// Drops trackers of other threads, because new threads of the child may reuse the stacks on which they lie.
void LuTestSuiteHeapTracker::dropTrackersOfOtherThreads() noexcept
{
    LuTestSuiteHeapTracker** place = &s_TrackerList;
    while (LuTestSuiteHeapTracker* const tracker = *place)
    {
        if (tracker->m_thread == LbOs::GetThreadKey())
        {
            place = &tracker->m_next;
            continue;
        }
        *place = tracker->m_next;
        tracker->m_next = nullptr;
        tracker->m_isRegistered = false;
        s_trackerState.activeCount -= tracker->m_isActive ? 1U : 0U;
    }
}
