#include <memory>

#include "base/os/heapfunctions.h"
#include "base/os/platform.h"
#include "testing/lutestsuite/heap/trackerstate.h"
#include "testing/lutestsuite/lutestsuiteheaptracker.h"

// The heap tracker on its way through forks.

using LuTestSuite::s_trackerState;
using LuTestSuite::SOperation;

// When the library is loaded: a fork beside the first tracker needs its handlers, and would leave its child the guard
// of anything that is made on first use. The search also takes the loader's lock, whose holder may be waiting in a
// detour.
const LbOs::SHeapFunctions LuTestSuiteHeapTracker::s_functions = prepare();

LbOs::SHeapFunctions LuTestSuiteHeapTracker::prepare()
{
    LbOs::CallAroundForks({.before = beforeFork, .afterInParent = afterForkInParent, .afterInChild = afterForkInChild});
    return LbOs::GetHeapFunctions();
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
    // The lock may be that of a thread that the child does not have; what it guarded meanwhile may be half written.
    std::construct_at(&s_CriticalSection);
    s_trackerState.isInsideRealloc = false;
    dropTrackersOfOtherThreads();
    s_trackerState.forks.StartOver();
}

/// These may lie on the stacks of threads that the child does not have, which its next threads get.
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
