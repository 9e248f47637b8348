/// Replaces the entries of functions by jumps to detours, and back.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

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

/// A list of patches. Any thread; all engines of a process share one lock, since each stops the threads of the others.
///
/// Nothing here uses the heap, which may be what is patched. Without destructor: who has initialised an engine shuts it
/// down. Exported for tests.
class LUTESTSUITE_API CPatchEngine
{
public:
    using FProtect = bool (*)(void* address, std::size_t size, std::uint32_t protection) noexcept;

    /// `protect` sets the protection of the target's pages.
    constexpr explicit CPatchEngine(FProtect protect = nullptr) noexcept : m_protect(protect) {}
    CPatchEngine(const CPatchEngine&) = delete;
    CPatchEngine& operator=(const CPatchEngine&) = delete;

    EPatchStatus Initialize() noexcept;

    /// Makes a patch, not enabled yet, and sets `trampoline` to where the detour reaches the unpatched function. The
    /// variable belongs to the caller and lives as long as the patch: ShutDown sets it to the target. Detours call
    /// through it in one instruction, so that none can hold on to a trampoline that goes.
    EPatchStatus Create(void* target, void* detour, void*& trampoline) noexcept;

    /// Both stop all other threads for the moment of the change.
    EPatchStatus Enable(void* target) noexcept;
    EPatchStatus Disable(void* target) noexcept;

    /// Enables all patches that are not, at one stop of the threads. Goes on after a failure and returns the last one.
    EPatchStatus EnableAll() noexcept;

    /// Disables all patches, leads threads out of the trampolines and frees these. When it fails nothing is freed and
    /// the engine stays initialised.
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
        std::uint32_t protection; ///< of the target's pages
        bool isEnabled;
    };

    /// Protection of the target's pages, restored at the end of the scope.
    class CWritable;

    SPatch* find(const void* target) const noexcept;
    EPatchStatus fillBlock(SPatch& patch, const LbOs::SRegion& region) noexcept;
    EPatchStatus enable(SPatch& patch, LbOs::CThreadFreezer& threads) noexcept;
    EPatchStatus disable(SPatch& patch) noexcept;
    void releaseAll() noexcept;
    void release(SPatch* patch) const noexcept;

    FProtect m_protect;
    SPatch* m_first = nullptr;
    LbOs::SPageSizes m_pageSizes = {};
    bool m_isInitialized = false;
};

} // namespace LuTestSuite
