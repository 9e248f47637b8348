#include "base/lbfilesystem.h"
#include "base/lbpath.h"
#include "base/lustream.h"
#include "calls.h"
#include "testing/lutestsuite/lutestsuiteenvironment.h"
#include "testing/lutestsuite/lutestsuitereport.h"

namespace
{

using LuTestSuiteRun::ECaseRunResult;
using Report = LuTestSuiteReport;

/// Runs the data directory and records the results.
Report::SReportData makeRecord(LuTestSuiteEnvironment& environment, const SPlaces& places)
{
    LuTestSuiteSetup setup;
    setup.dataDir = places.data;
    setup.unitTests = LuTestSuiteUtils::ScanDirectoryForUnitTests(places.data, true);
    const LuTestSuiteRun::SRunResult result = LuTestSuiteRun::Run(setup, environment);
    Report::SReportData data;
    Report::GenerateReportData(data, setup, setup.unitTests, result.cases, result.stats);
    return data;
}

void callParts(const SPlaces& places)
{
    LuTestSuiteRun::SStats::SCounts counts;
    counts.results[0] = 3;
    Report::SReportCounts classed;
    Expect(Report::getReportCounts(counts, classed) == 3 && classed.counts[Report::eRR_Success] == 3,
           "getReportCounts");
    Expect(Report::getReportResult(ECaseRunResult::Error) == Report::eRR_Failure, "getReportResult");
    Expect(Report::toResultString(ECaseRunResult::TimeOut) == L"TIMEOUT", "toResultString");
    Expect(Report::toDescriptionString(ECaseRunResult::Ok) == L"Ok", "toDescriptionString");
    Expect(Report::resultStringToType(L"TIMEOUT") == ECaseRunResult::TimeOut, "resultStringToType");
    Expect(Report::toSeconds(2'000'000'000) == 2.0F, "toSeconds");
    Expect(!Report::getCPUInfo().empty(), "getCPUInfo");
    // May be empty: not every machine has a graphics adapter.
    static_cast<void>(Report::getGPUInfo());

    const std::wstring path = places.work + L"header.html";
    LuStreamWriteASCIIFile file(path);
    LuTestSuiteUtils::LuMarkupWriter writer(file);
    Report::writeHTMLHeader(writer, true);
    file.Close();
    Expect(LbFileSystem::ReadFile8Bit(path).find("<head>") != std::string::npos, "writeHTMLHeader");
}

void callPages(const SPlaces& places, const Report::SReportData& data, const std::wstring& xml)
{
    const std::wstring html = places.work + L"report.html";
    Report::GenerateHTMLReport(html, data, true, true, false, true);
    Expect(LbFileSystem::IsFile(html), "GenerateHTMLReport");
    const std::wstring diff = places.work + L"diff.html";
    Report::GenerateHTMLDiffReport(diff, xml, xml, data, data, true, true, false, true);
    Expect(LbFileSystem::IsFile(diff), "GenerateHTMLDiffReport");

    LuTestSuiteSetup setup;
    setup.diffInputs = {xml, xml};
    setup.diffOutput = places.work + L"called.html";
    LuTestSuiteUtils::GenerateReportDiff(setup);
    Expect(LbFileSystem::IsFile(setup.diffOutput), "GenerateReportDiff");

    Report::GenerateReportDirectoryOverview(places.work, L"overview", L"archive", L"run");
    Expect(LbFileSystem::IsFile(places.work + L"overview.html"), "GenerateReportDirectoryOverview");
}

} // namespace

void CallReports(LuTestSuiteEnvironment& environment, const SPlaces& places)
{
    callParts(places);
    const Report::SReportData data = makeRecord(environment, places);
    Expect(data.CasesTotal != 0 && data.CasesTotal == data.Successful, "GenerateReportData");
    LbFileSystem::AssertDirectory(places.work + L"archive");
    const std::wstring xml = places.work + L"archive" + LbPath::c_Separator + L"run.xml";
    Report::GenerateXMLReport(xml, data);
    Report::SReportData read;
    Expect(Report::LoadReportDataFromXMLFile(xml, read), "LoadReportDataFromXMLFile");
    Expect(read.CasesTotal == data.CasesTotal, "GenerateXMLReport");
    callPages(places, data, xml);
}
