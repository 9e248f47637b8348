/// Shared by tests of the heap tracker.
#pragma once

#include <cstdint>
#include <cstdlib>

#include <gtest/gtest.h>

#include "base/os/heapfunctions.h"
#include "testing/lutestsuite/lutestsuiteheaptracker.h"

// Volatile pointers, because the compiler removes allocations that it recognises as unused.
inline void* (*volatile s_malloc)(std::size_t) = std::malloc;
inline void* (*volatile s_realloc)(void*, std::size_t) = std::realloc;
inline void (*volatile s_free)(void*) = std::free;

inline std::uint64_t getOperationCount(const LuTestSuiteHeapTracker& tracker)
{
    return tracker.GetMallocCount() + tracker.GetFreeCount() + tracker.GetReallocCount();
}

/// Skips the test if the heap's functions cannot be patched.
class LuTestSuiteHeapTrackerTest : public testing::Test
{
protected:
    void SetUp() override
    {
        if (LbOs::GetHeapFunctions().malloc == nullptr)
        {
            GTEST_SKIP() << "this process does not use the heap of the shared run-time";
        }
    }
    ~LuTestSuiteHeapTrackerTest() override { LuTestSuiteHeapTracker::UnhookAll(); }
};
