/// The tree and the lists of 100,000 cases; duplicates among 400 files of 1 MiB, a quarter of them identical, beside
/// reading them and beside the programs fdupes and rmlint where they are installed. Warm cache: each measurement
/// repeats.

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include <benchmark/benchmark.h>

#include "base/lbencoding.h"
#include "base/lbpath.h"
#include "base/lbuniqueid.h"
#include "base/lustream.h"
#include "base/luunittest.h"
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
    for ([[maybe_unused]] const auto iteration : state)
    {
        LuTestSuiteTree tree;
        tree.Build(tests);
        benchmark::DoNotOptimize(tree.GetCaseCount());
    }
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

/// With the discovery, whose time stands beside it.
template<auto Operation>
void listCases(benchmark::State& state)
{
    const CManyCases& folder = getManyCases();
    LuTestSuiteEnvironment& environment = getEnvironment();
    const LuTestSuiteSetup setup = folder.GetSetup();
    for ([[maybe_unused]] const auto iteration : state)
    {
        Operation(setup, environment);
    }
}

void discover(const LuTestSuiteSetup& setup, LuTestSuiteEnvironment& /*environment*/)
{
    LuTestSuiteUtils::ScanDirectoryForUnitTests(setup.dataDir, true);
}

BENCHMARK(listCases<discover>)->Unit(benchmark::kMillisecond)->Name("listCases/discoveryAlone");
BENCHMARK(listCases<LuTestSuiteUtils::RunQueryMode>)->Unit(benchmark::kMillisecond)->Name("listCases/query");
BENCHMARK(listCases<LuTestSuiteUtils::ListDisabledTestCases>)
    ->Unit(benchmark::kMillisecond)
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
void readFiles(benchmark::State& state)
{
    const CFolder folder;
    const std::filesystem::path directory = folder.AddClass("");
    writeFiles(directory);
    std::vector<char> buffer(c_FileSize);
    for ([[maybe_unused]] const auto iteration : state)
    {
        for (int file = 0; file < c_Files; ++file)
        {
            LuStreamReadBinaryFile stream((directory / std::to_string(file)).wstring());
            benchmark::DoNotOptimize(stream.Read(buffer.data(), buffer.size()));
        }
    }
}
BENCHMARK(readFiles)->Unit(benchmark::kMillisecond)->Name("duplicates/readingAlone");

void listDuplicates(benchmark::State& state)
{
    const CFolder folder;
    writeFiles(folder.AddClass(""));
    LuTestSuiteEnvironment& environment = getEnvironment();
    LuTestSuiteSetup setup = folder.GetSetup();
    setup.duplicateMode = eDM_List;
    for ([[maybe_unused]] const auto iteration : state)
    {
        LuTestSuiteUtils::RunDuplicateDetection(setup, environment);
    }
}
BENCHMARK(listDuplicates)->Unit(benchmark::kMillisecond)->Name("duplicates/list");

void runProgram(benchmark::State& state, const std::string& command)
{
    const CFolder folder;
    writeFiles(folder.AddClass(""));
    for ([[maybe_unused]] const auto iteration : state)
    {
        if (std::system((command + " \"" + folder.GetPath().string() + "\" >/dev/null 2>&1").c_str()) != 0)
        {
            state.SkipWithError("the program is not there, or failed");
            break;
        }
    }
}
BENCHMARK_CAPTURE(runProgram, fdupes, "fdupes -r")
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime()
    ->Name("duplicates/fdupes");
BENCHMARK_CAPTURE(runProgram, rmlint, "rmlint -T df -o summary:stdout")
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime()
    ->Name("duplicates/rmlint");

} // namespace
