/// Measures writing the XML report of 100,000 cases. Measures reading that report and one of 200 MB, and the reader's
/// peak memory as a multiple of the file's size.
#include <benchmark/benchmark.h>

#include "base/lustream.h"
#include "benchmarks/support/samplereports.h"
#include "testing/lutestsuite/lutestsuiteheaptracker.h"

namespace
{

using SReportData = LuTestSuiteReport::SReportData;

constexpr std::uint32_t c_Cases = 100000;
constexpr std::uint32_t c_Classes = 300;
constexpr std::int64_t c_LargeSize = 200'000'000;

/// A report file that is removed with the object. Repeats all cases until the file has the requested size.
class CReportFile
{
public:
    explicit CReportFile(std::int64_t smallestSize)
    {
        LuTestSuiteReport::GenerateXMLReport(m_path, Benchmarks::MakeReport(c_Classes, c_Cases, 0));
        const std::string text = LbFileSystem::ReadFile8Bit(m_path);
        const std::size_t start = text.find("\t<testcase");
        const std::size_t end = text.rfind("</testsuite>");
        LuStreamWriteBinaryFile file(m_path);
        file.Write(text.data(), start);
        do
        {
            file.Write(text.data() + start, end - start);
            m_size += static_cast<std::int64_t>(end - start);
            m_caseCount += c_Cases;
        }
        while (m_size < smallestSize);
        file.Write(text.data() + end, text.size() - end);
        file.Close();
        m_size = LuStreamReadBinaryFile(m_path).GetSize();
    }

    const std::wstring& GetPath() const { return m_path; }
    double GetSize() const { return static_cast<double>(m_size); }

    /// True if the whole file was read.
    bool HasAllCases(const SReportData& data) const { return data.Cases.size() == m_caseCount; }

private:
    Benchmarks::CFolder m_folder;
    std::wstring m_path = m_folder.GetPathOf(L"report.xml");
    std::int64_t m_size = 0;
    std::size_t m_caseCount = 0;
};

void BM_Write(benchmark::State& state)
{
    const Benchmarks::CFolder folder;
    const std::wstring path = folder.GetPathOf(L"report.xml");
    const SReportData data = Benchmarks::MakeReport(c_Classes, c_Cases, 0);
    for (auto _ : state)
    {
        LuTestSuiteReport::GenerateXMLReport(path, data);
    }
    state.counters["megabytes"] = static_cast<double>(LuStreamReadBinaryFile(path).GetSize()) / 1e6;
}
BENCHMARK(BM_Write)->Unit(benchmark::kMillisecond)->UseRealTime();

void BM_Read(benchmark::State& state)
{
    const CReportFile file(state.range());
    for (auto _ : state)
    {
        SReportData data;
        LuTestSuiteReport::LoadReportDataFromXMLFile(file.GetPath(), data);
        if (!file.HasAllCases(data))
        {
            state.SkipWithError("the report was not read");
        }
    }
    state.counters["megabytes"] = file.GetSize() / 1e6;
}
BENCHMARK(BM_Read)->ArgName("bytes")->Arg(0)->Arg(c_LargeSize)->Unit(benchmark::kMillisecond)->UseRealTime();

/// Measures memory only, because the tracker slows the reader down.
void BM_MemoryOfReading(benchmark::State& state)
{
    const CReportFile file(state.range());
    double peak = 0.0;
    for (auto _ : state)
    {
        SReportData data;
        LuTestSuiteHeapTracker tracker(false, false);
        tracker.Initialize();
        tracker.Activate();
        LuTestSuiteReport::LoadReportDataFromXMLFile(file.GetPath(), data);
        tracker.Deactivate();
        peak = static_cast<double>(tracker.GetCurrentMax());
    }
    LuTestSuiteHeapTracker::UnhookAll();
    state.counters["times_the_file"] = peak / file.GetSize();
}
BENCHMARK(BM_MemoryOfReading)->ArgName("bytes")->Arg(0)->Arg(c_LargeSize)->Iterations(1)->Unit(benchmark::kMillisecond);

} // namespace
