/// The overview of an archive of 1,000 runs whose comparisons are there already, as after every night but the first.
#include <benchmark/benchmark.h>

#include "base/lbfilesystem.h"
#include "base/lbpath.h"
#include "base/lbuniqueid.h"
#include "benchmarks/support/limits.h"
#include "testing/lutestsuite/lutestsuitereport.h"

namespace
{

constexpr std::uint32_t c_Runs = 1000;
constexpr std::uint32_t c_Classes = 10;
constexpr std::uint32_t c_Cases = 200;
constexpr double c_LimitSeconds = 5;

/// Every tenth case failed, in each run another one.
LuTestSuiteReport::SReportData makeReport(std::uint32_t run)
{
    LuTestSuiteReport::SReportData data;
    data.BuildConfiguration = L"Release x64";
    data.ClassesTotal = c_Classes;
    data.CasesTotal = c_Cases;
    data.Classes.resize(c_Classes);
    for (std::uint32_t index = 0; index < c_Classes; ++index)
    {
        data.Classes[index].Name = LbFormat(L"CTestClass%d", index);
    }
    data.Cases.resize(c_Cases);
    for (std::uint32_t index = 0; index < c_Cases; ++index)
    {
        LuTestSuiteReport::SReportCase& testCase = data.Cases[index];
        testCase.Id = index;
        testCase.ClassName = data.Classes[index % c_Classes].Name;
        testCase.CaseName = LbFormat(L"data set %d.txt", index);
        if ((index + run) % 10 == 0)
        {
            testCase.Result = LuTestSuiteRun::ECaseRunResult::Error;
            testCase.Dumps = {{true, L"value 17 in place of 18"}};
        }
    }
    return data;
}

void overviewOfReadyComparisons(benchmark::State& state)
{
    const std::wstring root =
        LbFileSystem::GetDirectory(LbFileSystem::eDK_Temporary) + LbUniqueId::Generate() + LbPath::c_Separator;
    const std::wstring archive = root + L"Archive" + LbPath::c_Separator;
    LbFileSystem::AssertDirectory(root);
    LbFileSystem::AssertDirectory(archive);
    for (std::uint32_t run = 0; run < c_Runs; ++run)
    {
        const std::wstring path = LbFormat(L"%sReport.x64.release.[2026-%02d-%02d]-[%02d-00-00].xml", archive,
                                           run / 24 / 28 + 1, run / 24 % 28 + 1, run % 24);
        LuTestSuiteReport::GenerateXMLReport(path, makeReport(run));
    }
    const auto generate = [&root] {
        LuTestSuiteReport::GenerateReportDirectoryOverview(root, L"index", L"Archive", L"Report");
    };
    generate();
    std::vector<double> seconds;
    for (auto _ : state)
    {
        seconds.push_back(MeasureSeconds(generate));
    }
    HoldMedian(state, "seconds", seconds, c_LimitSeconds);
    state.counters["comparisons"] = static_cast<double>(LbFileSystem::GetFileNames(archive + L"Diff").size());
    LbFileSystem::RemoveTree(root);
}
BENCHMARK(overviewOfReadyComparisons)->Unit(benchmark::kMillisecond)->UseRealTime();

} // namespace
