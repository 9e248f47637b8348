/// The cost of patching and restoring the heap's functions in a process with one thread. heap_pairs.cpp measures the
/// allocations themselves.
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
