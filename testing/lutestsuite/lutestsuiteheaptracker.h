/// Counts what passes through the heap.
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

/// Sees every malloc, realloc and free of the shared run-time while it is active, of all modules and threads, operator
/// new and delete included; any number of trackers may be at work, and each sees every operation.
///
/// Works by patching the entries of the three functions, from the first Initialize on until UnhookAll, all of them or
/// none. Where that cannot be done (a static run-time, sanitizers, a thread that blocks all signals and costs a wait of
/// 2 s the first time, 0.1 s later) a tracker counts nothing and says nothing; each Initialize tries again.
///
/// Not seen are calloc, aligned allocations and what else gives memory without passing through the three; a free of
/// such a block counts as an operation. What the run-time's realloc calls itself does not count. A null pointer is no
/// block: a failed malloc counts as an operation without bytes, and a failed realloc leaves its block as it was.
///
/// While a tracker is active one lock serialises the heap, held from before the run-time's function to behind the
/// report: an address that another thread gets anew is never reported ahead of its release. Without an active tracker
/// nothing is locked. The trackers' own memory comes from the system's pages, so no tracker counts that of another.
///
/// A process may fork while trackers are active; the child goes on with copies of those that the forking thread has
/// initialised. Those of other threads, which may lie on stacks that the child reuses, are no more registered there:
/// they count again when they are initialised in the child. What is allocated during a fork is tracked, and meets
/// breakpoints, at its end; all operations here wait for that, so handlers of forks must not call any.
///
/// Any thread may call anything; construction and destruction are for one thread each.
class LUTESTSUITE_API LuTestSuiteHeapTracker : public INonCopyable, public LbIDumpable<1>
{
public:
    /// What is counted, each kind by itself and all together by the numbers of operations.
    enum class EOperation
    {
        Malloc = 0,  ///< new bytes
        Free = 1,    ///< takes a number as the others do, but never meets a breakpoint
        Realloc = 2, ///< a free and a malloc in one
    };

    /// With `initialize` calls Initialize, then is active if `activate` says so.
    explicit LuTestSuiteHeapTracker(bool activate = true, bool initialize = true);
    /// Leaves the other trackers counting and the functions patched.
    ~LuTestSuiteHeapTracker() override;

    /// Patches the functions unless they are, registers the tracker unless it is, and resets it.
    void Initialize();

    /// Forgets all allocations and zeroes all counts and the numbering of operations. What is observed stays.
    void Reset();

    void Activate();
    void Deactivate();
    bool IsActive() const;

    /// Stops in the debugger at the malloc or realloc with this number (operations of all three kinds are numbered,
    /// from 0), or at each of this size in bytes. All bits set means never.
    void ObserveID(std::uint64_t id);
    void ObserveSize(std::uint64_t size);

    std::uint64_t GetMallocCount() const;
    std::uint64_t GetFreeCount() const;
    std::uint64_t GetReallocCount() const;
    /// Bytes allocated and not freed since the last Reset.
    std::int64_t GetCurrentAlloc() const;
    /// The most that this was.
    std::int64_t GetCurrentMax() const;

    /// Writes the counts, and a line for each live allocation by ascending number. Addresses are 16 upper-case
    /// hexadecimal digits behind "0x" on all platforms.
    void dump(LuStreamWriteText& stream) const override;

    /// Restores the functions; for that it stops all other threads a moment. Trackers stay registered and count again
    /// when one is initialised. To be called before the library is unloaded, with no thread on its way through an
    /// allocation. When it fails, silently, nothing is counted either; another call tries again.
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
    /// Makes a patch, still to be enabled together with the others. There is none alone to undo: see UnhookAll.
    static bool hook(void* target, void* detour, void*& trampoline) noexcept;

    static void* detourMalloc(std::size_t size) noexcept;
    static void* detourRealloc(void* old, std::size_t size) noexcept;
    static void detourFree(void* address) noexcept;

    // With the lock held by the detours. A fault in there ends the process.
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

    // Nothing here has a destructor: the detours may run until the last instruction of the process. The list of
    // trackers, in the order of their registration, goes through the trackers, since an array would have to allocate.
    static const LbOs::SHeapFunctions s_functions;
    static LbCriticalSection s_CriticalSection;
    static LuTestSuiteHeapTracker* s_TrackerList;
    static bool s_bIsHooked;
    static bool s_bDeactivateGlobal;

    LuTestSuite::CAllocationMap* m_allocations = nullptr; ///< from registration on
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
    std::uintptr_t m_thread = 0; ///< that initialised it, by its key
    LuTestSuiteHeapTracker* m_next = nullptr;
};
