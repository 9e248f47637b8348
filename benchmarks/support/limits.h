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

/// As ReportMedian, with a limit. If the median exceeds it, the benchmark is marked and the program fails.
void HoldMedian(benchmark::State& state, const std::string& name, std::vector<double> values, double limit);

/// The most reliable of several times, because other work of the machine can only add to a time. 0 without values.
double GetLeast(const std::vector<double>& values);

/// HoldMedian for the least value instead of the median.
void HoldLeast(benchmark::State& state, const std::string& name, const std::vector<double>& values, double limit);
