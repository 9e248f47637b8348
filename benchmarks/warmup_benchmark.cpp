/// The cost of the C library's warm-up for a thread.
#include <thread>

#include <benchmark/benchmark.h>

#include "testing/lutestsuite/lutestsuiteenvironment.h"

namespace
{

void BM_PreallocateStaticData(benchmark::State& state)
{
    LuTestSuiteEnvironment environment;
    for (auto _ : state)
    {
        std::thread(LuTestSuiteEnvironment::PreallocateStaticData).join();
    }
}
BENCHMARK(BM_PreallocateStaticData)->Unit(benchmark::kMillisecond)->UseRealTime();

} // namespace
