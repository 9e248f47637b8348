/// Measures the cost that a run adds to each case: 5,000 empty cases in 100 classes, run by the library and called
/// directly. Measures the cost that an observer of the run adds, with 1,000, 10,000 and 100,000 case runs; the limit is
/// 1 us a case.
///
/// The library prints a line per case, so redirect standard output to a file. The results go to standard error with
///     run_overhead_benchmark --benchmark_out=/dev/stderr > cases.txt
#include <algorithm>

#include <benchmark/benchmark.h>

#include "base/lustream.h"
#include "benchmarks/trivialclasses.h"
#include "testing/lutestsuite/lutestsuiteenvironment.h"
#include "testing/lutestsuite/lutestsuiterunevents.h"
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

void setCounters(benchmark::State& state, std::size_t caseCount = c_CaseCount)
{
    state.counters["time_per_case"] = benchmark::Counter(
        static_cast<double>(caseCount), benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
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

/// Receives each event and does nothing else.
class CEmptyObserver : public LuTestSuiteRun::IRunObserver
{
public:
    void OnCaseStarted(const LuTestSuiteRun::SCaseStarted& started) override
    {
        benchmark::DoNotOptimize(started.index);
    }
    void OnCaseFinished(const LuTestSuiteRun::SCaseFinished& finished) override
    {
        benchmark::DoNotOptimize(finished.info.result);
    }
};

/// Makes a setup with 1,000 case runs or a multiple of 5,000.
LuTestSuiteSetup makeSetup(std::size_t caseCount)
{
    LuTestSuiteSetup setup;
    setup.unitTests = makeUnitTests();
    setup.unitTests.resize(std::min(c_CaseCount, caseCount) / Benchmarks::c_CasesPerClass);
    setup.params.repetitions = static_cast<std::uint32_t>(std::max(caseCount, c_CaseCount) / c_CaseCount);
    return setup;
}

void BM_RunUnobserved(benchmark::State& state)
{
    LuTestSuiteEnvironment environment;
    const auto caseCount = static_cast<std::size_t>(state.range(0));
    const LuTestSuiteSetup setup = makeSetup(caseCount);
    for (auto _ : state)
    {
        benchmark::DoNotOptimize(LuTestSuiteRun::Run(setup, environment));
    }
    setCounters(state, caseCount);
}
BENCHMARK(BM_RunUnobserved)->RangeMultiplier(10)->Range(1000, 100'000)->Unit(benchmark::kMillisecond);

void BM_RunObserved(benchmark::State& state)
{
    LuTestSuiteEnvironment environment;
    CEmptyObserver observer;
    const auto caseCount = static_cast<std::size_t>(state.range(0));
    const LuTestSuiteSetup setup = makeSetup(caseCount);
    for (auto _ : state)
    {
        benchmark::DoNotOptimize(LuTestSuiteRun::Run(setup, environment, observer));
    }
    setCounters(state, caseCount);
}
BENCHMARK(BM_RunObserved)->RangeMultiplier(10)->Range(1000, 100'000)->Unit(benchmark::kMillisecond);

} // namespace
