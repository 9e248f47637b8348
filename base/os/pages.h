/// Memory in whole pages, straight from the system and never from the run-time's heap.
///
/// Every operation may be called by any thread and while other threads are frozen: none allocates from the heap or
/// takes a lock of the run-time.
#pragma once

#include <cstddef>
#include <cstdint>

#include "base/lbexport.h"

namespace LbOs
{

/// Zeroed pages to read and write, at least `size` bytes; null when there are none. The caller releases them with the
/// same size.
LB_API void* AllocatePages(std::size_t size) noexcept;

/// The same at exactly `address`, a multiple of the allocation granularity; null when something is there already.
LB_API void* AllocatePagesAt(std::uintptr_t address, std::size_t size) noexcept;

/// Gives pages of the two calls above back.
LB_API void ReleasePages(void* pages, std::size_t size) noexcept;

/// What a range of addresses is.
struct SRegion
{
    std::uintptr_t begin = 0;
    std::uintptr_t end = 0;
    bool isFree = false;
    bool isExecutable = false;
    std::uint32_t protection = 0; ///< the system's own number, for ProtectPages
};

/// The region that holds `address`: pages of one protection, or a gap between such pages. False when the address is
/// none that the process could use.
LB_API bool QueryRegion(std::uintptr_t address, SRegion& region) noexcept;

/// Takes a region and goes on with the next one, or not.
using FVisitRegion = bool (*)(const SRegion& region, void* context) noexcept;

/// Calls `visit` for all regions with an address from `begin` to `end`, ascending, in one pass over the system's table.
LB_API void VisitRegions(std::uintptr_t begin, std::uintptr_t end, FVisitRegion visit, void* context) noexcept;

struct SPageSizes
{
    std::size_t page;        ///< unit of protection
    std::size_t granularity; ///< unit of addresses for AllocatePagesAt
};
LB_API SPageSizes GetPageSizes() noexcept;

/// The system's numbers for SRegion::protection.
LB_API extern const std::uint32_t c_ProtectionReadExecute;
LB_API extern const std::uint32_t c_ProtectionAll; ///< read, write, execute

/// Sets the protection of all pages that hold a byte of the range. False on failure, nothing is changed then.
LB_API bool ProtectPages(void* address, std::size_t size, std::uint32_t protection) noexcept;

/// To be called after code was written, before it runs.
LB_API void FlushCode(void* address, std::size_t size) noexcept;

} // namespace LbOs
