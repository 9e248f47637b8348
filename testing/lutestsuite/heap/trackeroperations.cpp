#include <algorithm>

#include "testing/lutestsuite/heap/allocationmap.h"
#include "testing/lutestsuite/heap/trackerstate.h"
#include "testing/lutestsuite/lutestsuiteheaptracker.h"

// How a heap operation changes each tracker, and the state that all trackers share.

using LuTestSuite::CAllocationMap;
using LuTestSuite::s_trackerState;
using LuTestSuite::SOperation;

constinit LbCriticalSection LuTestSuiteHeapTracker::s_CriticalSection;
constinit LuTestSuiteHeapTracker* LuTestSuiteHeapTracker::s_TrackerList = nullptr;
constinit bool LuTestSuiteHeapTracker::s_bIsHooked = false;
constinit bool LuTestSuiteHeapTracker::s_bDeactivateGlobal = false;

constinit LuTestSuite::STrackerState LuTestSuite::s_trackerState;

void LuTestSuiteHeapTracker::dispatchMalloc(const void* result, std::size_t size) noexcept
{
    dispatchOrDefer({static_cast<int>(EOperation::Malloc), 0, toAddress(result), size});
}

void LuTestSuiteHeapTracker::dispatchRealloc(std::uint64_t old, const void* result, std::size_t size) noexcept
{
    dispatchOrDefer({static_cast<int>(EOperation::Realloc), old, toAddress(result), size});
}

void LuTestSuiteHeapTracker::dispatchFree(std::uint64_t address) noexcept
{
    dispatchOrDefer({static_cast<int>(EOperation::Free), address, 0, 0});
}

void LuTestSuiteHeapTracker::dispatchOrDefer(const SOperation& operation) noexcept
{
    if (s_trackerState.forks.AreUnderWay())
    {
        s_trackerState.forks.Defer(operation);
        return;
    }
    dispatch(operation);
}

void LuTestSuiteHeapTracker::dispatch(const SOperation& operation) noexcept
{
    // If an UnhookAll failed midway, some of the three patches are missing, so counts would be wrong.
    if (s_bDeactivateGlobal || !s_bIsHooked)
    {
        return;
    }
    for (LuTestSuiteHeapTracker* tracker = s_TrackerList; tracker != nullptr; tracker = tracker->m_next)
    {
        if (tracker->m_isActive)
        {
            tracker->m_isActive = false;
            tracker->track(static_cast<EOperation>(operation.kind), operation.oldAddress, operation.newAddress,
                           operation.size);
            tracker->m_isActive = true;
        }
    }
}

void LuTestSuiteHeapTracker::track(EOperation operation, std::uint64_t oldAddress, std::uint64_t newAddress,
                                   std::size_t size) noexcept
{
    switch (operation)
    {
    case EOperation::Malloc:
        checkAllocation(m_operationCounter, size);
        ++m_mallocCount;
        trackAllocatedMemory(newAddress, size);
        break;
    case EOperation::Realloc:
        checkAllocation(m_operationCounter, size);
        ++m_reallocCount;
        // A failed realloc keeps the old block; a realloc to size 0 frees it.
        if (newAddress != 0 || size == 0)
        {
            trackDeallocatedMemory(oldAddress);
            trackAllocatedMemory(newAddress, size);
        }
        break;
    case EOperation::Free:
        ++m_freeCount;
        trackDeallocatedMemory(oldAddress);
        break;
    }
    m_currentMax = std::max(m_currentMax, m_currentAlloc);
    ++m_operationCounter;
}

void LuTestSuiteHeapTracker::trackAllocatedMemory(std::uint64_t address, std::uint64_t size) noexcept
{
    if (address == 0)
    {
        return;
    }
    m_currentAlloc += static_cast<std::int64_t>(size);
    CAllocationMap::SEntry** const place = m_allocations->Find(address);
    if (*place == nullptr)
    {
        m_allocations->InsertAt(place, address, {m_operationCounter, 1, size});
        return;
    }
    LuTestSuite::SAllocData& data = (*place)->data;
    ++data.referenceCount;
    data.size += size;
    data.id = m_operationCounter;
}

void LuTestSuiteHeapTracker::trackDeallocatedMemory(std::uint64_t address) noexcept
{
    CAllocationMap::SEntry** const place = m_allocations->Find(address);
    if (*place == nullptr || --(*place)->data.referenceCount > 0)
    {
        return;
    }
    m_currentAlloc -= static_cast<std::int64_t>((*place)->data.size);
    m_allocations->RemoveAt(place);
}

void LuTestSuiteHeapTracker::checkAllocation(std::uint64_t id, std::uint64_t size) const noexcept
{
    if (id == m_observedID && id != sc_uiNone)
    {
        asm volatile("int3");
    }
    if (size == m_observedSize && size != sc_uiNone)
    {
        asm volatile("int3");
    }
}
