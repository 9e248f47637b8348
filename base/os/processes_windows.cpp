#include "base/os/processes.h"

#include "base/os/windows/api.h"

// Need windows.h before them.
#include <psapi.h>
#include <tlhelp32.h>

namespace
{

/// Visits the processes until `visit` returns false.
template<typename F>
void visitProcesses(const F& visit)
{
    const HANDLE opened = CreateToolhelp32Snapshot(TH32CS_SNAPPROCESS, 0);
    if (opened == INVALID_HANDLE_VALUE)
    {
        return;
    }
    const LbOs::Windows::Handle snapshot(opened);
    PROCESSENTRY32W entry = {};
    entry.dwSize = sizeof(entry);
    BOOL isFound = Process32FirstW(opened, &entry);
    while (isFound != FALSE && visit(entry))
    {
        isFound = Process32NextW(opened, &entry);
    }
}

} // namespace

std::vector<LbOs::SProcess> LbOs::ListProcesses()
{
    std::vector<SProcess> processes;
    visitProcesses([&processes](const PROCESSENTRY32W& entry) {
        processes.push_back({entry.th32ProcessID, entry.szExeFile});
        return true;
    });
    return processes;
}

std::optional<unsigned long> LbOs::GetParentProcessId()
{
    std::optional<unsigned long> id;
    visitProcesses([&id, own = GetCurrentProcessId()](const PROCESSENTRY32W& entry) {
        if (entry.th32ProcessID == own)
        {
            id = entry.th32ParentProcessID;
        }
        return !id;
    });
    return id;
}

std::wstring LbOs::GetProcessExecutableName(unsigned long id)
{
    const Windows::Handle process(OpenProcess(PROCESS_QUERY_INFORMATION | PROCESS_VM_READ, FALSE, id));
    return process == nullptr ? std::wstring() : Windows::ReadText([&process](wchar_t* buffer, DWORD size) {
        return GetModuleBaseNameW(process.get(), nullptr, buffer, size);
    });
}

void LbOs::KillProcess(const SProcess& process)
{
    const Windows::Handle opened(OpenProcess(PROCESS_TERMINATE, FALSE, process.id));
    if (opened != nullptr)
    {
        TerminateProcess(opened.get(), 0);
    }
}

std::uint64_t LbOs::GetProcessLimit() noexcept
{
    return ~std::uint64_t{0};
}

bool LbOs::HasFewProcesses() noexcept
{
    return false;
}

unsigned LbOs::CountStartableThreads(unsigned wanted)
{
    // Threads are limited by memory only.
    return wanted;
}
