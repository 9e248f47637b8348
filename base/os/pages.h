/// Memory in whole pages, directly from the system, never from the run-time's heap.
///
/// All operations may be called from any thread and while other threads are frozen: they neither allocate from the heap
/// nor take a lock of the run-time.
#pragma once

#include <cstddef>
#include <cstdint>

#include "base/lbexport.h"

namespace LbOs
{

/// Zeroed, readable and writable pages of at least `size` bytes; null on failure. The caller releases them with the
/// same size.
LB_API void* AllocatePages(std::size_t size) noexcept;

/// The same at exactly `address`, a multiple of the allocation granularity; null if the range is occupied.
LB_API void* AllocatePagesAt(std::uintptr_t address, std::size_t size) noexcept;

/// Releases pages of the two operations above.
LB_API void ReleasePages(void* pages, std::size_t size) noexcept;

/// A range of addresses with equal properties.
struct SRegion
{
    std::uintptr_t begin = 0;
    std::uintptr_t end = 0;
    bool isFree = false;
    bool isExecutable = false;
    std::uint32_t protection = 0; ///< the system's own number, for ProtectPages
};

/// The region that contains `address`: pages of one protection, or a gap between them. False if the process cannot use
/// the address.
LB_API bool QueryRegion(std::uintptr_t address, SRegion& region) noexcept;

/// Receives a region; returns false to stop.
using FVisitRegion = bool (*)(const SRegion& region, void* context) noexcept;

/// Calls `visit` for all regions with an address in [begin, end), ascending, in one pass over the system's table.
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

/// Sets the protection of all pages that contain a byte of the range. False on failure; then nothing has changed.
LB_API bool ProtectPages(void* address, std::size_t size, std::uint32_t protection) noexcept;

/// Call after writing code and before running it.
LB_API void FlushCode(void* address, std::size_t size) noexcept;

} // namespace LbOs
