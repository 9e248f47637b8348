/// Replaces the first bytes of functions by jumps to detours, and restores them.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

#include "base/lbcriticalsection.h"
#include "base/os/pages.h"
#include "base/os/threadfreeze.h"
#include "testing/lutestsuite/heap/trampoline.h"

namespace LuTestSuite
{

enum class EPatchStatus
{
    Success = 0,
    AlreadyInitialized = 1,
    NotInitialized = 2,
    AlreadyCreated = 3, ///< the target has a patch
    NotCreated = 4,     ///< the target has no patch
    AlreadyEnabled = 5,
    AlreadyDisabled = 6,
    NotExecutable = 7,  ///< target or detour
    NotMovable = 8,     ///< the target's first instructions cannot be run elsewhere
    NoMemory = 9,       ///< for the patch, or in reach of the target
    NotProtectable = 10 ///< the protection of pages could not be changed, or threads could not be stopped or moved
};

/// The system calls of an engine; a null member means the system's own call. Tests inject failures here.
struct SPatchCalls
{
    /// Sets the protection of the target's pages, like LbOs::ProtectPages.
    bool (*protect)(void* address, std::size_t size, std::uint32_t protection) noexcept = nullptr;
    /// Allocates pages in reach of the target, like AllocateNear.
    void* (*allocateNear)(std::uintptr_t target, std::size_t size) noexcept = nullptr;
};

/// A list of patches. Callable from any thread; all engines of a process share one lock, since each stops all threads.
///
/// Never allocates from the heap, because the heap's functions may be patched. Has no destructor: the caller of
/// Initialize calls ShutDown.
///
/// Stopping the threads waits up to 2 s for a thread that does not answer, and only 0.1 s after an earlier failure.
/// Limit: a thread is not detected while it runs a signal handler that interrupted it inside the patched bytes.
class CPatchEngine
{
public:
    constexpr explicit CPatchEngine(const SPatchCalls& calls = {}) noexcept : m_calls(calls) {}
    CPatchEngine(const CPatchEngine&) = delete;
    CPatchEngine& operator=(const CPatchEngine&) = delete;

    EPatchStatus Initialize() noexcept;

    /// Creates a patch without enabling it, and sets `trampoline` to the address where the detour calls the unpatched
    /// function. The variable belongs to the caller and must live as long as the patch; ShutDown sets it to the target.
    /// Detours must read it and jump in one instruction, so that no detour jumps to the trampoline after ShutDown.
    EPatchStatus Create(void* target, void* detour, void*& trampoline) noexcept;

    /// Enable and Disable stop all other threads while they change the code. On failure nothing has changed.
    EPatchStatus Enable(void* target) noexcept;
    EPatchStatus Disable(void* target) noexcept;

    /// Enables all disabled patches; stops all other threads only once. On failure nothing has changed.
    EPatchStatus EnableAll() noexcept;

    /// Disables all patches and moves threads out of the trampolines. Trampolines stay in memory and stay executable,
    /// because a thread that leaves a signal handler may return into one. The next patch of a function reuses its
    /// trampoline. On failure the engine stays initialised with all its patches, some of which may be disabled.
    EPatchStatus ShutDown() noexcept;

private:
    using PatchBytes = std::array<std::uint8_t, c_PatchSize>;

    struct SPatch
    {
        SPatch* next;
        std::uint8_t* target;
        std::uintptr_t detour;
        void** trampolinePointer;
        std::uint8_t* block;
        STrampoline trampoline;
        PatchBytes saved;
        bool isEnabled;
        bool wasEnabled; ///< when EnableAll began
    };

    SPatch* find(const void* target) const noexcept;
    EPatchStatus makePatch(std::uint8_t* target, void* detour, const LbOs::SRegion& region, SPatch*& patch) noexcept;
    SPatch* takeRetired(std::span<const std::uint8_t> code, std::uintptr_t detour) noexcept;
    EPatchStatus fillBlock(SPatch& patch, std::span<const std::uint8_t> code) noexcept;
    EPatchStatus setEnabled(void* target, bool isEnabled) noexcept;
    bool freeze(LbOs::CThreadFreezer& threads) noexcept;
    EPatchStatus enable(SPatch& patch, LbOs::CThreadFreezer& threads) noexcept;
    EPatchStatus disable(SPatch& patch) noexcept;
    void disableNewOnes() noexcept;
    bool leaveAll(LbOs::CThreadFreezer& threads) noexcept;
    bool write(std::uint8_t* target, const PatchBytes& bytes) const noexcept;
    void retire(SPatch* patch) noexcept;
    void release(SPatch* patch) const noexcept;

    SPatchCalls m_calls;
    SPatch* m_first = nullptr;
    SPatch* m_retired = nullptr; ///< removed patches whose trampolines stay in memory
    bool m_hasFrozen = true;     ///< the last freeze succeeded
    LbOs::SPageSizes m_pageSizes = {};
    bool m_isInitialized = false;
};

} // namespace LuTestSuite
