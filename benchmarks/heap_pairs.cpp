/// Prints the cost of a malloc and free pair in nanoseconds: heap_pairs MODE THREADS PAIRS
///
/// MODE is "untracked", "installed" (the functions are patched, no tracker is active) or "tracked". PAIRS is the number
/// of pairs per thread. The pairs are measured in pieces; a piece ends when all threads have finished it. The result is
/// the median time of a piece, divided by the number of its pairs per thread. benchmarks/compare-heap runs this program
/// in all modes and compares it with other tools.
#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string_view>
#include <thread>
#include <vector>

#include "base/lbtimer.h"
#include "testing/lutestsuite/lutestsuiteheaptracker.h"

namespace
{

constexpr std::size_t c_BlockSize = 64;

// Volatile, because otherwise the compiler removes allocations that it recognises as unused.
void* (*volatile s_malloc)(std::size_t) = std::malloc;
void (*volatile s_free)(void*) = std::free;

void runPairs(long count)
{
    for (long pair = 0; pair < count; ++pair)
    {
        s_free(s_malloc(c_BlockSize));
    }
}

std::uint64_t measure(unsigned threadCount, long pairCount)
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
    return timer.GetElapsed();
}

/// Measures short pieces and uses their median, because other processes interrupt only some of the pieces.
double measureInPieces(unsigned threadCount, long pairCount)
{
    constexpr std::size_t c_PieceCount = 51;
    const long piece = std::max(pairCount / static_cast<long>(c_PieceCount), 1L);
    std::array<std::uint64_t, c_PieceCount> times;
    std::ranges::generate(times, [=] { return measure(threadCount, piece); });
    std::ranges::nth_element(times, times.begin() + c_PieceCount / 2);
    return static_cast<double>(times[c_PieceCount / 2]) / static_cast<double>(piece);
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
    const double nanoseconds = measureInPieces(static_cast<unsigned>(std::atoi(arguments[2])), std::atol(arguments[3]));
    tracker.Deactivate();
    std::printf("%.2f\n", nanoseconds);
    LuTestSuiteHeapTracker::UnhookAll();
    return 0;
}
