#include "base/lbrtti.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cstddef>
#include <mutex>
#include <new>
#include <unordered_map>
#include <utility>
#include <vector>

#include "base/lbdiagnostics.h"

namespace
{

/// All records by name. Records with equal names are in order of registration; Find returns the first.
struct SRegistry
{
    // Usually held only for one hash lookup, so a shared lock for readers would cost more than it saves.
    std::mutex mutex;
    std::unordered_map<std::wstring, std::vector<const LbRTTI*>> records;
};

/// The functions of LbLateClasses objects that have not been called yet.
struct SLate
{
    // Recursive, because a registering function may look classes up.
    std::recursive_mutex mutex;
    std::vector<void (*)()> pending;
    std::atomic<bool> isPending = false; ///< true until the last function has returned
};

SRegistry& getRegistry()
{
    // Created by the first record in any module and never destroyed: records unregister while modules are unloaded and
    // at the end of the process, in unknown order.
    static SRegistry& registry = *new SRegistry;
    return registry;
}

SLate& getLate()
{
    // Never destroyed, because LbLateClasses objects are destroyed in unknown order. Not on the heap, because a case
    // whose heap is tracked may be the first to look up a class.
    alignas(SLate) static std::array<std::byte, sizeof(SLate)> s_memory;
    static SLate& late = *new (s_memory.data()) SLate;
    return late;
}

void registerLateClasses()
{
    SLate& late = getLate();
    if (!late.isPending.load(std::memory_order_acquire))
    {
        return;
    }
    const std::lock_guard lock(late.mutex);
    while (!late.pending.empty())
    {
        void (*const registerClasses)() = late.pending.back();
        late.pending.pop_back();
        registerClasses();
    }
    late.isPending.store(false, std::memory_order_release);
}

} // namespace

LbRTTI::LbRTTI(const wchar_t* name, const LbRTTI* base, CreateFunction create, const LbClassFacts& facts)
    : m_name(name), m_base(base), m_create(std::move(create)), m_facts(facts)
{
    bool isTaken = false;
    {
        SRegistry& registry = getRegistry();
        const std::lock_guard lock(registry.mutex);
        std::vector<const LbRTTI*>& namesakes = registry.records[m_name];
        isTaken = !namesakes.empty();
        namesakes.push_back(this);
    }
    if (isTaken)
    {
        LbDiagnostics::Trace(LbFormat(L"LbRTTI: class '%s' is registered more than once", m_name));
    }
}

LbRTTI::~LbRTTI()
{
    SRegistry& registry = getRegistry();
    const std::lock_guard lock(registry.mutex);
    const auto entry = registry.records.find(m_name);
    std::erase(entry->second, this);
    if (entry->second.empty())
    {
        registry.records.erase(entry);
    }
}

bool LbRTTI::IsDerivedFrom(const LbRTTI& type) const noexcept
{
    const LbRTTI* current = this;
    while (current != nullptr && current != &type)
    {
        current = current->m_base;
    }
    return current != nullptr;
}

const LbRTTI* LbRTTI::Find(const std::wstring& name)
{
    registerLateClasses();
    SRegistry& registry = getRegistry();
    const std::lock_guard lock(registry.mutex);
    const auto entry = registry.records.find(name);
    return entry == registry.records.end() ? nullptr : entry->second.front();
}

std::vector<const LbRTTI*> LbRTTI::GetDerived(const LbRTTI& base)
{
    registerLateClasses();
    std::vector<const LbRTTI*> derived;
    {
        SRegistry& registry = getRegistry();
        const std::lock_guard lock(registry.mutex);
        for (const auto& [name, namesakes] : registry.records)
        {
            const LbRTTI* const first = namesakes.front();
            if (first != &base && first->IsDerivedFrom(base) && first->GetCreate() != nullptr)
            {
                derived.push_back(first);
            }
        }
    }
    std::ranges::sort(derived, {}, &LbRTTI::GetName);
    return derived;
}

LbRTTI::CreateFunction LbRTTI::getCreate(const std::wstring& name)
{
    const LbRTTI* const record = Find(name);
    return record == nullptr ? nullptr : record->GetCreate();
}

LbLateClasses::LbLateClasses(void (*registerClasses)()) : m_registerClasses(registerClasses)
{
    SLate& late = getLate();
    const std::lock_guard lock(late.mutex);
    late.pending.push_back(registerClasses);
    late.isPending.store(true, std::memory_order_release);
}

LbLateClasses::~LbLateClasses()
{
    SLate& late = getLate();
    const std::lock_guard lock(late.mutex);
    std::erase(late.pending, m_registerClasses);
}
