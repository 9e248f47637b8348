/// Limits for benchmarks. A program that links this file exits with status 1 if a limit was exceeded.
#pragma once

#include <chrono>
#include <string>
#include <vector>

#include <benchmark/benchmark.h>

/// The duration of a call in seconds.
template<typename F>
double MeasureSeconds(const F& call)
{
    const auto start = std::chrono::steady_clock::now();
    call();
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

/// Adds the median as a counter with this name to a benchmark.
void ReportMedian(benchmark::State& state, const std::string& name, std::vector<double> values);

/// Does the same as ReportMedian, and checks a limit. If the median exceeds it, the benchmark is marked and the program
/// fails.
void HoldMedian(benchmark::State& state, const std::string& name, std::vector<double> values, double limit);

/// The least of several times; 0 without values. The least time is the most reliable one, because other work of the
/// machine can only add to a time.
double GetLeast(const std::vector<double>& values);

/// Does the same as HoldMedian with the least value instead of the median.
void HoldLeast(benchmark::State& state, const std::string& name, const std::vector<double>& values, double limit);
