/// The heap's functions without the patches.
#pragma once

#include <cstddef>

namespace LuTestSuite
{

// Addresses of the unpatched functions. The jumps in assembly refer to these variables by the quoted names.
extern void* s_mallocTrampoline asm("LuTestSuiteHeapTracker_malloc");
extern void* s_freeTrampoline asm("LuTestSuiteHeapTracker_free");
extern void* s_reallocTrampoline asm("LuTestSuiteHeapTracker_realloc");

/// A single instruction loads the trampoline's address and jumps there. So when the engine shuts down, a thread is
/// either still here and will reach the function itself, or inside the trampoline, where the engine finds it.
void* CallMalloc(std::size_t size) noexcept;
void CallFree(void* address) noexcept;
void* CallRealloc(void* address, std::size_t size) noexcept;

} // namespace LuTestSuite
