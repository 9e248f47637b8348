#include "base/os/windows/remotemodules.h"

#include <cstddef>

// Needs windows.h before it.
#include <winternl.h>

namespace LbOs::Windows
{

namespace
{

/// Null on failure.
const PEB* findEnvironmentBlock(HANDLE process)
{
    const auto query =
        FindSystemFunction<decltype(NtQueryInformationProcess)>(L"ntdll.dll", "NtQueryInformationProcess");
    PROCESS_BASIC_INFORMATION information = {};
    const bool isKnown =
        query != nullptr && query(process, ProcessBasicInformation, &information, sizeof(information), nullptr) >= 0;
    return isKnown ? information.PebBaseAddress : nullptr;
}

std::wstring readText(HANDLE process, const UNICODE_STRING& text)
{
    std::wstring result(text.Length / sizeof(wchar_t), L'\0');
    SIZE_T size = 0;
    const bool isRead = ReadProcessMemory(process, text.Buffer, result.data(), text.Length, &size) != FALSE;
    return isRead ? result : std::wstring();
}

} // namespace

std::vector<SRemoteModule> ListModules(HANDLE process)
{
    // A damaged list may be a circle.
    constexpr std::size_t c_Most = 4096;
    std::vector<SRemoteModule> modules;
    PEB block = {};
    PEB_LDR_DATA loader = {};
    if (!ReadValue(process, findEnvironmentBlock(process), block) || !ReadValue(process, block.Ldr, loader))
    {
        return modules;
    }
    const auto* const head = reinterpret_cast<const char*>(block.Ldr) + offsetof(PEB_LDR_DATA, InMemoryOrderModuleList);
    const auto* link = reinterpret_cast<const char*>(loader.InMemoryOrderModuleList.Flink);
    LDR_DATA_TABLE_ENTRY entry = {};
    while (link != head && modules.size() < c_Most &&
           ReadValue(process, link - offsetof(LDR_DATA_TABLE_ENTRY, InMemoryOrderLinks), entry))
    {
        const auto start = reinterpret_cast<std::uint64_t>(entry.DllBase);
        // The size of the image. The system's header has no name for this member, which follows the entry point.
        const auto size = static_cast<std::uint32_t>(reinterpret_cast<std::uint64_t>(entry.Reserved3[1]));
        modules.push_back({start, start + size, readText(process, entry.FullDllName)});
        link = reinterpret_cast<const char*>(entry.InMemoryOrderLinks.Flink);
    }
    return modules;
}

} // namespace LbOs::Windows
