/// A known script of heap operations, and what to compare it with.

#include <atomic>
#include <cstdlib>
#include <thread>

#include "base/luunittest.h"
#include "tests/modules/heapscript.h"

namespace
{

// The compiler does not see through them: it leaves out allocations that nobody needs.
void* (*volatile s_malloc)(std::size_t) = std::malloc;
void* (*volatile s_realloc)(void*, std::size_t) = std::realloc;
void (*volatile s_free)(void*) = std::free;
void* (*volatile s_new)(std::size_t) = ::operator new;
void (*volatile s_delete)(void*) = ::operator delete;

void* s_resized = nullptr;
void* s_freed = nullptr;
void* s_leaked = nullptr;
std::thread s_idleThread;
std::thread s_thread;
std::atomic<bool> s_mayEnd = false;
std::atomic<void*> s_handedOver = nullptr;

void awaitEnd()
{
    while (!s_mayEnd)
    {
        std::this_thread::yield();
    }
}

void awaitBlock()
{
    while (s_handedOver == nullptr)
    {
        std::this_thread::yield();
    }
    s_free(s_handedOver);
    s_leaked = s_malloc(heapscript::c_Leak);
}

/// What is there before the script, so that it is not seen.
void prepare()
{
    s_mayEnd = false;
    s_handedOver = nullptr;
    s_resized = s_malloc(700);
    s_freed = s_malloc(800);
    s_idleThread = std::thread(awaitEnd);
    s_thread = std::thread(awaitBlock);
    // What the run-time does at the first end of a thread.
    std::thread([] {}).join();
}

/// What the run-time does at the end of any thread.
void endThread()
{
    s_mayEnd = true;
    s_idleThread.join();
}

// Behind each line: bytes that are allocated then.
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
    s_thread.join(); // 926
    s_free(first);   // 916
    s_free(grown);   // c_Leak
}

} // namespace

// Names so short that their copies need no block: all cases cost the run the same.
class CHeapScript : public LuUnitTest
{
    LB_RTTI(CHeapScript)

    void InitSubtests() override
    {
        AddSubtest(L"pre", prepare);
        AddSubtest(L"nil", [] {});
        AddSubtest(L"cmp", [] { s_free(s_malloc(heapscript::c_ComparedPeak)); });
        AddSubtest(L"thr", endThread);
        AddSubtest(L"run", runScript);
        AddSubtest(L"end", [] { s_free(s_leaked); });
    }
};
LB_RTTI_CLASS(CHeapScript, LuUnitTest)
