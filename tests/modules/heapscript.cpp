/// A known sequence of heap operations with expected figures.

#include <atomic>
#include <cstdlib>
#include <thread>

#include "base/luunittest.h"
#include "tests/modules/heapscript.h"

namespace
{

// Volatile: the compiler removes allocations that it recognises as unused.
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

/// What the C library does at the end of a thread depends on the order of threads, so threads end only after the
/// script.
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

/// Allocates blocks before the script. They must not be counted.
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

// The comment after each line is the number of bytes that are allocated after it.
void runScript()
{
    void* first = s_malloc(100);                     // 100
    void* const second = s_malloc(50);               // 150
    first = s_realloc(first, 5000);                  // 5050
    first = s_realloc(first, 10);                    // 60
    void* const grown = s_realloc(s_resized, 900);   // 960
    s_free(s_freed);                                 // 960
    s_free(nullptr);                                 // 960
    s_delete(s_new(heapscript::c_ScriptPeak - 960)); // c_ScriptPeak, 960
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

// The names are so short that copies of them need no block, so the run allocates the same for each case.
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
