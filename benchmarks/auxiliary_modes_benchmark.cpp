/// Measures building the tree of 100,000 cases, and listing them with the query mode and the list of disabled cases.

#include <fstream>
#include <string>
#include <vector>

#include <benchmark/benchmark.h>

#include "base/lbformat.h"
#include "base/lbpath.h"
#include "benchmarks/support/datafolder.h"
#include "benchmarks/support/limits.h"
#include "testing/lutestsuite/lutestsuitetree.h"
#include "testing/lutestsuite/lutestsuiteutils.h"

namespace
{

constexpr int c_Classes = 100;
constexpr int c_CasesOfClass = 1000;

constexpr double c_TreeLimitSeconds = 0.5;
constexpr double c_ListLimitSeconds = 2;

std::vector<LuTestSuite::SUnitTest> makeTests()
{
    std::vector<LuTestSuite::SUnitTest> tests;
    for (int index = 0; index < c_Classes; ++index)
    {
        LuTestSuite::SUnitTest& test = tests.emplace_back();
        test.className = LbFormat(L"CClass%d", index);
        test.dataDirectory = LbPath::ToNative(LbFormat(L"/srv/product/data/group%d/CClass%d/", index % 10, index));
        for (int testCase = 0; testCase < c_CasesOfClass; ++testCase)
        {
            test.cases.push_back({{}, LbFormat(L"data set %d.txt", testCase * 7919 % c_CasesOfClass), {}});
        }
    }
    return tests;
}

void buildTree(benchmark::State& state)
{
    const std::vector<LuTestSuite::SUnitTest> tests = makeTests();
    std::vector<double> seconds;
    for ([[maybe_unused]] const auto iteration : state)
    {
        LuTestSuiteTree tree;
        seconds.push_back(MeasureSeconds([&] { tree.Build(tests); }));
        benchmark::DoNotOptimize(tree.GetCaseCount());
    }
    HoldMedian(state, "seconds", seconds, c_TreeLimitSeconds);
}
BENCHMARK(buildTree)->Unit(benchmark::kMillisecond);

/// A data directory of 100,000 files. Created once, because writing the files takes longer than the measurements.
class CManyCases : public CDataFolder
{
public:
    CManyCases();
};

CManyCases::CManyCases()
{
    for (int index = 0; index < c_Classes; ++index)
    {
        const std::filesystem::path directory = AddClass(std::to_string(index));
        for (int file = 0; file < c_CasesOfClass; ++file)
        {
            std::ofstream(directory / std::to_string(file));
        }
    }
}

const CManyCases& getManyCases()
{
    static const CManyCases s_ManyCases;
    return s_ManyCases;
}

/// Measures the time of a mode without the discovery that it includes.
template<auto Operation>
void listCases(benchmark::State& state)
{
    const CManyCases& folder = getManyCases();
    LuTestSuiteEnvironment& environment = GetBenchmarkEnvironment();
    const LuTestSuiteSetup setup = folder.GetSetup();
    std::vector<double> discoveries;
    std::vector<double> lists;
    for ([[maybe_unused]] const auto iteration : state)
    {
        discoveries.push_back(
            MeasureSeconds([&] { LuTestSuiteUtils::ScanDirectoryForUnitTests(setup.dataDir, true); }));
        const double whole = MeasureSeconds([&] { Operation(setup, environment); });
        lists.push_back(std::max(whole - discoveries.back(), 0.0));
        state.SetIterationTime(lists.back());
    }
    ReportMedian(state, "discovery", discoveries);
    HoldMedian(state, "seconds", lists, c_ListLimitSeconds);
}
BENCHMARK(listCases<LuTestSuiteUtils::RunQueryMode>)
    ->Unit(benchmark::kMillisecond)
    ->UseManualTime()
    ->Iterations(5)
    ->Name("listCases/query");
BENCHMARK(listCases<LuTestSuiteUtils::ListDisabledTestCases>)
    ->Unit(benchmark::kMillisecond)
    ->UseManualTime()
    ->Iterations(5)
    ->Name("listCases/listDisabled");

} // namespace
