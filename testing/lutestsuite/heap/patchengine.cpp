#include "testing/lutestsuite/heap/patchengine.h"

#include <algorithm>
#include <cstring>
#include <new>

#include "testing/lutestsuite/heap/nearmemory.h"

namespace LuTestSuite
{

namespace
{

/// Threads answer within microseconds; only those that block every signal never do.
constexpr unsigned c_FreezeTimeoutMs = 2000;

/// How much of a function is looked through for jumps into its beginning.
constexpr std::size_t c_CodeMax = 2048;

constinit LbCriticalSection s_engineLock;

bool isExecutable(std::uintptr_t address, LbOs::SRegion& region) noexcept
{
    return LbOs::QueryRegion(address, region) && region.isExecutable;
}

/// False when a thread stands where it cannot be moved from.
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

class CPatchEngine::CWritable
{
public:
    CWritable(FProtect protect, const SPatch& patch) noexcept
        : m_protect(protect), m_patch(patch), m_isGood(protect(patch.target, c_PatchSize, LbOs::c_ProtectionAll))
    {
    }
    ~CWritable()
    {
        if (m_isGood)
        {
            m_protect(m_patch.target, c_PatchSize, m_patch.protection);
            LbOs::FlushCode(m_patch.target, c_PatchSize);
        }
    }
    CWritable(const CWritable&) = delete;
    CWritable& operator=(const CWritable&) = delete;

    explicit operator bool() const noexcept { return m_isGood; }

private:
    const FProtect m_protect;
    const SPatch& m_patch;
    const bool m_isGood;
};

EPatchStatus CPatchEngine::Initialize() noexcept
{
    const LbCriticalSectionLock lock(s_engineLock);
    if (m_isInitialized)
    {
        return EPatchStatus::AlreadyInitialized;
    }
    if (m_protect == nullptr)
    {
        m_protect = LbOs::ProtectPages;
    }
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
    void* const memory = LbOs::AllocatePages(sizeof(SPatch));
    if (memory == nullptr)
    {
        return EPatchStatus::NoMemory;
    }
    auto* const patch = new (memory) SPatch{};
    patch->target = static_cast<std::uint8_t*>(target);
    patch->detour = reinterpret_cast<std::uintptr_t>(detour);
    patch->trampolinePointer = &trampoline;
    patch->protection = region.protection;
    const EPatchStatus status = fillBlock(*patch, region);
    if (status != EPatchStatus::Success)
    {
        release(patch);
        return status;
    }
    patch->next = m_first;
    m_first = patch;
    trampoline = patch->block + STrampoline::sc_uiEntry;
    return EPatchStatus::Success;
}

EPatchStatus CPatchEngine::fillBlock(SPatch& patch, const LbOs::SRegion& region) noexcept
{
    const auto target = reinterpret_cast<std::uintptr_t>(patch.target);
    patch.block = static_cast<std::uint8_t*>(AllocateNear(target, m_pageSizes.page));
    if (patch.block == nullptr)
    {
        return EPatchStatus::NoMemory;
    }
    const std::span<const std::uint8_t> code(patch.target, std::min<std::size_t>(region.end - target, c_CodeMax));
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
    if (patch->isEnabled)
    {
        return EPatchStatus::AlreadyEnabled;
    }
    LbOs::CThreadFreezer threads;
    return threads.Freeze(c_FreezeTimeoutMs) ? enable(*patch, threads) : EPatchStatus::NotProtectable;
}

EPatchStatus CPatchEngine::EnableAll() noexcept
{
    const LbCriticalSectionLock lock(s_engineLock);
    if (!m_isInitialized)
    {
        return EPatchStatus::NotInitialized;
    }
    LbOs::CThreadFreezer threads;
    if (m_first != nullptr && !threads.Freeze(c_FreezeTimeoutMs))
    {
        return EPatchStatus::NotProtectable;
    }
    EPatchStatus result = EPatchStatus::Success;
    for (SPatch* patch = m_first; patch != nullptr; patch = patch->next)
    {
        const EPatchStatus status = patch->isEnabled ? EPatchStatus::Success : enable(*patch, threads);
        result = status == EPatchStatus::Success ? result : status;
    }
    return result;
}

EPatchStatus CPatchEngine::Disable(void* target) noexcept
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
    if (!patch->isEnabled)
    {
        return EPatchStatus::AlreadyDisabled;
    }
    LbOs::CThreadFreezer threads;
    return threads.Freeze(c_FreezeTimeoutMs) ? disable(*patch) : EPatchStatus::NotProtectable;
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
        if (m_first != nullptr && !threads.Freeze(c_FreezeTimeoutMs))
        {
            return EPatchStatus::NotProtectable;
        }
        for (SPatch* patch = m_first; patch != nullptr; patch = patch->next)
        {
            if (patch->isEnabled && disable(*patch) != EPatchStatus::Success)
            {
                return EPatchStatus::NotProtectable;
            }
            const auto findResume = [patch](std::size_t offset) { return patch->trampoline.FindResume(offset); };
            if (!moveThreads(threads, reinterpret_cast<std::uintptr_t>(patch->block), STrampoline::sc_uiCapacity,
                             findResume))
            {
                return EPatchStatus::NotProtectable;
            }
        }
        for (SPatch* patch = m_first; patch != nullptr; patch = patch->next)
        {
            *patch->trampolinePointer = patch->target;
        }
    }
    releaseAll();
    m_isInitialized = false;
    return EPatchStatus::Success;
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

/// With the other threads frozen.
EPatchStatus CPatchEngine::enable(SPatch& patch, LbOs::CThreadFreezer& threads) noexcept
{
    const auto target = reinterpret_cast<std::uintptr_t>(patch.target);
    const auto block = reinterpret_cast<std::uintptr_t>(patch.block);
    const std::uintptr_t end = target + c_PatchSize;
    const std::uintptr_t destination = IsInReach(end, patch.detour) ? patch.detour : block + STrampoline::sc_uiRelay;
    PatchBytes jump = {0xE9};
    const auto displacement = static_cast<std::int32_t>(destination - end);
    std::memcpy(&jump[1], &displacement, sizeof(displacement));

    const CWritable writable(m_protect, patch);
    const auto findCopy = [&patch, block](std::size_t offset) { return patch.trampoline.FindCopy(block, offset); };
    if (!writable || !moveThreads(threads, target, c_PatchSize, findCopy))
    {
        return EPatchStatus::NotProtectable;
    }
    std::ranges::copy(jump, patch.target);
    patch.isEnabled = true;
    return EPatchStatus::Success;
}

/// With the other threads frozen. None of them can stand behind the jump's first byte.
EPatchStatus CPatchEngine::disable(SPatch& patch) noexcept
{
    const CWritable writable(m_protect, patch);
    if (!writable)
    {
        return EPatchStatus::NotProtectable;
    }
    std::ranges::copy(patch.saved, patch.target);
    patch.isEnabled = false;
    return EPatchStatus::Success;
}

void CPatchEngine::releaseAll() noexcept
{
    while (m_first != nullptr)
    {
        SPatch* const patch = m_first;
        m_first = patch->next;
        release(patch);
    }
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
