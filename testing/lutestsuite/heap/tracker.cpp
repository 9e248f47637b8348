#include "testing/lutestsuite/lutestsuiteheaptracker.h"

#include <algorithm>
#include <atomic>
#include <thread>
#include <utility>

#include "base/lbassert.h"
#include "base/os/heapfunctions.h"
#include "base/os/platform.h"
#include "testing/lutestsuite/heap/allocationmap.h"
#include "testing/lutestsuite/heap/patchengine.h"
#include "testing/lutestsuite/heap/snapshot.h"
#include "testing/lutestsuite/heap/trackerstate.h"
#include "testing/lutestsuite/heap/unpatchedheap.h"

using LuTestSuite::CAllocationMap;
using LuTestSuite::CPatchEngine;
using LuTestSuite::CSnapshot;
using LuTestSuite::EPatchStatus;
using LuTestSuite::s_trackerState;
using LuTestSuite::SOperation;

constinit LbCriticalSection LuTestSuiteHeapTracker::s_CriticalSection;
constinit LuTestSuiteHeapTracker* LuTestSuiteHeapTracker::s_TrackerList = nullptr;
constinit bool LuTestSuiteHeapTracker::s_bIsHooked = false;
constinit bool LuTestSuiteHeapTracker::s_bDeactivateGlobal = false;

constinit LuTestSuite::STrackerState LuTestSuite::s_trackerState;

namespace
{

constinit CPatchEngine s_engine;

bool isWatched() noexcept
{
    return s_trackerState.activeCount.load(std::memory_order_relaxed) != 0;
}

} // namespace

/// Call before taking the lock. In a forked child, fork handlers of other libraries run before this library's handler,
/// and they may allocate.
void LuTestSuiteHeapTracker::goOnInChild() noexcept
{
    if (s_trackerState.forks.IsInChild())
    {
        startOverInChild();
    }
}

/// Locks the trackers for reading or changing them, at a moment when no fork is under way.
class LuTestSuiteHeapTracker::CChange : public INonCopyable
{
public:
    CChange() noexcept
    {
        while (true)
        {
            goOnInChild();
            s_CriticalSection.lock();
            if (!s_trackerState.forks.AreUnderWay())
            {
                return;
            }
            s_CriticalSection.unlock();
            std::this_thread::yield();
        }
    }
    ~CChange() { s_CriticalSection.unlock(); }
};

LuTestSuiteHeapTracker::LuTestSuiteHeapTracker(bool activate, bool initialize) : m_initializeOnConstruction(initialize)
{
    if (m_initializeOnConstruction)
    {
        Initialize();
        setActive(activate);
    }
}

LuTestSuiteHeapTracker::~LuTestSuiteHeapTracker()
{
    if (m_isRegistered)
    {
        const CChange change;
        setActive(false);
        s_bDeactivateGlobal = true;
        unlink();
        s_bDeactivateGlobal = false;
    }
    LB_ASSERT(consistencyTest());
    CAllocationMap::Destroy(m_allocations);
}

void LuTestSuiteHeapTracker::Initialize()
{
    const CChange change;
    if (!s_bIsHooked)
    {
        s_bIsHooked = hookAll();
    }
    if (!m_isRegistered)
    {
        // A tracker that was dropped by a fork still has its map.
        m_allocations = m_allocations == nullptr ? CAllocationMap::Create() : m_allocations;
        s_bDeactivateGlobal = true;
        link();
        s_bDeactivateGlobal = false;
    }
    m_thread = LbOs::GetThreadKey();
    Reset();
    if (!m_isRegistered)
    {
        m_isRegistered = true;
        s_trackerState.activeCount += m_isActive ? 1U : 0U;
    }
}

bool LuTestSuiteHeapTracker::hookAll() noexcept
{
    s_engine.Initialize();
    return hook(s_functions.malloc, reinterpret_cast<void*>(detourMalloc), LuTestSuite::s_mallocTrampoline) &&
           hook(s_functions.free, reinterpret_cast<void*>(detourFree), LuTestSuite::s_freeTrampoline) &&
           hook(s_functions.realloc, reinterpret_cast<void*>(detourRealloc), LuTestSuite::s_reallocTrampoline) &&
           s_engine.EnableAll() == EPatchStatus::Success;
}

bool LuTestSuiteHeapTracker::hook(void* target, void* detour, void*& trampoline) noexcept
{
    if (target == nullptr)
    {
        return false;
    }
    const EPatchStatus status = s_engine.Create(target, detour, trampoline);
    // An earlier attempt that failed midway may have created the patch already.
    return status == EPatchStatus::Success || status == EPatchStatus::AlreadyCreated;
}

void LuTestSuiteHeapTracker::UnhookAll()
{
    const CChange change;
    // On failure, patches and detours may stay in place. They count nothing until the next Initialize, and the next
    // call of this function tries again.
    s_engine.ShutDown();
    s_bIsHooked = false;
}

void LuTestSuiteHeapTracker::Reset()
{
    const CChange change;
    if (m_allocations != nullptr)
    {
        m_allocations->Clear();
    }
    m_mallocCount = m_freeCount = m_reallocCount = m_operationCounter = 0;
    m_currentAlloc = m_currentMax = 0;
}

void LuTestSuiteHeapTracker::Activate()
{
    setActive(true);
}

void LuTestSuiteHeapTracker::Deactivate()
{
    setActive(false);
}

void LuTestSuiteHeapTracker::setActive(bool isActive) noexcept
{
    const CChange change;
    if (m_isActive == isActive)
    {
        return;
    }
    m_isActive = isActive;
    if (m_isRegistered)
    {
        s_trackerState.activeCount += isActive ? 1U : ~0U;
    }
}

bool LuTestSuiteHeapTracker::IsActive() const
{
    const CChange change;
    return m_isActive;
}

void LuTestSuiteHeapTracker::ObserveID(std::uint64_t id)
{
    const CChange change;
    m_observedID = id;
}

void LuTestSuiteHeapTracker::ObserveSize(std::uint64_t size)
{
    const CChange change;
    m_observedSize = size;
}

std::uint64_t LuTestSuiteHeapTracker::GetMallocCount() const
{
    const CChange change;
    return m_mallocCount;
}

std::uint64_t LuTestSuiteHeapTracker::GetFreeCount() const
{
    const CChange change;
    return m_freeCount;
}

std::uint64_t LuTestSuiteHeapTracker::GetReallocCount() const
{
    const CChange change;
    return m_reallocCount;
}

std::int64_t LuTestSuiteHeapTracker::GetCurrentAlloc() const
{
    const CChange change;
    return m_currentAlloc;
}

std::int64_t LuTestSuiteHeapTracker::GetCurrentMax() const
{
    const CChange change;
    return m_currentMax;
}

void LuTestSuiteHeapTracker::dump(LuStreamWriteText& stream) const
{
    const auto take = [this] {
        const CChange change;
        return CSnapshot({m_mallocCount, m_freeCount, m_reallocCount, m_currentAlloc, m_currentMax}, m_allocations);
    };
    // Writes without the lock, because the stream may wait for threads that allocate.
    const CSnapshot snapshot = take();

    snapshot.Write(stream);
}

/// Held across the run-time's call and the report. Otherwise another thread could receive and report a freed block
/// before its release is reported. Takes the heap's own lock first, in the same order as a thread that locks the heap
/// and then allocates.
class LuTestSuiteHeapTracker::COperationLock : public INonCopyable
{
public:
    COperationLock() noexcept
    {
        goOnInChild();
        LbOs::LockHeap();
        s_CriticalSection.lock();
    }
    ~COperationLock()
    {
        s_CriticalSection.unlock();
        LbOs::UnlockHeap();
    }
};

void* LuTestSuiteHeapTracker::detourMalloc(std::size_t size) noexcept
{
    if (!isWatched())
    {
        return LuTestSuite::CallMalloc(size);
    }
    const COperationLock lock;
    const bool isPartOfRealloc = std::exchange(s_trackerState.isInsideRealloc, false);
    void* const result = LuTestSuite::CallMalloc(size);
    if (!isPartOfRealloc)
    {
        dispatchMalloc(result, size);
    }
    return result;
}

void LuTestSuiteHeapTracker::detourFree(void* address) noexcept
{
    if (!isWatched())
    {
        LuTestSuite::CallFree(address);
        return;
    }
    const COperationLock lock;
    const bool isPartOfRealloc = std::exchange(s_trackerState.isInsideRealloc, false);
    // Converted before the call, because the pointer value is invalid afterwards.
    const std::uint64_t freed = toAddress(address);
    LuTestSuite::CallFree(address);
    if (!isPartOfRealloc)
    {
        dispatchFree(freed);
    }
}

void* LuTestSuiteHeapTracker::detourRealloc(void* old, std::size_t size) noexcept
{
    if (!isWatched())
    {
        return LuTestSuite::CallRealloc(old, size);
    }
    const COperationLock lock;
    const std::uint64_t oldAddress = toAddress(old);
    s_trackerState.isInsideRealloc = old == nullptr || size == 0 || LbOs::c_ReallocCallsMalloc;
    void* const result = LuTestSuite::CallRealloc(old, size);
    s_trackerState.isInsideRealloc = false;
    dispatchRealloc(oldAddress, result, size);
    return result;
}

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
    // After an UnhookAll that failed midway some of the three patches are missing, so counts would be wrong.
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

bool LuTestSuiteHeapTracker::consistencyTest() const noexcept
{
    const CChange change;
    std::int64_t sum = 0;
    if (m_allocations != nullptr)
    {
        m_allocations->ForEach(
            [&sum](const CAllocationMap::SEntry& entry) { sum += static_cast<std::int64_t>(entry.data.size); });
    }
    return sum == m_currentAlloc;
}

void LuTestSuiteHeapTracker::link() noexcept
{
    LuTestSuiteHeapTracker** last = &s_TrackerList;
    while (*last != nullptr)
    {
        last = &(*last)->m_next;
    }
    *last = this;
}

void LuTestSuiteHeapTracker::unlink() noexcept
{
    LuTestSuiteHeapTracker** previous = &s_TrackerList;
    while (*previous != this)
    {
        previous = &(*previous)->m_next;
    }
    *previous = m_next;
}
