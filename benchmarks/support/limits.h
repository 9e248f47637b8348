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

/// The same with its limit. The benchmark fails if the median exceeds it.
void HoldMedian(benchmark::State& state, const std::string& name, std::vector<double> values, double limit);
