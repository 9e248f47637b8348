/// What a malloc and free pair costs: untracked, with the tracker in place but switched off, and tracked, for 1, 2 and
/// 8 threads. Compare with the same program under LeakSanitizer or heaptrack.
#include <cstdlib>

#include <benchmark/benchmark.h>

#include "testing/lutestsuite/lutestsuiteheaptracker.h"

namespace
{

constexpr std::size_t c_BlockSize = 64;

void runPairs(benchmark::State& state)
{
    for (auto _ : state)
    {
        void* block = std::malloc(c_BlockSize);
        benchmark::DoNotOptimize(block);
        std::free(block);
    }
}

void unhook(const benchmark::State&)
{
    LuTestSuiteHeapTracker::UnhookAll();
}

LuTestSuiteHeapTracker& getTracker()
{
    static LuTestSuiteHeapTracker tracker(false, false);
    return tracker;
}

void hook(const benchmark::State&)
{
    getTracker().Initialize();
    getTracker().Deactivate();
}

void hookAndActivate(const benchmark::State&)
{
    getTracker().Initialize();
    getTracker().Activate();
}

void BM_Untracked(benchmark::State& state)
{
    runPairs(state);
}
BENCHMARK(BM_Untracked)->Setup(unhook)->Threads(1)->Threads(2)->Threads(8)->UseRealTime();

void BM_InstalledButInactive(benchmark::State& state)
{
    runPairs(state);
}
BENCHMARK(BM_InstalledButInactive)->Setup(hook)->Teardown(unhook)->Threads(1)->Threads(2)->Threads(8)->UseRealTime();

void BM_Tracked(benchmark::State& state)
{
    runPairs(state);
}
BENCHMARK(BM_Tracked)->Setup(hookAndActivate)->Teardown(unhook)->Threads(1)->Threads(2)->Threads(8)->UseRealTime();

/// A patch and its removal, with no other thread.
void BM_HookAndUnhook(benchmark::State& state)
{
    for (auto _ : state)
    {
        const LuTestSuiteHeapTracker tracker;
        LuTestSuiteHeapTracker::UnhookAll();
    }
}
BENCHMARK(BM_HookAndUnhook)->Unit(benchmark::kMicrosecond)->Setup(unhook);

} // namespace
