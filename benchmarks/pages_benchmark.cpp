/// The page of a run of 100,000 cases, and the comparison of two such runs with both reports read first.
#include <benchmark/benchmark.h>

#include "base/lbfilesystem.h"
#include "testing/lutestsuite/lutestsuitereport.h"

namespace
{

using LuTestSuiteRun::ECaseRunResult;
using SData = LuTestSuiteReport::SReportData;

constexpr std::uint32_t c_CaseCount = 100000;
constexpr std::uint32_t c_ClassCount = 200;

/// Every tenth case failed with messages, by `shift` another one.
SData makeReport(std::uint32_t shift)
{
    SData data;
    data.ClassesTotal = c_ClassCount;
    data.CasesTotal = c_CaseCount;
    data.Classes.resize(c_ClassCount);
    for (std::uint32_t index = 0; index < c_ClassCount; ++index)
    {
        data.Classes[index].Name = LbFormat(L"CTestClass%d", index);
    }
    data.Cases.resize(c_CaseCount);
    for (std::uint32_t index = 0; index < c_CaseCount; ++index)
    {
        LuTestSuiteReport::SReportCase& testCase = data.Cases[index];
        testCase.Id = index;
        testCase.ClassName = data.Classes[index % c_ClassCount].Name;
        testCase.CaseName = LbFormat(L"data set %d with a name of usual length.txt", index);
        testCase.Time = static_cast<float>(index + shift) / 1000.0F;
        testCase.Memory = std::uint64_t{index} * 4096;
        if ((index + shift) % 10 == 0)
        {
            testCase.Result = ECaseRunResult::Error;
            testCase.Dumps = {{true, L"value 17 in place of 18"}, {true, L"value 4 &lt; 5"}, {false, L"..."}};
        }
    }
    return data;
}

/// Files in the folder for temporary ones, removed at the end.
class CFiles
{
public:
    ~CFiles() { LbFileSystem::RemoveTree(m_folder); }

    std::wstring GetPath(const wchar_t* name) const
    {
        LbFileSystem::AssertDirectory(m_folder);
        return m_folder + name;
    }

private:
    std::wstring m_folder = LbFileSystem::GetDirectory(LbFileSystem::eDK_Temporary) + L"lutestsuite-pages-benchmark/";
};

void BM_HtmlReport(benchmark::State& state)
{
    const CFiles files;
    const std::wstring path = files.GetPath(L"run.html");
    const SData data = makeReport(0);
    for (auto _ : state)
    {
        LuTestSuiteReport::GenerateHTMLReport(path, data, false, false, false, false);
    }
    state.counters["MB"] = static_cast<double>(LbFileSystem::ReadFile8Bit(path).size()) / 1e6;
}
BENCHMARK(BM_HtmlReport)->Unit(benchmark::kMillisecond)->UseRealTime();

void BM_DiffWithBothReads(benchmark::State& state)
{
    const CFiles files;
    const std::wstring pathA = files.GetPath(L"a.xml");
    const std::wstring pathB = files.GetPath(L"b.xml");
    LuTestSuiteReport::GenerateXMLReport(pathA, makeReport(0));
    LuTestSuiteReport::GenerateXMLReport(pathB, makeReport(1));
    LuTestSuiteSetup setup;
    setup.diffInputs = {pathA, pathB};
    for (auto _ : state)
    {
        LuTestSuiteUtils::GenerateReportDiff(setup);
    }
    const std::string page = LbFileSystem::ReadFile8Bit(files.GetPath(L"Diff-[a][b].html"));
    if (page.find("<td>Improved</td>") == std::string::npos)
    {
        state.SkipWithError("the reports were not compared");
    }
    state.counters["MB"] = static_cast<double>(page.size()) / 1e6;
}
BENCHMARK(BM_DiffWithBothReads)->Unit(benchmark::kMillisecond)->UseRealTime();

} // namespace
