/// Measures the overview of an archive of 1,000 runs whose comparisons already exist, as they do on each night except
/// the first.
#include <benchmark/benchmark.h>

#include "benchmarks/support/limits.h"
#include "benchmarks/support/samplereports.h"

namespace
{

constexpr std::uint32_t c_Runs = 1000;
constexpr std::uint32_t c_Classes = 10;
constexpr std::uint32_t c_Cases = 200;
constexpr double c_LimitSeconds = 5;

void overviewOfReadyComparisons(benchmark::State& state)
{
    const Benchmarks::CFolder root;
    const std::wstring archive = LbPath::WithSeparator(root.GetPathOf(L"Archive"));
    LbFileSystem::AssertDirectory(archive);
    for (std::uint32_t run = 0; run < c_Runs; ++run)
    {
        const std::wstring path = LbFormat(L"%sReport.x64.release.[2026-%02d-%02d]-[%02d-00-00].xml", archive,
                                           run / 24 / 28 + 1, run / 24 % 28 + 1, run % 24);
        LuTestSuiteReport::GenerateXMLReport(path, Benchmarks::MakeReport(c_Classes, c_Cases, run));
    }
    const auto generate = [&root] {
        LuTestSuiteReport::GenerateReportDirectoryOverview(root.GetPath(), L"index", L"Archive", L"Report");
    };
    generate();
    std::vector<double> seconds;
    for (auto _ : state)
    {
        seconds.push_back(MeasureSeconds(generate));
    }
    HoldMedian(state, "seconds", seconds, c_LimitSeconds);
    state.counters["comparisons"] = static_cast<double>(LbFileSystem::GetFileNames(archive + L"Diff").size());
}
BENCHMARK(overviewOfReadyComparisons)->Unit(benchmark::kMillisecond)->UseRealTime();

} // namespace
