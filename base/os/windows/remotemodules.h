/// The modules of another process. Internal to the Windows side.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "base/os/windows/api.h"

namespace LbOs::Windows
{

/// Reads a value of another process's memory; false if the address is invalid there.
template<typename T>
bool ReadValue(HANDLE process, const void* address, T& value)
{
    SIZE_T size = 0;
    return ReadProcessMemory(process, address, &value, sizeof(value), &size) != FALSE && size == sizeof(value);
}

struct SRemoteModule
{
    std::uint64_t start = 0;
    std::uint64_t end = 0;
    std::wstring path;
};

/// Reads the loader's list, which may be incomplete if a thread has been stopped while it loaded a module. The system's
/// calls for single modules would search the list from its beginning each time.
std::vector<SRemoteModule> ListModules(HANDLE process);

} // namespace LbOs::Windows
