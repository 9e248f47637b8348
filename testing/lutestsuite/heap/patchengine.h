/// Replaces the entries of functions by jumps to detours, and back.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

#include "base/lbcriticalsection.h"
#include "base/os/pages.h"
#include "base/os/threadfreeze.h"
#include "testing/lutestsuite/heap/trampoline.h"
#include "testing/lutestsuite/lutestsuiteexport.h"

namespace LuTestSuite
{

enum class EPatchStatus
{
    Success = 0,
    AlreadyInitialized = 1,
    NotInitialized = 2,
    AlreadyCreated = 3, ///< there is a patch for this target
    NotCreated = 4,     ///< there is none
    AlreadyEnabled = 5,
    AlreadyDisabled = 6,
    NotExecutable = 7,  ///< target or detour
    NotMovable = 8,     ///< the target's first instructions cannot be run elsewhere
    NoMemory = 9,       ///< in reach of the target
    NotProtectable = 10 ///< the pages' protection could not be changed, or the other threads could not be stopped
};

/// What an engine asks of the system; those left out are the system's own.
struct SPatchCalls
{
    /// Sets the protection of the target's pages, as LbOs::ProtectPages.
    bool (*protect)(void* address, std::size_t size, std::uint32_t protection) noexcept = nullptr;
    /// Gives pages in reach of the target, as AllocateNear.
    void* (*allocateNear)(std::uintptr_t target, std::size_t size) noexcept = nullptr;
};

/// A list of patches. Any thread; all engines of a process share one lock, since each stops the threads of the others.
///
/// Nothing here uses the heap, which may be what is patched. Without destructor: who has initialised an engine shuts it
/// down. Exported for tests.
///
/// Threads are stopped at most 2 s for each that does not answer, and 0.1 s after a time when one did not. Not seen is
/// a thread whose present signal handler interrupted it inside of the bytes that a patch replaces.
class LUTESTSUITE_API CPatchEngine
{
public:
    constexpr explicit CPatchEngine(const SPatchCalls& calls = {}) noexcept : m_calls(calls) {}
    CPatchEngine(const CPatchEngine&) = delete;
    CPatchEngine& operator=(const CPatchEngine&) = delete;

    EPatchStatus Initialize() noexcept;

    /// Makes a patch, not enabled yet, and sets `trampoline` to where the detour reaches the unpatched function. The
    /// variable belongs to the caller and lives as long as the patch: ShutDown sets it to the target. Detours call
    /// through it in one instruction, so that none can hold on to a trampoline that goes.
    EPatchStatus Create(void* target, void* detour, void*& trampoline) noexcept;

    /// Both stop all other threads for the moment of the change. When they fail nothing has changed.
    EPatchStatus Enable(void* target) noexcept;
    EPatchStatus Disable(void* target) noexcept;

    /// Enables all patches that are not, at one stop of the threads, or none of them.
    EPatchStatus EnableAll() noexcept;

    /// Disables all patches, leads threads out of the trampolines. As a thread may come back to one unseen, when it
    /// leaves a handler of its own, these stay, still good to run, for the next patch of the same function. When it
    /// fails the engine stays initialised with all its patches, of which some may be disabled.
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
    SPatch* m_retired = nullptr; ///< no patches any more, but their trampolines stand
    bool m_hasFrozen = true;     ///< the last time
    LbOs::SPageSizes m_pageSizes = {};
    bool m_isInitialized = false;
};

} // namespace LuTestSuite
