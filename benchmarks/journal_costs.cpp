/// Measures the cost of a run's journal: writing a case, reading a run again, merging its shards, for 1,000, 10,000 and
/// 100,000 cases. The results go to standard error. Ends with status 1 if a limit is exceeded.
///
/// journal_costs          measures all three numbers of cases
/// journal_costs COUNT    reads a journal of COUNT records and measures the peak memory of this process, which has a
///                        limit; the time has a limit only if COUNT is at least 10000000

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "base/lbexception.h"
#include "base/lbfilesystem.h"
#include "base/lbpath.h"
#include "base/lbuniqueid.h"
#include "benchmarks/support/peakmemory.h"
#include "testing/lutestsuiterunner/commands/commands.h"
#include "testing/lutestsuiterunner/journal/folder.h"
#include "testing/lutestsuiterunner/journal/reader.h"
#include "testing/lutestsuiterunner/reports/reports.h"

namespace
{

constexpr double c_WriteLimit = 5e-6;
constexpr double c_CommandLimit = 2.0;
constexpr double c_ReadLimit = 20.0;
constexpr std::uint64_t c_MemoryLimit = 64 * 1024;
constexpr std::uint64_t c_ReadLimitCount = 10'000'000;
constexpr std::uint32_t c_Shards = 4;

bool s_isMissed = false;

template<typename F>
double measure(const F& work)
{
    const auto start = std::chrono::steady_clock::now();
    work();
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

void print(const char* what, std::uint64_t count, double value, double limit, const char* unit)
{
    const bool isMissed = value > limit;
    s_isMissed = s_isMissed || isMissed;
    std::fprintf(stderr, "%-24s %9llu  %10.3f %s%s\n", what, static_cast<unsigned long long>(count), value, unit,
                 isMissed ? "  LIMIT MISSED" : "");
}

Runner::SPlan makePlan(std::uint32_t count)
{
    constexpr std::uint32_t c_CasesOfUnitTest = 500;
    Runner::SPlan plan;
    plan.runId = Runner::MakeRunId();
    plan.dataDirectory = LbPath::ToNative(L"/daten/");
    for (std::uint32_t index = 0; index < count; ++index)
    {
        if (index % c_CasesOfUnitTest == 0)
        {
            LuTestSuite::SUnitTest& unitTest = plan.unitTests.emplace_back();
            unitTest.className = L"CClass" + std::to_wstring(index);
            unitTest.dataDirectory = plan.dataDirectory + LbPath::ToNative(unitTest.className + L"/");
        }
        LuTestSuite::STestCase& testCase = plan.unitTests.back().cases.emplace_back();
        testCase.name = L"data set " + std::to_wstring(index) + L".txt";
        testCase.dataSetFile = plan.unitTests.back().dataDirectory + testCase.name;
    }
    plan.cases = Runner::PlanCases(plan.unitTests, 1);
    return plan;
}

void writeCase(Runner::CJournalWriter& writer, std::uint32_t index)
{
    constexpr std::uint32_t c_FailedEach = 100;
    writer.Write(Runner::SCaseStarted{index, 1, Runner::EAttemptKind::First, 3, 12345, 0});
    Runner::SCaseEnded ended;
    ended.caseIndex = index;
    ended.info.result = LuTestSuiteRun::ECaseRunResult::Ok;
    ended.info.time = 123'456;
    ended.info.threadIndex = 3;
    ended.processId = 12345;
    if (index % c_FailedEach == 0)
    {
        ended.info.result = LuTestSuiteRun::ECaseRunResult::Different;
        ended.info.messages = L"ERROR: Die Ausgabe weicht ab\nINFO:  Zeile 17\n";
    }
    writer.Write(ended);
}

double runShard(const std::wstring& folder, Runner::SPlan plan, std::uint32_t number, std::uint32_t shards)
{
    plan.shard = {number, shards};
    for (std::uint32_t index = 0; index < plan.cases.size(); ++index)
    {
        plan.cases[index].isInShard = index % shards == number - 1;
    }
    Runner::CRunFolder run(folder);
    const auto writer = run.BeginRun(plan);
    const double seconds = measure([&] {
        for (std::uint32_t index = number - 1; index < plan.cases.size(); index += shards)
        {
            writeCase(*writer, index);
        }
    });
    writer->Write(Runner::SRunFinished{});
    writer->Close();
    return seconds;
}

void measureCommands(const std::wstring& folder, std::uint32_t count)
{
    const Runner::SPlan plan = makePlan(count);
    const double written = runShard(folder + L"ganz", plan, 1, 1);
    print("write, us a case", count, written / count * 1e6, c_WriteLimit * 1e6, "us");

    const std::wstring whole = folder + LbPath::ToNative(L"ganz/");
    std::unique_ptr<Runner::CRunState> state;
    const double read = measure([&] { state = Runner::LoadRun(whole); });
    const double reported = measure([&] { Runner::WriteReports(whole, *state); });
    print("read again", count, read, c_CommandLimit, "s");
    print("reports", count, reported, c_CommandLimit, "s");
    // A resumed run reads its journals twice: before its cases, and before it writes the reports.
    print("resume, without cases", count, 2 * read + reported, c_CommandLimit, "s");

    Runner::SMergeOptions options;
    options.out = folder + L"zusammen";
    options.force = true;
    for (std::uint32_t number = 1; number <= c_Shards; ++number)
    {
        options.directories.push_back(folder + std::to_wstring(number));
        runShard(options.directories.back(), plan, number, c_Shards);
    }
    print("merge with reports", count, measure([&] { Runner::Execute(options); }), c_CommandLimit, "s");
}

void measureReading(const std::wstring& folder, std::uint64_t count)
{
    {
        Runner::CJournalWriter writer(folder, {"plan", count, 1, {}, 1, {}, {}});
        for (std::uint32_t index = 0; index < count / 2; ++index)
        {
            writeCase(writer, index);
        }
    }
    const std::uint64_t before = Benchmarks::GetPeakMemory();
    std::uint64_t records = 0;
    const double seconds = measure([&] {
        Runner::CJournalReader reader(folder, 1);
        for (Runner::Record record; reader.Next(record);)
        {
            ++records;
        }
    });
    const bool hasLimit = count >= c_ReadLimitCount;
    print("read records", records, seconds, hasLimit ? c_ReadLimit : seconds, "s");
    print("  peak, all", records, static_cast<double>(Benchmarks::GetPeakMemory()), static_cast<double>(c_MemoryLimit),
          "KiB");
    print("  peak, of reading", records, static_cast<double>(Benchmarks::GetPeakMemory() - before),
          static_cast<double>(c_MemoryLimit), "KiB");
}

} // namespace

int main(int argumentCount, char** arguments)
{
    // Discards standard output, because commands print the failed and slow cases of a run.
    if (std::freopen("/dev/null", "w", stdout) == nullptr)
    {
        return EXIT_FAILURE;
    }
    const std::wstring folder = LbFileSystem::GetDirectory(LbFileSystem::eDK_Temporary) + L"LuTestSuiteJournal-" +
                                LbPath::WithSeparator(LbUniqueId::Generate());
    LbFileSystem::AssertDirectory(folder);
    try
    {
        if (argumentCount > 1)
        {
            measureReading(folder, std::strtoull(arguments[1], nullptr, 10));
        }
        else
        {
            for (const std::uint32_t count : {1'000U, 10'000U, 100'000U})
            {
                measureCommands(folder, count);
            }
        }
    }
    catch (const LbException& exception)
    {
        std::fprintf(stderr, "%s\n", exception.what());
        s_isMissed = true;
    }
    LbFileSystem::RemoveTree(folder);
    return s_isMissed ? EXIT_FAILURE : EXIT_SUCCESS;
}
