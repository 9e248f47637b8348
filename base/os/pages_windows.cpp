#include "base/os/pages.h"

#include "base/os/windows/api.h"

namespace
{

// NOLINTBEGIN(performance-no-int-to-ptr)
void* toPointer(std::uintptr_t address) noexcept
{
    return reinterpret_cast<void*>(address);
}
// NOLINTEND(performance-no-int-to-ptr)

} // namespace

const std::uint32_t LbOs::c_ProtectionReadExecute = PAGE_EXECUTE_READ;
const std::uint32_t LbOs::c_ProtectionAll = PAGE_EXECUTE_READWRITE;

void* LbOs::AllocatePages(std::size_t size) noexcept
{
    return VirtualAlloc(nullptr, size, MEM_RESERVE | MEM_COMMIT, PAGE_READWRITE);
}

void* LbOs::AllocatePagesAt(std::uintptr_t address, std::size_t size) noexcept
{
    return VirtualAlloc(toPointer(address), size, MEM_RESERVE | MEM_COMMIT, PAGE_READWRITE);
}

void LbOs::ReleasePages(void* pages, std::size_t /*size*/) noexcept
{
    VirtualFree(pages, 0, MEM_RELEASE);
}

bool LbOs::QueryRegion(std::uintptr_t address, SRegion& region) noexcept
{
    // The lowest byte is the kind of access; from 0x10 on it allows execution. Guard pages never execute.
    constexpr DWORD c_KindMask = 0xFF;
    constexpr DWORD c_FirstExecutable = 0x10;

    MEMORY_BASIC_INFORMATION information = {};
    if (VirtualQuery(toPointer(address), &information, sizeof(information)) == 0)
    {
        return false;
    }
    region.begin = reinterpret_cast<std::uintptr_t>(information.BaseAddress);
    region.end = region.begin + information.RegionSize;
    region.isFree = information.State == MEM_FREE;
    region.isExecutable = information.State == MEM_COMMIT && (information.Protect & PAGE_GUARD) == 0 &&
                          (information.Protect & c_KindMask) >= c_FirstExecutable;
    region.protection = information.Protect;
    return true;
}

void LbOs::VisitRegions(std::uintptr_t begin, std::uintptr_t end, FVisitRegion visit, void* context) noexcept
{
    SRegion region;
    region.end = begin;
    while (region.end < end && QueryRegion(region.end, region) && visit(region, context))
    {
    }
}

LbOs::SPageSizes LbOs::GetPageSizes() noexcept
{
    SYSTEM_INFO information = {};
    GetSystemInfo(&information);
    return {information.dwPageSize, information.dwAllocationGranularity};
}

bool LbOs::ProtectPages(void* address, std::size_t size, std::uint32_t protection) noexcept
{
    DWORD previous = 0;
    return VirtualProtect(address, size, protection, &previous) != FALSE;
}

void LbOs::FlushCode(void* address, std::size_t size) noexcept
{
    FlushInstructionCache(GetCurrentProcess(), address, size);
}
