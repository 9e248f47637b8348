/// The unwind tables of another process's modules. Internal to the Windows side.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <vector>

#include "base/os/windows/api.h"
#include "base/os/windows/remotemodules.h"

namespace LbOs::Windows
{

/// Reads a module's table when an address in the module is first looked up. Used by one thread.
class CFunctionTables
{
public:
    /// The modules must outlive the object.
    CFunctionTables(HANDLE process, const std::vector<SRemoteModule>& modules);

    /// Null for an address outside all modules.
    const SRemoteModule* FindModule(std::uint64_t address) const;

    /// Null for an address without an entry: it is outside all modules, or in a function that calls no other function.
    /// Valid as long as the object.
    RUNTIME_FUNCTION* FindFunction(std::uint64_t address);

private:
    using Table = std::vector<RUNTIME_FUNCTION>;

    Table readTable(std::uint64_t moduleStart) const;

    HANDLE m_process;
    const std::vector<SRemoteModule>& m_modules;
    std::map<std::uint64_t, Table> m_tables; ///< by the module's start
};

} // namespace LbOs::Windows
