/// A sequence of heap operations with a known effect on the heap, see heapscript.h.

#include <atomic>
#include <cstdlib>
#include <thread>

#include "base/luunittest.h"
#include "tests/modules/heapscript.h"

namespace
{

// Volatile, because the compiler removes allocations that it recognises as unused.
void* (*volatile s_malloc)(std::size_t) = std::malloc;
void* (*volatile s_realloc)(void*, std::size_t) = std::realloc;
void (*volatile s_free)(void*) = std::free;
void* (*volatile s_new)(std::size_t) = ::operator new;
void (*volatile s_delete)(void*) = ::operator delete;

void* s_resized = nullptr;
void* s_freed = nullptr;
void* s_leaked = nullptr;
std::thread s_thread;
std::atomic<bool> s_isReady = false;
std::atomic<void*> s_handedOver = nullptr;
std::atomic<bool> s_isDone = false;
std::atomic<bool> s_mayEnd = false;

void await(const std::atomic<bool>& condition)
{
    while (!condition)
    {
        std::this_thread::yield();
    }
}

/// What the C library does on the heap when a thread ends depends on the order of the threads. This thread therefore
/// ends only after the script.
void serve()
{
    s_free(s_malloc(600));
    s_isReady = true;
    void* block = nullptr;
    while ((block = s_handedOver) == nullptr && !s_mayEnd)
    {
        std::this_thread::yield();
    }
    s_free(block);
    s_leaked = s_malloc(heapscript::c_Leak);
    s_isDone = true;
    await(s_mayEnd);
}

/// Allocates blocks before the script. The figures of the script must not include these blocks.
void prepare()
{
    s_isReady = false;
    s_handedOver = nullptr;
    s_isDone = false;
    s_mayEnd = false;
    s_resized = s_malloc(700);
    s_freed = s_malloc(800);
    s_thread = std::thread(serve);
    await(s_isReady);
}

// The comment on each line is the number of allocated bytes once the line has run.
void runScript()
{
    void* first = s_malloc(100);                     // 100
    void* const second = s_malloc(50);               // 150
    first = s_realloc(first, 5000);                  // 5050
    first = s_realloc(first, 10);                    // 60
    void* const grown = s_realloc(s_resized, 900);   // 960
    s_free(s_freed);                                 // 960
    s_free(nullptr);                                 // 960
    s_delete(s_new(heapscript::c_ScriptPeak - 960)); // c_ScriptPeak, then 960
    s_handedOver = second;
    await(s_isDone); // 926
    s_free(first);   // 916
    s_free(grown);   // c_Leak
}

void cleanUp()
{
    s_mayEnd = true;
    s_thread.join();
    s_free(s_leaked);
}

} // namespace

// The names of the cases are so short that a copy needs no block on the heap, so the run allocates the same
// amount for each case.
class CHeapScript : public LuUnitTest
{
    LB_RTTI(CHeapScript)

    void InitSubtests() override
    {
        AddSubtest(L"pre", prepare);
        AddSubtest(L"nil", [] {});
        AddSubtest(L"cmp", [] { s_free(s_malloc(heapscript::c_ComparedPeak)); });
        AddSubtest(L"run", runScript);
        AddSubtest(L"end", cleanUp);
    }
};
LB_RTTI_CLASS(CHeapScript, LuUnitTest)
