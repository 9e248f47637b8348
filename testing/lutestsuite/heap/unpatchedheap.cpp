#include "testing/lutestsuite/heap/unpatchedheap.h"

namespace LuTestSuite
{

void* s_mallocTrampoline = nullptr;
void* s_freeTrampoline = nullptr;
void* s_reallocTrampoline = nullptr;

__attribute__((naked, noinline)) void* CallMalloc(std::size_t /*size*/) noexcept
{
    asm("jmpq *LuTestSuiteHeapTracker_malloc(%rip)");
}
__attribute__((naked, noinline)) void CallFree(void* /*address*/) noexcept
{
    asm("jmpq *LuTestSuiteHeapTracker_free(%rip)");
}
__attribute__((naked, noinline)) void* CallRealloc(void* /*address*/, std::size_t /*size*/) noexcept
{
    asm("jmpq *LuTestSuiteHeapTracker_realloc(%rip)");
}

} // namespace LuTestSuite
