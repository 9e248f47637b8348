/// Empty tests for programs and modules of other frameworks.
#pragma once

#include <cstdlib>
#include <string>

namespace Benchmarks
{

constexpr int c_TestsPerSuite = 50;

/// The number of tests that the environment variable demands; 5,000 without it.
inline int GetTestCount()
{
    const char* const count = std::getenv("LUTESTSUITE_BENCHMARK_TESTS");
    return count == nullptr ? 5000 : std::atoi(count);
}

} // namespace Benchmarks
