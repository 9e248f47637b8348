/// What reading an archive costs, at 1,000, 10,000 and 100,000 cases in 50 runs: from the reports, with the index when
/// nothing is new, and with one new run.
///
///     history_archive [CASES]...

#include <chrono>
#include <cstdio>
#include <cstdlib>

#include "benchmarks/support/samplereports.h"
#include "testing/lutestsuiterunner/history/archivefolder.h"
#include "testing/lutestsuiterunner/history/page.h"
#include "testing/lutestsuiterunner/history/stepstore.h"
#include "tests/support/syntheticruns.h"

namespace
{

using namespace Runner::History;

constexpr int c_Runs = 50;

void writeRun(const Benchmarks::CFolder& folder, std::uint32_t cases, int run)
{
    LuTestSuiteReport::SReportData data = Benchmarks::MakeReport(cases / 300 + 1, cases, 0);
    SyntheticRuns::CRandomDeviates deviates(static_cast<std::uint64_t>(run) + 1);
    data.DateBegin = LbFormat(L"2026-01-01 00:%02d:00", run);
    for (LuTestSuiteReport::SReportCase& testCase : data.Cases)
    {
        const bool isSlower = testCase.Id % 1000 == 0 && run >= c_Runs - 10;
        testCase.Time = static_cast<float>((0.001 + testCase.Time / 100.0) * (isSlower ? 1.2 : 1.0) *
                                           (1.0 + 0.03 * deviates.Normal()));
        if (deviates.Below(2000) != 0)
        {
            testCase.Result = LuTestSuiteRun::ECaseRunResult::Ok;
            testCase.Dumps.clear();
        }
    }
    LuTestSuiteReport::GenerateXMLReport(folder.GetPathOf(LbFormat(L"%03d.xml", run).c_str()), data);
}

/// As the command does it: read, analyse, make the page.
void measure(const char* name, const Benchmarks::CFolder& folder)
{
    using Clock = std::chrono::steady_clock;
    const auto getSeconds = [start = Clock::now()] {
        return std::chrono::duration<double>(Clock::now() - start).count();
    };
    const SArchiveContent content = ReadArchive(folder.GetPath());
    const double read = getSeconds();
    std::vector<const SRun*> runs;
    for (const SRun& run : content.runs)
    {
        runs.push_back(&run);
    }
    CTable table(content.names, runs);
    CStepStore store(folder.GetPath(), content.digest);
    SStepAnalysis steps = store.Get(L"", table, {});
    store.Save();
    std::vector<SAnalysis> analyses;
    analyses.push_back(Analyze(L"", std::move(table), {}, std::move(steps)));
    const double analyzed = getSeconds();
    const std::size_t size = MakePage(analyses, {}, 0).size();
    std::printf("  %-12s %8.2f s   read %7.2f s   analysis %7.2f s   page %6.2f s, %zu kB\n", name, getSeconds(), read,
                analyzed - read, getSeconds() - analyzed, size / 1000);
}

void measureArchive(std::uint32_t cases)
{
    const Benchmarks::CFolder folder;
    for (int run = 0; run + 1 < c_Runs; ++run)
    {
        writeRun(folder, cases, run);
    }
    std::printf("%u cases, %d runs\n", cases, c_Runs);
    measure("reports", folder);
    measure("nothing new", folder);
    writeRun(folder, cases, c_Runs - 1);
    measure("one new run", folder);
    measure("nothing new", folder);
}

} // namespace

int main(int count, const char* const* arguments)
{
    if (count < 2)
    {
        measureArchive(1000);
        measureArchive(10000);
        measureArchive(100000);
    }
    for (int index = 1; index < count; ++index)
    {
        measureArchive(static_cast<std::uint32_t>(std::strtoul(arguments[index], nullptr, 10)));
    }
}
