#include "base/lbrtti.h"

#include <algorithm>
#include <mutex>
#include <unordered_map>
#include <vector>

#include "base/lbdiagnostics.h"

namespace
{

/// All records by name. Records with equal names are in order of registration; Find returns the first.
struct SRegistry
{
    // Held only for one hash lookup, so a shared lock for readers would cost more than it saves.
    std::mutex mutex;
    std::unordered_map<std::wstring, std::vector<const LbRTTI*>> records;
};

SRegistry& getRegistry()
{
    // Created by the first record in any module and never destroyed: records unregister while modules are unloaded and
    // at the end of the process, in unknown order.
    static SRegistry& registry = *new SRegistry;
    return registry;
}

} // namespace

LbRTTI::LbRTTI(const wchar_t* name, const LbRTTI* base, CreateFunction create, const LbClassFacts& facts)
    : m_name(name), m_base(base), m_create(create), m_facts(facts)
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
    SRegistry& registry = getRegistry();
    const std::lock_guard lock(registry.mutex);
    const auto entry = registry.records.find(name);
    return entry == registry.records.end() ? nullptr : entry->second.front();
}

LbRTTI::CreateFunction LbRTTI::getCreate(const std::wstring& name)
{
    const LbRTTI* const record = Find(name);
    return record == nullptr ? nullptr : record->GetCreate();
}
