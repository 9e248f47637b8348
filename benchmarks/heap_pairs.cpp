/// Prints what a malloc and free pair costs, in nanoseconds: heap_pairs MODE THREADS PAIRS
///
/// MODE is "untracked", "installed" (the functions are patched, no tracker is active) or "tracked". PAIRS are those of
/// each thread; the time is that until all threads are through, divided by the pairs of one. benchmarks/compare-heap
/// starts it in all modes, beside other tools.
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string_view>
#include <thread>
#include <vector>

#include "base/lbtimer.h"
#include "testing/lutestsuite/lutestsuiteheaptracker.h"

namespace
{

constexpr std::size_t c_BlockSize = 64;

// The compiler does not see through them: it leaves out allocations that nobody needs.
void* (*volatile s_malloc)(std::size_t) = std::malloc;
void (*volatile s_free)(void*) = std::free;

void runPairs(long count)
{
    for (long pair = 0; pair < count; ++pair)
    {
        s_free(s_malloc(c_BlockSize));
    }
}

double measure(unsigned threadCount, long pairCount)
{
    std::vector<std::thread> threads;
    threads.reserve(threadCount);
    const LbTimer timer(LbTimer::eR_NanoSecond);
    for (unsigned thread = 1; thread < threadCount; ++thread)
    {
        threads.emplace_back(runPairs, pairCount);
    }
    runPairs(pairCount);
    for (std::thread& thread : threads)
    {
        thread.join();
    }
    return static_cast<double>(timer.GetElapsed()) / static_cast<double>(pairCount);
}

} // namespace

int main(int count, char** arguments)
{
    if (count != 4)
    {
        std::fputs("heap_pairs untracked|installed|tracked THREADS PAIRS\n", stderr);
        return 1;
    }
    const std::string_view mode = arguments[1];
    LuTestSuiteHeapTracker tracker(mode == "tracked", mode != "untracked");
    const double nanoseconds = measure(static_cast<unsigned>(std::atoi(arguments[2])), std::atol(arguments[3]));
    tracker.Deactivate();
    std::printf("%.2f\n", nanoseconds);
    LuTestSuiteHeapTracker::UnhookAll();
    return 0;
}
