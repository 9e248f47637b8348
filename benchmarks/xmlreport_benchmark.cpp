/// The XML report of 100,000 cases: writing, reading, and the memory that the reader takes at its peak, as a multiple
/// of the file.
#include <benchmark/benchmark.h>

#include "base/lbfilesystem.h"
#include "base/lbformat.h"
#include "base/lbuniqueid.h"
#include "base/lustream.h"
#include "testing/lutestsuite/lutestsuiteheaptracker.h"
#include "testing/lutestsuite/lutestsuitereport.h"

namespace
{

using SReportData = LuTestSuiteReport::SReportData;

constexpr std::uint32_t c_Cases = 100000;

LuTestSuiteReport::SReportCase makeCase(std::uint32_t index)
{
    LuTestSuiteReport::SReportCase testCase;
    testCase.Id = index;
    testCase.ClassName = LbFormat(L"CDeflateVectors%u", index % 300);
    testCase.CaseName = LbFormat(L"level %u, größer.vector", index);
    testCase.Time = 0.000001F * static_cast<float>(index);
    testCase.Memory = 64U * index;
    if (index % 10 == 0)
    {
        testCase.Result = LuTestSuiteRun::ECaseRunResult::Error;
        testCase.Dumps = {{true, L"3 statt 4 Bytes an der Stelle 17"}, {false, L"Datei gelesen"}};
    }
    return testCase;
}

const SReportData& getData()
{
    static const SReportData s_data = [] {
        SReportData data;
        for (std::uint32_t index = 0; index < c_Cases; ++index)
        {
            data.Cases.push_back(makeCase(index));
        }
        return data;
    }();
    return s_data;
}

/// A report file for as long as the object lives.
class CReportFile
{
public:
    CReportFile() { LuTestSuiteReport::GenerateXMLReport(m_path, getData()); }
    ~CReportFile() { LbFileSystem::RemoveTree(m_path); }
    CReportFile(const CReportFile&) = delete;
    CReportFile& operator=(const CReportFile&) = delete;

    const std::wstring& GetPath() const { return m_path; }
    double GetSize() const { return static_cast<double>(LuStreamReadBinaryFile(m_path).GetSize()); }

private:
    std::wstring m_path = LbFileSystem::GetDirectory(LbFileSystem::eDK_Temporary) + LbUniqueId::Generate() + L".xml";
};

void BM_Write(benchmark::State& state)
{
    const CReportFile file;
    for (auto _ : state)
    {
        LuTestSuiteReport::GenerateXMLReport(file.GetPath(), getData());
    }
    state.counters["megabytes"] = file.GetSize() / 1e6;
}
BENCHMARK(BM_Write)->Unit(benchmark::kMillisecond)->UseRealTime();

void BM_Read(benchmark::State& state)
{
    const CReportFile file;
    for (auto _ : state)
    {
        SReportData data;
        LuTestSuiteReport::LoadReportDataFromXMLFile(file.GetPath(), data);
        benchmark::DoNotOptimize(data);
    }
}
BENCHMARK(BM_Read)->Unit(benchmark::kMillisecond)->UseRealTime();

/// Without a figure of time: the tracker slows the reader down.
void BM_MemoryOfReading(benchmark::State& state)
{
    const CReportFile file;
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
BENCHMARK(BM_MemoryOfReading)->Iterations(1)->Unit(benchmark::kMillisecond);

} // namespace
