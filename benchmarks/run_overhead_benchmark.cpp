/// The cost that a run adds to each case: 5,000 empty cases in 100 classes, run by the library and called directly.
///
/// The library prints a line per case, so redirect standard output to a file. The results go to standard error with
///     run_overhead_benchmark --benchmark_out=/dev/stderr > cases.txt
#include <benchmark/benchmark.h>

#include "base/lustream.h"
#include "benchmarks/trivialclasses.h"
#include "testing/lutestsuite/lutestsuiteenvironment.h"
#include "testing/lutestsuite/lutestsuitesetup.h"

namespace
{

constexpr std::size_t c_CaseCount = Benchmarks::c_ClassCount * Benchmarks::c_CasesPerClass;

const auto c_Records = Benchmarks::GetRecords(std::make_index_sequence<Benchmarks::c_ClassCount>());

std::vector<LuTestSuite::SUnitTest> makeUnitTests()
{
    std::vector<LuTestSuite::SUnitTest> unitTests(c_Records.size());
    for (std::size_t index = 0; index < unitTests.size(); ++index)
    {
        unitTests[index].className = c_Records[index]->GetName();
        unitTests[index].dataDirectory = L"data/";
        for (std::size_t testCase = 0; testCase < Benchmarks::c_CasesPerClass; ++testCase)
        {
            unitTests[index].cases.push_back({{}, Benchmarks::GetCaseName(testCase), {}});
        }
    }
    return unitTests;
}

void setCounters(benchmark::State& state)
{
    state.counters["time_per_case"] = benchmark::Counter(
        static_cast<double>(c_CaseCount), benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}

void callDirectly(const LuTestSuite::SUnitTest& unitTest, const std::wstring& caseName)
{
    LuStreamWriteTextMemory messages;
    const std::unique_ptr<IObject> object = LbRTTI::getCreate(unitTest.className)();
    auto& test = dynamic_cast<LuUnitTest&>(*object);
    test.SetMessageStream(&messages);
    test.SetDataDirectory(unitTest.dataDirectory);
    test.InitSubtests();
    test.PrepareSubtest();
    for (std::uint32_t index = 0; index < test.GetSubtestCount(); ++index)
    {
        if (test.GetSubtestName(index) == caseName)
        {
            benchmark::DoNotOptimize(test.RunUnitTest(index));
            return;
        }
    }
}

void BM_DirectCalls(benchmark::State& state)
{
    const std::vector<LuTestSuite::SUnitTest> unitTests = makeUnitTests();
    for (auto _ : state)
    {
        for (const LuTestSuite::SUnitTest& unitTest : unitTests)
        {
            for (const LuTestSuite::STestCase& testCase : unitTest.cases)
            {
                callDirectly(unitTest, testCase.name);
            }
        }
    }
    setCounters(state);
}
BENCHMARK(BM_DirectCalls)->Unit(benchmark::kMillisecond);

void BM_Run(benchmark::State& state)
{
    LuTestSuiteEnvironment environment;
    LuTestSuiteSetup setup;
    setup.unitTests = makeUnitTests();
    for (auto _ : state)
    {
        const LuTestSuiteRun::SRunResult result = LuTestSuiteRun::Run(setup, environment);
        if (result.stats.total.executed != c_CaseCount || result.stats.unitTestsPassed != Benchmarks::c_ClassCount)
        {
            state.SkipWithError("not every case passed");
        }
    }
    setCounters(state);
}
BENCHMARK(BM_Run)->Unit(benchmark::kMillisecond);

} // namespace
