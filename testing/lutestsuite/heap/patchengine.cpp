#include "testing/lutestsuite/heap/patchengine.h"

#include <algorithm>
#include <cstring>
#include <new>

#include "testing/lutestsuite/heap/nearmemory.h"

namespace LuTestSuite
{

namespace
{

/// A thread that blocks every signal never answers; others answer within microseconds.
constexpr unsigned c_FreezeTimeoutMs = 2000;
/// Used after a failed freeze: the thread that did not stop is probably still running, and a run of many cases must not
/// wait long for it in each case.
constexpr unsigned c_NextFreezeTimeoutMs = 100;

/// How many bytes of a function are searched for jumps into its beginning.
constexpr std::size_t c_CodeMax = 2048;

constinit LbCriticalSection s_engineLock;

bool isExecutable(std::uintptr_t address, LbOs::SRegion& region) noexcept
{
    return LbOs::QueryRegion(address, region) && region.isExecutable;
}

/// Moves each thread that executes in the range to the address that `findPlace` returns for the thread's offset. False
/// if a thread cannot be moved.
template<typename F>
bool moveThreads(LbOs::CThreadFreezer& threads, std::uintptr_t begin, std::size_t size, const F& findPlace) noexcept
{
    for (std::size_t thread = 0; thread < threads.GetCount(); ++thread)
    {
        const std::uintptr_t address = threads.GetInstructionPointer(thread);
        if (address < begin || address >= begin + size)
        {
            continue;
        }
        const std::optional<std::uintptr_t> place = findPlace(address - begin);
        if (!place || !threads.SetInstructionPointer(thread, *place))
        {
            return false;
        }
    }
    return true;
}

} // namespace

EPatchStatus CPatchEngine::Initialize() noexcept
{
    const LbCriticalSectionLock lock(s_engineLock);
    if (m_isInitialized)
    {
        return EPatchStatus::AlreadyInitialized;
    }
    m_calls.protect = m_calls.protect == nullptr ? LbOs::ProtectPages : m_calls.protect;
    m_calls.allocateNear = m_calls.allocateNear == nullptr ? AllocateNear : m_calls.allocateNear;
    m_pageSizes = LbOs::GetPageSizes();
    m_isInitialized = true;
    return EPatchStatus::Success;
}

EPatchStatus CPatchEngine::Create(void* target, void* detour, void*& trampoline) noexcept
{
    const LbCriticalSectionLock lock(s_engineLock);
    if (!m_isInitialized)
    {
        return EPatchStatus::NotInitialized;
    }
    if (find(target) != nullptr)
    {
        return EPatchStatus::AlreadyCreated;
    }
    LbOs::SRegion region;
    if (!isExecutable(reinterpret_cast<std::uintptr_t>(detour), region) ||
        !isExecutable(reinterpret_cast<std::uintptr_t>(target), region))
    {
        return EPatchStatus::NotExecutable;
    }
    SPatch* patch = nullptr;
    const EPatchStatus status = makePatch(static_cast<std::uint8_t*>(target), detour, region, patch);
    if (status == EPatchStatus::Success)
    {
        patch->next = m_first;
        m_first = patch;
        patch->trampolinePointer = &trampoline;
        trampoline = patch->block + STrampoline::sc_uiEntry;
    }
    return status;
}

EPatchStatus CPatchEngine::makePatch(std::uint8_t* target, void* detour, const LbOs::SRegion& region,
                                     SPatch*& patch) noexcept
{
    const auto detourAddress = reinterpret_cast<std::uintptr_t>(detour);
    const auto address = reinterpret_cast<std::uintptr_t>(target);
    const std::span<const std::uint8_t> code(target, std::min<std::size_t>(region.end - address, c_CodeMax));
    patch = takeRetired(code, detourAddress);
    if (patch != nullptr)
    {
        return EPatchStatus::Success;
    }
    void* const memory = LbOs::AllocatePages(sizeof(SPatch));
    if (memory == nullptr)
    {
        return EPatchStatus::NoMemory;
    }
    patch = new (memory) SPatch{};
    patch->target = target;
    patch->detour = detourAddress;
    const EPatchStatus status = fillBlock(*patch, code);
    if (status != EPatchStatus::Success)
    {
        release(patch);
    }
    return status;
}

/// Reuses a retired patch if its block would stay the same byte for byte. The block must not change, because a thread
/// may still return into it.
CPatchEngine::SPatch* CPatchEngine::takeRetired(std::span<const std::uint8_t> code, std::uintptr_t detour) noexcept
{
    for (SPatch** place = &m_retired; *place != nullptr; place = &(*place)->next)
    {
        SPatch* const patch = *place;
        if (patch->target != code.data() || patch->detour != detour)
        {
            continue;
        }
        const std::optional<STrampoline> trampoline =
            BuildTrampoline(code, reinterpret_cast<std::uintptr_t>(patch->target),
                            reinterpret_cast<std::uintptr_t>(patch->block), detour);
        if (trampoline && trampoline->code == patch->trampoline.code)
        {
            *place = patch->next;
            std::copy_n(patch->target, c_PatchSize, patch->saved.begin());
            return patch;
        }
    }
    return nullptr;
}

EPatchStatus CPatchEngine::fillBlock(SPatch& patch, std::span<const std::uint8_t> code) noexcept
{
    const auto target = reinterpret_cast<std::uintptr_t>(patch.target);
    patch.block = static_cast<std::uint8_t*>(m_calls.allocateNear(target, m_pageSizes.page));
    if (patch.block == nullptr)
    {
        return EPatchStatus::NoMemory;
    }
    const std::optional<STrampoline> trampoline =
        BuildTrampoline(code, target, reinterpret_cast<std::uintptr_t>(patch.block), patch.detour);
    if (!trampoline)
    {
        return EPatchStatus::NotMovable;
    }
    patch.trampoline = *trampoline;
    std::ranges::copy(trampoline->code, patch.block);
    std::copy_n(patch.target, c_PatchSize, patch.saved.begin());
    if (!LbOs::ProtectPages(patch.block, m_pageSizes.page, LbOs::c_ProtectionReadExecute))
    {
        return EPatchStatus::NotProtectable;
    }
    LbOs::FlushCode(patch.block, m_pageSizes.page);
    return EPatchStatus::Success;
}

EPatchStatus CPatchEngine::Enable(void* target) noexcept
{
    return setEnabled(target, true);
}

EPatchStatus CPatchEngine::Disable(void* target) noexcept
{
    return setEnabled(target, false);
}

EPatchStatus CPatchEngine::setEnabled(void* target, bool isEnabled) noexcept
{
    const LbCriticalSectionLock lock(s_engineLock);
    if (!m_isInitialized)
    {
        return EPatchStatus::NotInitialized;
    }
    SPatch* const patch = find(target);
    if (patch == nullptr)
    {
        return EPatchStatus::NotCreated;
    }
    if (patch->isEnabled == isEnabled)
    {
        return isEnabled ? EPatchStatus::AlreadyEnabled : EPatchStatus::AlreadyDisabled;
    }
    LbOs::CThreadFreezer threads;
    if (!freeze(threads))
    {
        return EPatchStatus::NotProtectable;
    }
    return isEnabled ? enable(*patch, threads) : disable(*patch);
}

EPatchStatus CPatchEngine::EnableAll() noexcept
{
    const LbCriticalSectionLock lock(s_engineLock);
    if (!m_isInitialized)
    {
        return EPatchStatus::NotInitialized;
    }
    bool areAllEnabled = true;
    for (SPatch* patch = m_first; patch != nullptr; patch = patch->next)
    {
        patch->wasEnabled = patch->isEnabled;
        areAllEnabled = areAllEnabled && patch->isEnabled;
    }
    LbOs::CThreadFreezer threads;
    if (!areAllEnabled && !freeze(threads))
    {
        return EPatchStatus::NotProtectable;
    }
    for (SPatch* patch = m_first; patch != nullptr; patch = patch->next)
    {
        const EPatchStatus status = patch->isEnabled ? EPatchStatus::Success : enable(*patch, threads);
        if (status != EPatchStatus::Success)
        {
            disableNewOnes();
            return status;
        }
    }
    return EPatchStatus::Success;
}

/// Requires frozen threads.
void CPatchEngine::disableNewOnes() noexcept
{
    for (SPatch* patch = m_first; patch != nullptr; patch = patch->next)
    {
        if (patch->isEnabled && !patch->wasEnabled)
        {
            disable(*patch);
        }
    }
}

EPatchStatus CPatchEngine::ShutDown() noexcept
{
    const LbCriticalSectionLock lock(s_engineLock);
    if (!m_isInitialized)
    {
        return EPatchStatus::NotInitialized;
    }
    {
        LbOs::CThreadFreezer threads;
        if (m_first != nullptr && (!freeze(threads) || !leaveAll(threads)))
        {
            return EPatchStatus::NotProtectable;
        }
    }
    while (m_first != nullptr)
    {
        SPatch* const patch = m_first;
        m_first = patch->next;
        retire(patch);
    }
    m_isInitialized = false;
    return EPatchStatus::Success;
}

/// Requires frozen threads. Disables all patches, moves threads out of trampolines, and lets detours call the targets.
bool CPatchEngine::leaveAll(LbOs::CThreadFreezer& threads) noexcept
{
    for (SPatch* patch = m_first; patch != nullptr; patch = patch->next)
    {
        if (patch->isEnabled && disable(*patch) != EPatchStatus::Success)
        {
            return false;
        }
        const auto findResume = [patch](std::size_t offset) { return patch->trampoline.FindResume(offset); };
        if (!moveThreads(threads, reinterpret_cast<std::uintptr_t>(patch->block), STrampoline::sc_uiCapacity,
                         findResume))
        {
            return false;
        }
    }
    for (SPatch* patch = m_first; patch != nullptr; patch = patch->next)
    {
        *patch->trampolinePointer = patch->target;
    }
    return true;
}

bool CPatchEngine::freeze(LbOs::CThreadFreezer& threads) noexcept
{
    const bool isGood = threads.Freeze(m_hasFrozen ? c_FreezeTimeoutMs : c_NextFreezeTimeoutMs);
    m_hasFrozen = isGood;
    return isGood;
}

CPatchEngine::SPatch* CPatchEngine::find(const void* target) const noexcept
{
    SPatch* patch = m_first;
    while (patch != nullptr && patch->target != target)
    {
        patch = patch->next;
    }
    return patch;
}

/// Requires frozen threads.
EPatchStatus CPatchEngine::enable(SPatch& patch, LbOs::CThreadFreezer& threads) noexcept
{
    const auto target = reinterpret_cast<std::uintptr_t>(patch.target);
    const auto block = reinterpret_cast<std::uintptr_t>(patch.block);
    const std::uintptr_t end = target + c_PatchSize;
    const std::uintptr_t destination = IsInReach(end, patch.detour) ? patch.detour : block + STrampoline::sc_uiRelay;
    PatchBytes jump = {0xE9};
    const auto displacement = static_cast<std::int32_t>(destination - end);
    std::memcpy(&jump[1], &displacement, sizeof(displacement));

    // A moved thread runs correctly in the copy, even if writing the jump fails.
    const auto findCopy = [&patch, block](std::size_t offset) { return patch.trampoline.FindCopy(block, offset); };
    if (!moveThreads(threads, target, c_PatchSize, findCopy) || !write(patch.target, jump))
    {
        return EPatchStatus::NotProtectable;
    }
    patch.isEnabled = true;
    return EPatchStatus::Success;
}

/// Requires frozen threads. A thread may be at the jump's first byte but never inside the jump.
EPatchStatus CPatchEngine::disable(SPatch& patch) noexcept
{
    if (!write(patch.target, patch.saved))
    {
        return EPatchStatus::NotProtectable;
    }
    patch.isEnabled = false;
    return EPatchStatus::Success;
}

/// Writes all bytes or none; the pages keep their protection.
bool CPatchEngine::write(std::uint8_t* target, const PatchBytes& bytes) const noexcept
{
    LbOs::SRegion region;
    if (!LbOs::QueryRegion(reinterpret_cast<std::uintptr_t>(target), region) ||
        !m_calls.protect(target, c_PatchSize, LbOs::c_ProtectionAll))
    {
        return false;
    }
    PatchBytes previous;
    std::copy_n(target, c_PatchSize, previous.begin());
    std::ranges::copy(bytes, target);
    const bool isRestored = m_calls.protect(target, c_PatchSize, region.protection);
    if (!isRestored)
    {
        std::ranges::copy(previous, target);
    }
    LbOs::FlushCode(target, c_PatchSize);
    return isRestored;
}

void CPatchEngine::retire(SPatch* patch) noexcept
{
    patch->trampolinePointer = nullptr;
    patch->next = m_retired;
    m_retired = patch;
}

void CPatchEngine::release(SPatch* patch) const noexcept
{
    if (patch->block != nullptr)
    {
        LbOs::ReleasePages(patch->block, m_pageSizes.page);
    }
    LbOs::ReleasePages(patch, sizeof(SPatch));
}

} // namespace LuTestSuite
