/// What it costs to patch the heap's functions and to restore them, with no other thread. For allocations themselves
/// see heap_pairs.cpp.
#include <benchmark/benchmark.h>

#include "testing/lutestsuite/lutestsuiteheaptracker.h"

namespace
{

void BM_HookAndUnhook(benchmark::State& state)
{
    for (auto _ : state)
    {
        const LuTestSuiteHeapTracker tracker;
        LuTestSuiteHeapTracker::UnhookAll();
    }
}
BENCHMARK(BM_HookAndUnhook)->Unit(benchmark::kMicrosecond);

} // namespace
