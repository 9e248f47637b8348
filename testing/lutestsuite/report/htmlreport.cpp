/// The page of one run.

#include "testing/lutestsuite/lutestsuitereport.h"
#include "testing/lutestsuite/report/companions.h"
#include "testing/lutestsuite/report/page.h"
#include "testing/lutestsuite/report/rundata.h"
#include "testing/lutestsuite/report/runpage.h"

namespace
{

using LuTestSuite::MarkupWriter;
using SData = LuTestSuiteReport::SReportData;
using SClass = LuTestSuiteReport::SReportClass;
using SCase = LuTestSuiteReport::SReportCase;

enum class ERow : std::size_t
{
    Ok,
    Failure,
    Error,
    Warning
};

constexpr std::wstring_view c_RowStarts[] = {L"<tr class=\"ok\">", L"<tr class=\"failure\">", L"<tr class=\"error\">",
                                             L"<tr class=\"warning\">"};

constexpr std::wstring_view getRowStart(ERow row)
{
    return c_RowStarts[static_cast<std::size_t>(row)];
}

void writeRunData(MarkupWriter& writer, const SData& data)
{
    for (const LuTestSuite::SRunDataTable& table : LuTestSuite::GetRunDataTables())
    {
        writer.WriteElement(L"h2", table.heading);
        writer.WriteLineOpen(table.start);
        for (const LuTestSuite::SRunDataRow& row : table.rows)
        {
            if (LuTestSuite::IsPresent(row, data))
            {
                LuTestSuite::WriteRow(writer, L"<tr>", L"td", {row.label, row.getText(data)});
            }
        }
        writer.WriteLineClose(L"</table>");
    }
}

ERow getRow(const SClass& testClass)
{
    if (testClass.Errors > 0)
    {
        return ERow::Error;
    }
    if (testClass.Failures > 0)
    {
        return ERow::Failure;
    }
    return testClass.Warnings > 0 ? ERow::Warning : ERow::Ok;
}

void writeClassSummary(MarkupWriter& writer, const SData& data, bool tolerateWarnings)
{
    if (data.ClassesSuccessful >= data.ClassesTotal && (data.ClassesFlagged == 0 || tolerateWarnings))
    {
        return;
    }
    writer.WriteElement(L"h2", L"Class Summary");
    writer.WriteLineOpen(L"<table id=\"testclasses\">");
    LuTestSuite::WriteRow(writer, L"<tr>", L"th",
                          {L"Class Name", L"Total Cases", L"Unsuccessful", L"Warnings", L"Contact"});
    for (const SClass& testClass : data.Classes)
    {
        const ERow row = getRow(testClass);
        if (row != ERow::Ok && (row != ERow::Warning || !tolerateWarnings))
        {
            LuTestSuite::WriteRow(writer, getRowStart(row), L"td",
                                  {testClass.Name, LbFormat(L"%u", testClass.CasesTotal),
                                   LbFormat(L"%u", testClass.Failures + testClass.Errors),
                                   LbFormat(L"%u", testClass.Warnings), LuTestSuite::GetContactLink(testClass)});
        }
    }
    writer.WriteLineClose(L"</table>");
}

ERow getRow(const SCase& testCase, bool tolerateWarnings)
{
    switch (LuTestSuiteReport::getReportResult(testCase.Result))
    {
    case LuTestSuiteReport::eRR_Error:
        return ERow::Error;
    case LuTestSuiteReport::eRR_Failure:
        return ERow::Failure;
    case LuTestSuiteReport::eRR_Success:
        break;
    }
    return testCase.Warning && !tolerateWarnings ? ERow::Warning : ERow::Ok;
}

void writeDumps(MarkupWriter& writer, const SCase& testCase)
{
    writer.Indent();
    writer.Write(L"<td>");
    for (const LuTestSuiteReport::SReportDump& dump : testCase.Dumps)
    {
        writer.Write(dump.Text);
        writer.Write(L"<br/>");
    }
    writer.Write(L"</td>\n");
}

/// `position` is the position in the record, so the numbers on a page have no gaps, even if cases were not run.
void writeCase(MarkupWriter& writer, const SCase& testCase, std::uint32_t position, bool tolerateWarnings)
{
    writer.WriteLineOpen(getRowStart(getRow(testCase, tolerateWarnings)));
    writer.WriteElement(L"td", position);
    writer.WriteElement(L"td", testCase.ClassName);
    writer.WriteElement(L"td", MarkupWriter::Escape(testCase.CaseName));
    writer.WriteElement(L"td", testCase.Time);
    writer.WriteElement(L"td", testCase.Memory);
    writer.WriteElement(L"td", LuTestSuiteReport::toDescriptionString(testCase.Result));
    writer.WriteElement(L"td", testCase.Info);
    writeDumps(writer, testCase);
    writer.WriteLineClose(L"</tr>");
}

void writeCases(MarkupWriter& writer, const std::vector<SCase>& cases, bool tolerateWarnings)
{
    writer.WriteElement(L"h2", L"Testcases");
    writer.WriteLineOpen(L"<table id=\"testcases\">");
    LuTestSuite::WriteRow(
        writer, L"<tr>", L"th",
        {L"Id", L"Test Class Name", L"Test Name", L"Time (sec)", L"Memory (Bytes)", L"Result Type", L"Info", L"Dump"});
    std::uint32_t position = 0;
    for (const SCase& testCase : cases)
    {
        writeCase(writer, testCase, position++, tolerateWarnings);
    }
    writer.WriteLineClose(L"</table>");
}

} // namespace

bool LuTestSuite::WriteRunPage(const std::wstring& path, const SData& data, bool writeCss, bool writeJs,
                               bool smallReport, bool tolerateWarnings)
{
    if (path.empty())
    {
        return false;
    }
    return WorkOrReport(c_PageFailed, path, [&] {
        WritePage(path, L"LuTestSuite Report", [&](MarkupWriter& writer) {
            writeRunData(writer, data);
            writeClassSummary(writer, data, tolerateWarnings);
            if (!smallReport)
            {
                writeCases(writer, data.Cases, tolerateWarnings);
            }
        });
        WriteCompanions(path, writeCss, writeJs);
    });
}

void LuTestSuiteReport::GenerateHTMLReport(const std::wstring& path, const SReportData& data, bool writeCss,
                                           bool writeJs, bool smallReport, bool tolerateWarnings)
{
    LuTestSuite::WriteRunPage(path, data, writeCss, writeJs, smallReport, tolerateWarnings);
}
