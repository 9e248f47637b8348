/// Limits that benchmarks are held to. A program with this in it ends with status 1 when one was missed.
#pragma once

#include <chrono>
#include <string>
#include <vector>

#include <benchmark/benchmark.h>

/// The seconds that a call takes.
template<typename F>
double MeasureSeconds(const F& call)
{
    const auto start = std::chrono::steady_clock::now();
    call();
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

/// The median under its name among the counters of a benchmark.
void ReportMedian(benchmark::State& state, const std::string& name, std::vector<double> values);

/// The same with the limit beside it. A median above it is the benchmark's failure.
void HoldMedian(benchmark::State& state, const std::string& name, std::vector<double> values, double limit);
