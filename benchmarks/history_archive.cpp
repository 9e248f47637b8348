/// Measures the cost of reading an archive, at 1,000, 10,000 and 100,000 cases in 50 runs: from the reports, with the
/// index when nothing is new, and with one new run.
///
/// Prints the time of each stage and the peak memory so far. Ends with status 1 if a limit is exceeded; the limits are
/// meant for up to 100,000 cases.
///
///     history_archive [CASES]...

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <ctime>

#include "benchmarks/support/peakmemory.h"
#include "benchmarks/support/samplereports.h"
#include "testing/lutestsuiterunner/history/analysis/stepstore.h"
#include "testing/lutestsuiterunner/history/archive/archivefolder.h"
#include "testing/lutestsuiterunner/history/reports/page.h"
#include "tests/support/syntheticruns.h"

namespace
{

using namespace Runner::History;

constexpr int c_Runs = 50;
constexpr double c_ReadingLimit = 15.0;            ///< seconds
constexpr double c_IndexLimit = 1.0;               ///< seconds, when nothing is new
constexpr std::uint64_t c_MemoryLimit = 2'000'000; ///< KiB
bool s_IsExceeded = false;

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

/// Does the same steps as the command: reads, analyses, makes the page.
void measure(const char* name, const Benchmarks::CFolder& folder, double limit)
{
    using Clock = std::chrono::steady_clock;
    const auto getSeconds = [start = Clock::now()] {
        return std::chrono::duration<double>(Clock::now() - start).count();
    };
    const std::clock_t begin = std::clock();
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
    const double all = getSeconds();
    const double processor = static_cast<double>(std::clock() - begin) / CLOCKS_PER_SEC;
    const std::uint64_t memory = Benchmarks::GetPeakMemory();
    const bool isExceeded = all > limit || memory > c_MemoryLimit;
    s_IsExceeded = s_IsExceeded || isExceeded;
    std::printf("  %-12s %7.2f s   read %6.2f s   analysis %6.2f s   page %5.2f s, %5zu kB   processor %6.2f s   "
                "%5llu MB%s\n",
                name, all, read, analyzed - read, all - analyzed, size / 1000, processor,
                static_cast<unsigned long long>(memory / 1000), isExceeded ? "   EXCEEDED" : "");
}

void measureArchive(std::uint32_t cases)
{
    const Benchmarks::CFolder folder;
    for (int run = 0; run + 1 < c_Runs; ++run)
    {
        writeRun(folder, cases, run);
    }
    std::printf("%u cases, %d runs\n", cases, c_Runs);
    measure("reports", folder, c_ReadingLimit);
    measure("nothing new", folder, c_IndexLimit);
    writeRun(folder, cases, c_Runs - 1);
    measure("one new run", folder, c_ReadingLimit);
    measure("nothing new", folder, c_IndexLimit);
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
    return s_IsExceeded ? 1 : 0;
}
