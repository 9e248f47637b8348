#include "testing/lutestsuite/lutestsuiteheaptracker.h"

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

namespace
{

constinit CPatchEngine s_engine;

bool isWatched() noexcept
{
    return s_trackerState.activeCount.load(std::memory_order_relaxed) != 0;
}

} // namespace

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
        // A tracker that was dropped in a forked child still has its map.
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

/// Held from the call of the run-time's function until all trackers have counted the operation. Otherwise another
/// thread could receive a freed block, and trackers would count its allocation before its release. Takes the heap's own
/// lock first, like a thread that locks the heap and then allocates: the same order prevents a deadlock.
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
