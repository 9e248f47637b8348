#include "testing/lutestsuite/lutestsuiteheaptracker.h"

#include <algorithm>
#include <atomic>
#include <span>

#include "base/lustream.h"
#include "base/os/heapfunctions.h"
#include "base/os/pages.h"
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

/// What a dump shows, taken at one moment, in memory of its own.
class CSnapshot
{
public:
    explicit CSnapshot(const CAllocationMap* map) noexcept
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
    CAllocationMap::Destroy(m_allocations);
}

void LuTestSuiteHeapTracker::Initialize()
{
    // Ahead of the lock: the search takes the loader's lock, whose holder may be waiting in a detour.
    static const LbOs::SHeapFunctions s_functions = LbOs::GetHeapFunctions();
    const LbCriticalSectionLock lock(s_CriticalSection);
    if (!s_bIsHooked)
    {
        hookAll(s_functions);
        s_bIsHooked = true;
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

void LuTestSuiteHeapTracker::hookAll(const LbOs::SHeapFunctions& functions) noexcept
{
    s_engine.Initialize();
    hook(functions.malloc, reinterpret_cast<void*>(detourMalloc), s_mallocTrampoline);
    hook(functions.free, reinterpret_cast<void*>(detourFree), s_freeTrampoline);
    hook(functions.realloc, reinterpret_cast<void*>(detourRealloc), s_reallocTrampoline);
    s_engine.EnableAll();
}

bool LuTestSuiteHeapTracker::hook(void* target, void* detour, void*& trampoline) noexcept
{
    // After a shut-down it is the target itself, see the engine.
    const bool isEmpty = trampoline == nullptr || trampoline == target;
    return target != nullptr && isEmpty && s_engine.Create(target, detour, trampoline) == EPatchStatus::Success;
}

void LuTestSuiteHeapTracker::UnhookAll()
{
    const LbCriticalSectionLock lock(s_CriticalSection);
    if (!s_bIsHooked)
    {
        return;
    }
    // Disables all patches, at one stop of the threads, and takes the trampolines back.
    // When the threads cannot be stopped the patches stay, and so must all that they lead to.
    s_bIsHooked = s_engine.ShutDown() != EPatchStatus::Success;
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
    // Written without the lock, for the stream may wait for threads that allocate.
    s_CriticalSection.lock();
    const CSnapshot snapshot(m_allocations);
    const std::uint64_t counts[] = {m_mallocCount, m_freeCount, m_reallocCount};
    const std::int64_t currentAlloc = m_currentAlloc;
    const std::int64_t currentMax = m_currentMax;
    s_CriticalSection.unlock();

    stream.WriteFormat(L"CountMalloc %llu\n", counts[0]);
    stream.WriteFormat(L"CountFree %llu\n", counts[1]);
    stream.WriteFormat(L"CountRealloc %llu\n", counts[2]);
    stream.WriteFormat(L"CurrentAlloc %lld Bytes\n", currentAlloc);
    stream.WriteFormat(L"CurrentMax %lld Bytes\n", currentMax);
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
    if (s_bDeactivateGlobal)
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
