#include "base/os/machine.h"

#include "base/lbencoding.h"
#include "base/os/windows/api.h"

#include <d3d9.h>

namespace
{

constexpr const wchar_t* c_ProcessorKey = L"HARDWARE\\DESCRIPTION\\System\\CentralProcessor\\0";

std::wstring readProcessorModel()
{
    wchar_t model[256] = {};
    DWORD size = sizeof(model);
    const LSTATUS status =
        RegGetValueW(HKEY_LOCAL_MACHINE, c_ProcessorKey, L"ProcessorNameString", RRF_RT_REG_SZ, nullptr, model, &size);
    return status == ERROR_SUCCESS ? std::wstring(model) : std::wstring();
}

DWORD readProcessorMegahertz()
{
    DWORD megahertz = 0;
    DWORD size = sizeof(megahertz);
    const LSTATUS status =
        RegGetValueW(HKEY_LOCAL_MACHINE, c_ProcessorKey, L"~MHz", RRF_RT_REG_DWORD, nullptr, &megahertz, &size);
    return status == ERROR_SUCCESS ? megahertz : 0;
}

/// Loads the library on demand, because not every system has it.
class CDirect3D
{
public:
    CDirect3D() : m_library(LoadLibraryExW(L"d3d9.dll", nullptr, LOAD_LIBRARY_SEARCH_SYSTEM32))
    {
        if (m_library == nullptr)
        {
            return;
        }
        const auto create = reinterpret_cast<IDirect3D9*(WINAPI*)(UINT)>(
            reinterpret_cast<void (*)()>(GetProcAddress(m_library, "Direct3DCreate9")));
        m_direct3D = create != nullptr ? create(D3D_SDK_VERSION) : nullptr;
    }

    ~CDirect3D()
    {
        if (m_direct3D != nullptr)
        {
            m_direct3D->Release();
        }
        if (m_library != nullptr)
        {
            FreeLibrary(m_library);
        }
    }

    CDirect3D(const CDirect3D&) = delete;
    CDirect3D& operator=(const CDirect3D&) = delete;

    std::wstring GetDescription() const
    {
        D3DADAPTER_IDENTIFIER9 identifier = {};
        const bool isKnown =
            m_direct3D != nullptr && SUCCEEDED(m_direct3D->GetAdapterIdentifier(D3DADAPTER_DEFAULT, 0, &identifier));
        return isKnown ? LbEncoding::FromLatin1(identifier.Description) : std::wstring();
    }

private:
    HMODULE m_library;
    IDirect3D9* m_direct3D = nullptr;
};

} // namespace

LbOs::SProcessor LbOs::QueryProcessor()
{
    SProcessor processor;
    processor.model = readProcessorModel();
    processor.logicalProcessors = GetActiveProcessorCount(ALL_PROCESSOR_GROUPS);
    processor.megahertz = static_cast<double>(readProcessorMegahertz());
    return processor;
}

std::uint64_t LbOs::GetPhysicalMemory()
{
    MEMORYSTATUSEX status = {};
    status.dwLength = sizeof(status);
    return GlobalMemoryStatusEx(&status) != 0 ? status.ullTotalPhys : 0;
}

std::wstring LbOs::GetMachineName()
{
    return Windows::ReadText([](wchar_t* buffer, DWORD size) {
        DWORD length = size;
        // For a buffer that is too small, the call returns the required size.
        return GetComputerNameExW(ComputerNamePhysicalDnsHostname, buffer, &length) != 0 ||
                       GetLastError() == ERROR_MORE_DATA
                   ? length
                   : 0;
    });
}

std::wstring LbOs::GetGraphicsAdapter()
{
    return CDirect3D().GetDescription();
}
