/// Where the heap of the shared run-time library begins.
#pragma once

#include "base/lbexport.h"

namespace LbOs
{

/// Entries of the run-time's functions, not of the import stubs that lead there.
struct SHeapFunctions
{
    void* malloc = nullptr;
    void* free = nullptr;
    void* realloc = nullptr;
};

/// All null when there is no shared run-time, or when something stands in front of its heap (a sanitizer, a preloaded
/// allocator). Any thread, but not while threads are frozen.
LB_API SHeapFunctions GetHeapFunctions() noexcept;

} // namespace LbOs
