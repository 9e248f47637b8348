/// The tree and the lists of 100,000 cases; duplicates among 400 files of 1 MiB, a quarter of them identical, beside
/// reading them and beside the programs fdupes and rmlint where they are installed. Warm cache: each measurement
/// repeats. What is compared is measured in turn, since times of different moments differ on a machine that has other
/// work.

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <string>
#include <vector>

#include <benchmark/benchmark.h>

#include "base/lbencoding.h"
#include "base/lbpath.h"
#include "base/lbuniqueid.h"
#include "base/lustream.h"
#include "base/luunittest.h"
#include "benchmarks/support/limits.h"
#include "testing/lutestsuite/lutestsuiteenvironment.h"
#include "testing/lutestsuite/lutestsuiteout.h"
#include "testing/lutestsuite/lutestsuitesetup.h"
#include "testing/lutestsuite/lutestsuitetree.h"
#include "testing/lutestsuite/lutestsuiteutils.h"

namespace
{

constexpr int c_Classes = 100;
constexpr int c_CasesOfClass = 1000;
constexpr int c_Files = 400;
constexpr std::size_t c_FileSize = 1 << 20;

constexpr double c_TreeLimitSeconds = 0.5;
constexpr double c_ListLimitSeconds = 2;
constexpr double c_TimesReadingLimit = 1.5;

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

/// Each of its folders' files is a case.
class CAuxiliaryFiles : public LuUnitTest
{
    LB_RTTI(CAuxiliaryFiles)

    void InitSubtests() override
    {
        AddFileSubtests(L"*", [](const std::wstring& /*path*/) {});
    }
};
LB_RTTI_CLASS(CAuxiliaryFiles, LuUnitTest)

/// A data directory for the time of one measurement.
class CFolder : public INonCopyable
{
public:
    CFolder() : m_path(std::filesystem::temp_directory_path() / LbEncoding::ToNative(LbUniqueId::Generate())) {}
    ~CFolder() { std::filesystem::remove_all(m_path); }

    std::filesystem::path AddClass(const std::string& group) const
    {
        const std::filesystem::path folder = m_path / group / "CAuxiliaryFiles";
        std::filesystem::create_directories(folder);
        return folder;
    }

    const std::filesystem::path& GetPath() const { return m_path; }

    LuTestSuiteSetup GetSetup() const
    {
        LuTestSuiteSetup setup;
        setup.dataDir = LbPath::WithSeparator(m_path.wstring());
        return setup;
    }

private:
    std::filesystem::path m_path;
};

LuTestSuiteEnvironment& getEnvironment()
{
    static LuTestSuiteEnvironment s_Environment;
    LuTestSuiteOut::SetConsoleOut(false);
    return s_Environment;
}

/// Made once: writing 100,000 files takes longer than all that is measured.
class CManyCases : public CFolder
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

/// What the mode takes beyond the discovery that is a part of it.
template<auto Operation>
void listCases(benchmark::State& state)
{
    const CManyCases& folder = getManyCases();
    LuTestSuiteEnvironment& environment = getEnvironment();
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

/// The first quarter has one content, all others one of their own.
void writeFiles(const std::filesystem::path& directory)
{
    for (int file = 0; file < c_Files; ++file)
    {
        std::string content(c_FileSize, static_cast<char>('a' + file % 7));
        content.replace(0, 8, std::to_string(10'000'000 + (file < c_Files / 4 ? 0 : file)));
        std::ofstream(directory / std::to_string(file), std::ios::binary) << content;
    }
}

/// One buffer for all, as fast as reading can be.
void readFiles(const std::filesystem::path& directory)
{
    std::vector<char> buffer(c_FileSize);
    for (int file = 0; file < c_Files; ++file)
    {
        LuStreamReadBinaryFile stream((directory / std::to_string(file)).wstring());
        benchmark::DoNotOptimize(stream.Read(buffer.data(), buffer.size()));
    }
}

/// How many times as long as reading alone a search takes; each search says whether it went well.
std::vector<double> compareWithReading(benchmark::State& state, const std::function<bool(const CFolder&)>& search)
{
    const CFolder folder;
    const std::filesystem::path directory = folder.AddClass("");
    writeFiles(directory);
    std::vector<double> readings;
    std::vector<double> ratios;
    for ([[maybe_unused]] const auto iteration : state)
    {
        bool isDone = false;
        readings.push_back(MeasureSeconds([&] { readFiles(directory); }));
        const double seconds = MeasureSeconds([&] { isDone = search(folder); });
        if (!isDone)
        {
            state.SkipWithError("the program is not there, or failed");
            break;
        }
        ratios.push_back(seconds / readings.back());
        state.SetIterationTime(seconds);
    }
    ReportMedian(state, "reading", readings);
    return ratios;
}

void listDuplicates(benchmark::State& state)
{
    LuTestSuiteEnvironment& environment = getEnvironment();
    const std::vector<double> ratios = compareWithReading(state, [&environment](const CFolder& folder) {
        LuTestSuiteSetup setup = folder.GetSetup();
        setup.duplicateMode = eDM_List;
        LuTestSuiteUtils::RunDuplicateDetection(setup, environment);
        return true;
    });
    HoldMedian(state, "timesReading", ratios, c_TimesReadingLimit);
}
BENCHMARK(listDuplicates)->Unit(benchmark::kMillisecond)->UseManualTime()->Iterations(21)->Name("duplicates/list");

void runProgram(benchmark::State& state, const std::string& command)
{
    const std::vector<double> ratios = compareWithReading(state, [&command](const CFolder& folder) {
        return std::system((command + " \"" + folder.GetPath().string() + "\" >/dev/null 2>&1").c_str()) == 0;
    });
    ReportMedian(state, "timesReading", ratios);
}
BENCHMARK_CAPTURE(runProgram, fdupes, "fdupes -r")
    ->Unit(benchmark::kMillisecond)
    ->UseManualTime()
    ->Iterations(11)
    ->Name("duplicates/fdupes");
BENCHMARK_CAPTURE(runProgram, rmlint, "rmlint -T df -o summary:stdout")
    ->Unit(benchmark::kMillisecond)
    ->UseManualTime()
    ->Iterations(11)
    ->Name("duplicates/rmlint");

} // namespace
