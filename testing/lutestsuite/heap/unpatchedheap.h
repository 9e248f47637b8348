/// The heap's functions as they are without the patches.
#pragma once

#include <cstddef>

namespace LuTestSuite
{

// Where they are reached; under these names for the jumps.
extern void* s_mallocTrampoline asm("LuTestSuiteHeapTracker_malloc");
extern void* s_freeTrampoline asm("LuTestSuiteHeapTracker_free");
extern void* s_reallocTrampoline asm("LuTestSuiteHeapTracker_realloc");

/// One instruction takes the trampoline's address and goes there, so that a thread is either still here when the engine
/// shuts down, and will find the function itself, or in the trampoline, where the engine finds it.
void* CallMalloc(std::size_t size) noexcept;
void CallFree(void* address) noexcept;
void* CallRealloc(void* address, std::size_t size) noexcept;

} // namespace LuTestSuite
