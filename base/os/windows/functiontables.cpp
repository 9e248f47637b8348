#include "base/os/windows/functiontables.h"

#include <algorithm>

namespace LbOs::Windows
{

CFunctionTables::CFunctionTables(HANDLE process, const std::vector<SRemoteModule>& modules)
    : m_process(process), m_modules(modules)
{
}

const SRemoteModule* CFunctionTables::FindModule(std::uint64_t address) const
{
    const auto module = std::ranges::find_if(m_modules, [address](const SRemoteModule& candidate) {
        return address >= candidate.start && address < candidate.end;
    });
    return module == m_modules.end() ? nullptr : &*module;
}

RUNTIME_FUNCTION* CFunctionTables::FindFunction(std::uint64_t address)
{
    const SRemoteModule* const module = FindModule(address);
    if (module == nullptr)
    {
        return nullptr;
    }
    auto known = m_tables.find(module->start);
    if (known == m_tables.end())
    {
        known = m_tables.emplace(module->start, readTable(module->start)).first;
    }
    Table& table = known->second;
    const auto offset = static_cast<DWORD>(address - module->start);
    const auto next = std::ranges::upper_bound(table, offset, {}, &RUNTIME_FUNCTION::BeginAddress);
    return next != table.begin() && offset < std::prev(next)->EndAddress ? &*std::prev(next) : nullptr;
}

CFunctionTables::Table CFunctionTables::readTable(std::uint64_t moduleStart) const
{
    constexpr DWORD c_Largest = DWORD{64} << 20U;
    // NOLINTNEXTLINE(performance-no-int-to-ptr)
    const auto* const start = reinterpret_cast<const char*>(moduleStart);
    IMAGE_DOS_HEADER first = {};
    IMAGE_NT_HEADERS64 headers = {};
    if (!ReadValue(m_process, start, first) || !ReadValue(m_process, start + first.e_lfanew, headers))
    {
        return {};
    }
    const IMAGE_DATA_DIRECTORY place = headers.OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_EXCEPTION];
    Table table(std::min(place.Size, c_Largest) / sizeof(RUNTIME_FUNCTION));
    const SIZE_T size = table.size() * sizeof(RUNTIME_FUNCTION);
    const bool isRead =
        ReadProcessMemory(m_process, start + place.VirtualAddress, table.data(), size, nullptr) != FALSE;
    return isRead ? table : Table();
}

} // namespace LbOs::Windows
