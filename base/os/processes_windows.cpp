#include "base/os/processes.h"

#include "base/os/windows_api.h"

// Behind windows.h, which they need.
#include <psapi.h>
#include <tlhelp32.h>

std::vector<LbOs::SProcess> LbOs::ListProcesses()
{
    std::vector<SProcess> processes;
    const HANDLE opened = CreateToolhelp32Snapshot(TH32CS_SNAPPROCESS, 0);
    if (opened == INVALID_HANDLE_VALUE)
    {
        return processes;
    }
    const Windows::Handle snapshot(opened);
    PROCESSENTRY32W entry = {};
    entry.dwSize = sizeof(entry);
    for (BOOL isFound = Process32FirstW(opened, &entry); isFound != FALSE; isFound = Process32NextW(opened, &entry))
    {
        processes.push_back({entry.th32ProcessID, entry.th32ParentProcessID, entry.szExeFile});
    }
    return processes;
}

std::wstring LbOs::GetProcessExecutableName(unsigned long number)
{
    const Windows::Handle process(OpenProcess(PROCESS_QUERY_INFORMATION | PROCESS_VM_READ, FALSE, number));
    return process == nullptr ? std::wstring() : Windows::ReadText([&process](wchar_t* buffer, DWORD size) {
        return GetModuleBaseNameW(process.get(), nullptr, buffer, size);
    });
}

void LbOs::KillProcess(unsigned long number)
{
    const Windows::Handle process(OpenProcess(PROCESS_TERMINATE, FALSE, number));
    if (process != nullptr)
    {
        TerminateProcess(process.get(), 0);
    }
}
