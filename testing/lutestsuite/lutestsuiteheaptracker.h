/// Counts the heap operations of a process.
#pragma once

#include <cstddef>
#include <cstdint>

#include "base/inoncopyable.h"
#include "base/lbcriticalsection.h"
#include "base/lbidumpable.h"
#include "testing/lutestsuite/lutestsuiteexport.h"

namespace LuTestSuite
{
class CAllocationMap;
struct SOperation;
} // namespace LuTestSuite

namespace LbOs
{
struct SHeapFunctions;
}

/// While active, a tracker counts every malloc, realloc and free of the shared run-time, from all modules and threads,
/// operator new and delete included. Any number of trackers may be active; each counts every operation.
///
/// The first Initialize patches the beginnings of the three functions, all or none of them; UnhookAll restores them.
/// Patching is impossible with a static run-time, with sanitizers, and while a thread blocks all signals. Then a
/// tracker silently counts nothing, and each Initialize tries again. If a thread blocks all signals, the first attempt
/// takes 2 s and each later one 0.1 s.
///
/// A tracker does not see calloc, aligned allocations, or other functions that allocate without calling one of the
/// three; a free of such a block counts as an operation. Calls of malloc and free inside the run-time's realloc do not
/// count. A null pointer is not a block: a failed malloc counts as an operation without bytes, and a failed realloc
/// keeps its block.
///
/// While a tracker is active, each operation holds a single lock from the call of the run-time's function until all
/// trackers have counted it. Therefore the allocation of a reused address is never reported before its release. Without
/// an active tracker nothing is locked. The trackers' own memory comes from the system in pages, so no tracker counts
/// the memory of another.
///
/// A process may fork while trackers are active. The child continues with copies of the trackers that the forking
/// thread initialised. Trackers of other threads are unregistered in the child, since they may be on stacks that the
/// child reuses; they count again after an Initialize there. Allocations made during a fork are tracked, and trigger
/// breakpoints, when the fork ends. All operations of this class wait for the end of the fork, so fork handlers must
/// not call them.
///
/// All operations may be called from any thread. One thread constructs a tracker and one destroys it.
class LUTESTSUITE_API LuTestSuiteHeapTracker : public INonCopyable, public LbIDumpable<1>
{
public:
    /// The kinds of operations. Each kind has its own count; operations of all kinds are numbered in one sequence.
    enum class EOperation
    {
        Malloc = 0,  ///< new bytes
        Free = 1,    ///< numbered like the others, but never triggers a breakpoint
        Realloc = 2, ///< a free and a malloc in one
    };

    /// Calls Initialize if `initialize` is true; then calls Activate if `activate` is true.
    explicit LuTestSuiteHeapTracker(bool activate = true, bool initialize = true);
    /// Other trackers go on counting, and the functions stay patched.
    ~LuTestSuiteHeapTracker() override;

    /// Patches the functions and registers the tracker unless that is already done, then resets the tracker.
    void Initialize();

    /// Forgets all allocations and sets all counts and the operation number to zero. Breakpoints stay.
    void Reset();

    void Activate();
    void Deactivate();
    bool IsActive() const;

    /// Sets a breakpoint: a debugger stops at the malloc or realloc with this number, or at each malloc or realloc of
    /// this size in bytes. The operations of all three kinds are numbered together, from 0. A value with all bits set
    /// means never.
    void ObserveID(std::uint64_t id);
    void ObserveSize(std::uint64_t size);

    std::uint64_t GetMallocCount() const;
    std::uint64_t GetFreeCount() const;
    std::uint64_t GetReallocCount() const;
    /// Bytes allocated and not freed since the last Reset.
    std::int64_t GetCurrentAlloc() const;
    /// The maximum of GetCurrentAlloc since the last Reset, in bytes.
    std::int64_t GetCurrentMax() const;

    /// Writes the counts, and one line for each live allocation in ascending order of numbers. Addresses have "0x" and
    /// 16 upper-case hexadecimal digits on all platforms.
    void dump(LuStreamWriteText& stream) const override;

    /// Restores the functions; stops all other threads for a moment to do so. Trackers stay registered; when one of
    /// them calls Initialize, all count again. Call UnhookAll before the library is unloaded, while no thread
    /// allocates. A failure is silent: the trackers still stop counting, and the next call tries again.
    static void UnhookAll();

private:
    static constexpr std::uint64_t sc_uiNone = ~std::uint64_t{0};

    class CChange;
    class COperationLock;
    friend class LuTestSuiteHeapTrackerConsistency; ///< a test

    static LbOs::SHeapFunctions prepare();
    static void beforeFork() noexcept;
    static void afterForkInParent() noexcept;
    static void afterForkInChild() noexcept;
    static void goOnInChild() noexcept;
    static void startOverInChild() noexcept;
    static void dropTrackersOfOtherThreads() noexcept;
    static bool hookAll() noexcept;
    /// Creates a patch that hookAll enables together with the others. UnhookAll removes all patches; there is no
    /// operation that removes one.
    static bool hook(void* target, void* detour, void*& trampoline) noexcept;

    static void* detourMalloc(std::size_t size) noexcept;
    static void* detourRealloc(void* old, std::size_t size) noexcept;
    static void detourFree(void* address) noexcept;

    // Called by the detours, which hold the lock. An exception here ends the process.
    static void dispatchMalloc(const void* result, std::size_t size) noexcept;
    static void dispatchRealloc(std::uint64_t old, const void* result, std::size_t size) noexcept;
    static void dispatchFree(std::uint64_t address) noexcept;
    static void dispatchOrDefer(const LuTestSuite::SOperation& operation) noexcept;
    static void dispatch(const LuTestSuite::SOperation& operation) noexcept;

    void track(EOperation operation, std::uint64_t oldAddress, std::uint64_t newAddress, std::size_t size) noexcept;
    void trackAllocatedMemory(std::uint64_t address, std::uint64_t size) noexcept;
    void trackDeallocatedMemory(std::uint64_t address) noexcept;
    void checkAllocation(std::uint64_t id, std::uint64_t size) const noexcept;
    bool consistencyTest() const noexcept;
    static std::uint64_t toAddress(const void* pointer) noexcept { return reinterpret_cast<std::uint64_t>(pointer); }

    void setActive(bool isActive) noexcept;
    void link() noexcept;
    void unlink() noexcept;

    // The statics have no destructors: the detours may run until the process ends. The list of trackers, in order of
    // registration, is linked through the trackers, because an array would have to allocate.
    static const LbOs::SHeapFunctions s_functions;
    static LbCriticalSection s_CriticalSection;
    static LuTestSuiteHeapTracker* s_TrackerList;
    static bool s_bIsHooked;
    static bool s_bDeactivateGlobal;

    LuTestSuite::CAllocationMap* m_allocations = nullptr; ///< null until the tracker is registered
    bool m_initializeOnConstruction;
    bool m_isRegistered = false;
    bool m_isActive = false; ///< cleared while an operation is being tracked
    std::uint64_t m_mallocCount = 0;
    std::uint64_t m_freeCount = 0;
    std::uint64_t m_reallocCount = 0;
    std::uint64_t m_operationCounter = 0; ///< number of the next operation
    std::int64_t m_currentAlloc = 0;
    std::int64_t m_currentMax = 0;
    std::uint64_t m_observedID = sc_uiNone;
    std::uint64_t m_observedSize = sc_uiNone;
    std::uintptr_t m_thread = 0; ///< key of the thread that called Initialize
    LuTestSuiteHeapTracker* m_next = nullptr;
};
