/// Where the heap of the shared run-time library begins.
#pragma once

#include "base/lbexport.h"

namespace LbOs
{

/// Entries of the run-time's functions, not of the import thunks that lead there.
struct SHeapFunctions
{
    void* malloc = nullptr;
    void* free = nullptr;
    void* realloc = nullptr;
};

/// All null when there is no shared run-time, or when something stands in front of its heap (a sanitizer, a preloaded
/// allocator). Any thread, but not while threads are frozen.
LB_API SHeapFunctions GetHeapFunctions() noexcept;

/// True when the run-time's realloc may move a block by its own malloc. For a null pointer and for no bytes each one
/// calls malloc or free.
LB_API extern const bool c_ReallocCallsMalloc;

/// Takes the lock of the run-time's heap where programs can hold it, too; re-entrant. Each is followed by one unlock on
/// the same thread.
LB_API void LockHeap() noexcept;
LB_API void UnlockHeap() noexcept;

} // namespace LbOs
