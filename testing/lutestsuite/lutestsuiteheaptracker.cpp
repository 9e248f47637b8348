#include "testing/lutestsuite/lutestsuiteheaptracker.h"

#include <algorithm>
#include <atomic>
#include <span>

#include "base/lbassert.h"
#include "base/lustream.h"
#include "base/os/heapfunctions.h"
#include "base/os/pages.h"
#include "base/os/process.h"
#include "testing/lutestsuite/heap/allocationmap.h"
#include "testing/lutestsuite/heap/patchengine.h"

using LuTestSuite::CAllocationMap;
using LuTestSuite::CPatchEngine;
using LuTestSuite::EPatchStatus;

constinit LbCriticalSection LuTestSuiteHeapTracker::s_CriticalSection;
constinit LuTestSuiteHeapTracker* LuTestSuiteHeapTracker::s_TrackerList = nullptr;
constinit bool LuTestSuiteHeapTracker::s_bIsHooked = false;
constinit bool LuTestSuiteHeapTracker::s_bDeactivateGlobal = false;

namespace
{

constinit CPatchEngine s_engine;

/// Registered trackers that are switched on. Without any, the detours need no lock.
constinit std::atomic<unsigned> s_activeCount = 0;

/// The run-time's realloc may call its own malloc and free, which are no operations of the program. Under the lock.
constinit bool s_isInsideRealloc = false;

// Where the unpatched functions are reached; under these names for the jumps below.
void* s_mallocTrampoline asm("LuTestSuiteHeapTracker_malloc") __attribute__((used)) = nullptr;
void* s_freeTrampoline asm("LuTestSuiteHeapTracker_free") __attribute__((used)) = nullptr;
void* s_reallocTrampoline asm("LuTestSuiteHeapTracker_realloc") __attribute__((used)) = nullptr;

// One instruction takes the trampoline's address and goes there, so that a thread is either still here when the engine
// shuts down, and will find the function itself, or in the trampoline, where the engine finds it.
__attribute__((naked, noinline)) void* callMalloc(std::size_t /*size*/) noexcept
{
    asm("jmpq *LuTestSuiteHeapTracker_malloc(%rip)");
}
__attribute__((naked, noinline)) void callFree(void* /*address*/) noexcept
{
    asm("jmpq *LuTestSuiteHeapTracker_free(%rip)");
}
__attribute__((naked, noinline)) void* callRealloc(void* /*address*/, std::size_t /*size*/) noexcept
{
    asm("jmpq *LuTestSuiteHeapTracker_realloc(%rip)");
}

bool isWatched() noexcept
{
    return s_activeCount.load(std::memory_order_relaxed) != 0;
}

/// The numbers of a dump, in its order.
struct SCounts
{
    std::uint64_t mallocs;
    std::uint64_t frees;
    std::uint64_t reallocs;
    std::int64_t current;
    std::int64_t maximum;
};

/// What a dump shows, taken at one moment, in memory of its own.
class CSnapshot
{
public:
    CSnapshot(const SCounts& snapshotCounts, const CAllocationMap* map) noexcept : counts(snapshotCounts)
    {
        const std::size_t count = map == nullptr ? 0 : map->GetCount();
        if (count == 0)
        {
            return;
        }
        void* const pages = LbOs::AllocatePages(count * sizeof(CAllocationMap::SEntry));
        if (pages == nullptr)
        {
            return;
        }
        m_entries = {static_cast<CAllocationMap::SEntry*>(pages), count};
        std::size_t index = 0;
        map->ForEach([this, &index](const CAllocationMap::SEntry& entry) { m_entries[index++] = entry; });
        std::ranges::sort(m_entries, {}, [](const CAllocationMap::SEntry& entry) { return entry.data.id; });
    }
    ~CSnapshot()
    {
        if (!m_entries.empty())
        {
            LbOs::ReleasePages(m_entries.data(), m_entries.size_bytes());
        }
    }
    CSnapshot(const CSnapshot&) = delete;
    CSnapshot& operator=(const CSnapshot&) = delete;

    std::span<const CAllocationMap::SEntry> GetEntries() const noexcept { return m_entries; }

    const SCounts counts;

private:
    std::span<CAllocationMap::SEntry> m_entries;
};

} // namespace

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
        const LbCriticalSectionLock lock(s_CriticalSection);
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
    // Ahead of the lock: the search takes the loader's lock, whose holder may be waiting in a detour.
    static const LbOs::SHeapFunctions s_functions = findFunctions();
    const LbCriticalSectionLock lock(s_CriticalSection);
    if (!s_bIsHooked)
    {
        s_bIsHooked = hookAll(s_functions);
    }
    if (!m_isRegistered)
    {
        m_allocations = CAllocationMap::Create();
        s_bDeactivateGlobal = true;
        link();
        s_bDeactivateGlobal = false;
    }
    Reset();
    if (!m_isRegistered)
    {
        m_isRegistered = true;
        s_activeCount += m_isActive ? 1U : 0U;
    }
}

LbOs::SHeapFunctions LuTestSuiteHeapTracker::findFunctions()
{
    // Else a child would inherit the lock of a thread that it does not have.
    LbOs::CallAroundForks([] { s_CriticalSection.lock(); }, [] { s_CriticalSection.unlock(); });
    return LbOs::GetHeapFunctions();
}

bool LuTestSuiteHeapTracker::hookAll(const LbOs::SHeapFunctions& functions) noexcept
{
    s_engine.Initialize();
    return hook(functions.malloc, reinterpret_cast<void*>(detourMalloc), s_mallocTrampoline) &&
           hook(functions.free, reinterpret_cast<void*>(detourFree), s_freeTrampoline) &&
           hook(functions.realloc, reinterpret_cast<void*>(detourRealloc), s_reallocTrampoline) &&
           s_engine.EnableAll() == EPatchStatus::Success;
}

bool LuTestSuiteHeapTracker::hook(void* target, void* detour, void*& trampoline) noexcept
{
    if (target == nullptr)
    {
        return false;
    }
    const EPatchStatus status = s_engine.Create(target, detour, trampoline);
    // It is there already when an earlier attempt went no further.
    return status == EPatchStatus::Success || status == EPatchStatus::AlreadyCreated;
}

void LuTestSuiteHeapTracker::UnhookAll()
{
    const LbCriticalSectionLock lock(s_CriticalSection);
    // When that fails patches may stay, and with them all that they lead to. They count nothing until the next
    // Initialize, and another call tries again.
    s_engine.ShutDown();
    s_bIsHooked = false;
}

void LuTestSuiteHeapTracker::Reset()
{
    const LbCriticalSectionLock lock(s_CriticalSection);
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
    const LbCriticalSectionLock lock(s_CriticalSection);
    if (m_isActive == isActive)
    {
        return;
    }
    m_isActive = isActive;
    if (m_isRegistered)
    {
        s_activeCount += isActive ? 1U : ~0U;
    }
}

bool LuTestSuiteHeapTracker::IsActive() const
{
    const LbCriticalSectionLock lock(s_CriticalSection);
    return m_isActive;
}

void LuTestSuiteHeapTracker::ObserveID(std::uint64_t id)
{
    const LbCriticalSectionLock lock(s_CriticalSection);
    m_observedID = id;
}

void LuTestSuiteHeapTracker::ObserveSize(std::uint64_t size)
{
    const LbCriticalSectionLock lock(s_CriticalSection);
    m_observedSize = size;
}

std::uint64_t LuTestSuiteHeapTracker::GetMallocCount() const
{
    const LbCriticalSectionLock lock(s_CriticalSection);
    return m_mallocCount;
}

std::uint64_t LuTestSuiteHeapTracker::GetFreeCount() const
{
    const LbCriticalSectionLock lock(s_CriticalSection);
    return m_freeCount;
}

std::uint64_t LuTestSuiteHeapTracker::GetReallocCount() const
{
    const LbCriticalSectionLock lock(s_CriticalSection);
    return m_reallocCount;
}

std::int64_t LuTestSuiteHeapTracker::GetCurrentAlloc() const
{
    const LbCriticalSectionLock lock(s_CriticalSection);
    return m_currentAlloc;
}

std::int64_t LuTestSuiteHeapTracker::GetCurrentMax() const
{
    const LbCriticalSectionLock lock(s_CriticalSection);
    return m_currentMax;
}

void LuTestSuiteHeapTracker::dump(LuStreamWriteText& stream) const
{
    const auto take = [this] {
        const LbCriticalSectionLock lock(s_CriticalSection);
        return CSnapshot({m_mallocCount, m_freeCount, m_reallocCount, m_currentAlloc, m_currentMax}, m_allocations);
    };
    // Written without the lock, for the stream may wait for threads that allocate.
    const CSnapshot snapshot = take();

    stream.WriteFormat(L"CountMalloc %llu\n", snapshot.counts.mallocs);
    stream.WriteFormat(L"CountFree %llu\n", snapshot.counts.frees);
    stream.WriteFormat(L"CountRealloc %llu\n", snapshot.counts.reallocs);
    stream.WriteFormat(L"CurrentAlloc %lld Bytes\n", snapshot.counts.current);
    stream.WriteFormat(L"CurrentMax %lld Bytes\n", snapshot.counts.maximum);
    stream.Write(L"Active Allocations:\n");
    for (const CAllocationMap::SEntry& entry : snapshot.GetEntries())
    {
        // NOLINTNEXTLINE(performance-no-int-to-ptr)
        const void* const address = reinterpret_cast<const void*>(entry.address);
        stream.WriteFormat(L"ID %lld, Address 0x%p, Size %lld Bytes.\n", entry.data.id, address, entry.data.size);
    }
}

// The lock is held across the call and the report: else another thread could get a freed block, and report it, before
// it is reported as freed.

void* LuTestSuiteHeapTracker::detourMalloc(std::size_t size) noexcept
{
    if (!isWatched())
    {
        return callMalloc(size);
    }
    const LbCriticalSectionLock lock(s_CriticalSection);
    void* const result = callMalloc(size);
    if (!s_isInsideRealloc)
    {
        dispatchMalloc(result, size);
    }
    return result;
}

void LuTestSuiteHeapTracker::detourFree(void* address) noexcept
{
    if (!isWatched())
    {
        callFree(address);
        return;
    }
    const LbCriticalSectionLock lock(s_CriticalSection);
    // As a number, since the pointer means nothing after the call.
    const std::uint64_t freed = toAddress(address);
    callFree(address);
    if (!s_isInsideRealloc)
    {
        dispatchFree(freed);
    }
}

void* LuTestSuiteHeapTracker::detourRealloc(void* old, std::size_t size) noexcept
{
    if (!isWatched())
    {
        return callRealloc(old, size);
    }
    const LbCriticalSectionLock lock(s_CriticalSection);
    const std::uint64_t oldAddress = toAddress(old);
    s_isInsideRealloc = true;
    void* const result = callRealloc(old, size);
    s_isInsideRealloc = false;
    dispatchRealloc(oldAddress, result, size);
    return result;
}

void LuTestSuiteHeapTracker::dispatchMalloc(const void* result, std::size_t size) noexcept
{
    dispatch(EOperation::Malloc, 0, toAddress(result), size);
}

void LuTestSuiteHeapTracker::dispatchRealloc(std::uint64_t old, const void* result, std::size_t size) noexcept
{
    dispatch(EOperation::Realloc, old, toAddress(result), size);
}

void LuTestSuiteHeapTracker::dispatchFree(std::uint64_t address) noexcept
{
    dispatch(EOperation::Free, address, 0, 0);
}

void LuTestSuiteHeapTracker::dispatch(EOperation operation, std::uint64_t oldAddress, std::uint64_t newAddress,
                                      std::size_t size) noexcept
{
    // Without all three in place, after an UnhookAll that failed midway, counts would be wrong.
    if (s_bDeactivateGlobal || !s_bIsHooked)
    {
        return;
    }
    for (LuTestSuiteHeapTracker* tracker = s_TrackerList; tracker != nullptr; tracker = tracker->m_next)
    {
        if (tracker->m_isActive)
        {
            tracker->m_isActive = false;
            tracker->track(operation, oldAddress, newAddress, size);
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
        // When it fails the old block lives on; of size 0, it has freed it.
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
    if (id == m_observedID)
    {
        asm volatile("int3");
    }
    if (size == m_observedSize)
    {
        asm volatile("int3");
    }
}

bool LuTestSuiteHeapTracker::consistencyTest() const noexcept
{
    const LbCriticalSectionLock lock(s_CriticalSection);
    std::int64_t sum = 0;
    if (m_allocations != nullptr)
    {
        m_allocations->ForEach(
            [&sum](const CAllocationMap::SEntry& entry) { sum += static_cast<std::int64_t>(entry.data.size); });
    }
    return sum == m_currentAlloc;
}

std::uint64_t LuTestSuiteHeapTracker::toAddress(const void* pointer) noexcept
{
    return reinterpret_cast<std::uint64_t>(pointer);
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
