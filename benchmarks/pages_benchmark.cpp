/// Measures the page of a run with 100,000 cases, and the comparison of two such runs, including reading both reports.
#include <benchmark/benchmark.h>

#include "benchmarks/support/samplereports.h"

namespace
{

constexpr std::uint32_t c_CaseCount = 100000;
constexpr std::uint32_t c_ClassCount = 200;

void BM_HtmlReport(benchmark::State& state)
{
    const Benchmarks::CFolder folder;
    const std::wstring path = folder.GetPathOf(L"run.html");
    const LuTestSuiteReport::SReportData data = Benchmarks::MakeReport(c_ClassCount, c_CaseCount, 0);
    for (auto _ : state)
    {
        LuTestSuiteReport::GenerateHTMLReport(path, data, false, false, false, false);
    }
    state.counters["MB"] = static_cast<double>(LbFileSystem::ReadFile8Bit(path).size()) / 1e6;
}
BENCHMARK(BM_HtmlReport)->Unit(benchmark::kMillisecond)->UseRealTime();

void BM_DiffWithBothReads(benchmark::State& state)
{
    const Benchmarks::CFolder folder;
    const std::wstring pathA = folder.GetPathOf(L"a.xml");
    const std::wstring pathB = folder.GetPathOf(L"b.xml");
    LuTestSuiteReport::GenerateXMLReport(pathA, Benchmarks::MakeReport(c_ClassCount, c_CaseCount, 0));
    LuTestSuiteReport::GenerateXMLReport(pathB, Benchmarks::MakeReport(c_ClassCount, c_CaseCount, 1));
    LuTestSuiteSetup setup;
    setup.diffInputs = {pathA, pathB};
    for (auto _ : state)
    {
        LuTestSuiteUtils::GenerateReportDiff(setup);
    }
    const std::string page = LbFileSystem::ReadFile8Bit(folder.GetPathOf(L"Diff-[a][b].html"));
    if (page.find("<td>Improved</td>") == std::string::npos)
    {
        state.SkipWithError("the reports were not compared");
    }
    state.counters["MB"] = static_cast<double>(page.size()) / 1e6;
}
BENCHMARK(BM_DiffWithBothReads)->Unit(benchmark::kMillisecond)->UseRealTime();

} // namespace
