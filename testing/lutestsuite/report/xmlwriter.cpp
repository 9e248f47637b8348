/// Writing the XML report.

#include <span>

#include "base/lbencoding.h"
#include "base/lbfilesystem.h"
#include "base/lbformat.h"
#include "testing/lutestsuite/report/reportfailure.h"
#include "testing/lutestsuite/report/xmlcases.h"
#include "testing/lutestsuite/report/xmlformat.h"

namespace
{

using LuMarkupWriter = LuTestSuiteUtils::LuMarkupWriter;
using LuTestSuite::ReportClass;
using LuTestSuite::ReportData;
using SReportCase = LuTestSuiteReport::SReportCase;

template<typename Record>
void writeFields(LuMarkupWriter& writer, std::span<const LuTestSuite::SXmlField<Record>> fields, const Record& record)
{
    for (const LuTestSuite::SXmlField<Record>& field : fields)
    {
        const std::wstring element = LbEncoding::FromLatin1(field.element);
        std::visit([&](const auto member) { writer.WriteElement(element, record.*member); }, field.member);
    }
}

void writeSystemInfo(LuMarkupWriter& writer, const ReportData& data)
{
    writer.WriteLineOpen(L"<SystemInfo>");
    writeFields<ReportData>(writer, LuTestSuite::c_SystemInfoFields, data);
    writer.WriteLineClose(L"</SystemInfo>");
}

void writeBuildInfo(LuMarkupWriter& writer, const ReportData& data)
{
    writer.WriteLineOpen(L"<BuildInfo>");
    writeFields<ReportData>(writer, LuTestSuite::c_BuildInfoFields, data);
    if (data.SvnInfo)
    {
        writeFields<LuTestSuite::SvnInfo>(writer, LuTestSuite::c_SvnInfoFields, *data.SvnInfo);
    }
    if (data.PscmInfo)
    {
        writeFields<LuTestSuite::PscmInfo>(writer, LuTestSuite::c_PscmInfoFields, *data.PscmInfo);
    }
    writer.WriteLineClose(L"</BuildInfo>");
}

void writeRunInfo(LuMarkupWriter& writer, const ReportData& data)
{
    writer.WriteLineOpen(L"<RunInfo>");
    writeFields<ReportData>(writer, LuTestSuite::c_RunInfoFields, data);
    // Signed, so that "no limit" becomes "-1".
    writer.WriteElement(L"TimeOut", static_cast<std::int32_t>(data.TimeOut));
    writer.WriteLineClose(L"</RunInfo>");
}

void writeStatistics(LuMarkupWriter& writer, const ReportData& data)
{
    writer.WriteLineOpen(L"<Statistics>");
    writeFields<ReportData>(writer, LuTestSuite::c_StatisticsFields, data);
    writer.WriteLineClose(L"</Statistics>");
}

void writeClassStatistics(LuMarkupWriter& writer, const ReportData& data)
{
    writer.WriteLineOpen(L"<ClassStatistics>");
    writeFields<ReportData>(writer, LuTestSuite::c_ClassStatisticsFields, data);
    for (const ReportClass& unitTest : data.Classes)
    {
        writer.WriteLineOpen(LbFormat(L"<Class Name=\"%s\">", unitTest.Name));
        writeFields<ReportClass>(writer, LuTestSuite::c_ClassFields, unitTest);
        writer.WriteLineClose(L"</Class>");
    }
    writer.WriteLineClose(L"</ClassStatistics>");
}

void writeResult(LuMarkupWriter& writer, const SReportCase& testCase)
{
    writer.WriteLineOpen(LbFormat(L"<result type=\"%s\"%s>", LuTestSuiteReport::toResultString(testCase.Result),
                                  testCase.Warning ? L" warning=\"true\"" : L""));
    for (const LuTestSuiteReport::SReportDump& dump : testCase.Dumps)
    {
        writer.WriteElement(L"dump", dump.IsError ? L"type=\"error\"" : L"type=\"info\"", dump.Text);
    }
    writer.WriteLineClose(L"</result>");
}

void writeCase(LuMarkupWriter& writer, const SReportCase& testCase)
{
    writer.WriteLineOpen(LbFormat(L"<testcase id=\"%d\" classname=\"%s\" name=\"%s\">", testCase.Id, testCase.ClassName,
                                  LuMarkupWriter::Escape(testCase.CaseName)));
    writer.WriteElement(L"time", testCase.Time);
    writer.WriteElement(L"memory", testCase.Memory);
    writer.WriteElement(L"memorydelta", testCase.MemoryDelta);
    writeResult(writer, testCase);
    const LuTestSuiteReport::EReportResult result = LuTestSuiteReport::getReportResult(testCase.Result);
    if (result != LuTestSuiteReport::eRR_Success)
    {
        writer.WriteElement(
            result == LuTestSuiteReport::eRR_Failure ? L"failure" : L"error",
            LbFormat(L"message=\"\" type=\"%s\"", LuTestSuiteReport::toDescriptionString(testCase.Result)), L"");
    }
    writer.WriteLineClose(L"</testcase>");
}

void writeReport(const std::wstring& path, const ReportData& data)
{
    LuStreamWriteASCIIFile file(path);
    LuMarkupWriter writer(file);
    writer.WriteLine(LbEncoding::FromLatin1(LuTestSuite::c_XmlDeclaration));
    writer.WriteLine(L"<?xml-stylesheet type=\"text/xsl\" href=\"LuTestSuiteReport.xsl\"?>");
    writer.WriteLineOpen(LbFormat(L"<testsuite name=\"LuTestSuite\" tests=\"%d\" errors=\"%d\" failures=\"%d\" "
                                  L"skip=\"0\">",
                                  data.CasesTotal, data.Errors, data.Failures));
    writeSystemInfo(writer, data);
    writeBuildInfo(writer, data);
    writeRunInfo(writer, data);
    writeStatistics(writer, data);
    writeClassStatistics(writer, data);
    for (const SReportCase& testCase : data.Cases)
    {
        writeCase(writer, testCase);
    }
    writer.WriteLineClose(L"</testsuite>");
    file.Close();
}

} // namespace

void LuTestSuiteReport::GenerateXMLReport(const std::wstring& path, const SReportData& data)
{
    if (path.empty())
    {
        return;
    }
    try
    {
        LbFileSystem::WriteWhole(path, [&data](const std::wstring& place) { writeReport(place, data); });
    }
    catch (...)
    {
        LuTestSuite::WriteReportFailure(L"XML-Report %s konnte nicht erzeugt werden.", path);
    }
}
