/// The heap functions of the shared run-time library.
#pragma once

#include "base/lbexport.h"

namespace LbOs
{

/// Addresses of the run-time's functions, not of import thunks.
struct SHeapFunctions
{
    void* malloc = nullptr;
    void* free = nullptr;
    void* realloc = nullptr;
};

/// All null if there is no shared run-time, or if a sanitizer or a preloaded allocator replaces its heap. Callable from
/// any thread, but not while threads are frozen.
LB_API SHeapFunctions GetHeapFunctions() noexcept;

/// True if the run-time's realloc may call its own malloc to move a block. For a null pointer and for size 0, every
/// run-time's realloc calls malloc or free.
LB_API extern const bool c_ReallocCallsMalloc;

/// Takes the lock of the run-time's heap on platforms where programs can hold it; re-entrant. Each lock needs one
/// unlock on the same thread.
LB_API void LockHeap() noexcept;
LB_API void UnlockHeap() noexcept;

} // namespace LbOs
